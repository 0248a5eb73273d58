#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"
#include "host/facts/row_survey.h"
#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

// How the databases of a directory stand against their limits, and what a pass would do to them now, in plain values:
// read without writing, counted from the rows themselves, and judged by the rules of the contracts.

/// A table against its limits. Times are in seconds since 1970-01-01 UTC.
struct TableState {
  ContractView contract;
  bool missing = false;       ///< there is no such table, which is nothing wrong
  std::string problem = {};   ///< what the rules would misread in it, or why it cannot be read; then nothing is known
  common::Error record = {};  ///< what the storage library said when it was not read
  bool unread = false;        ///< its rows could not be read, although the rules would not misread them
  std::int64_t rows = 0;
  std::optional<std::int64_t> oldest = {};  ///< of the times that SQLite reads; none when it reads none
  std::optional<std::int64_t> newest = {};

  // Only of tables whose rows expire:
  OddRows no_time = {};     ///< NULL: they never expire
  OddRows unreadable = {};  ///< SQLite reads no moment from it, or that of the reading ("now"): they never expire
  OddRows future = {};      ///< more than a day ahead: they expire later than they should
  OddRows ancient =
      {};  ///< numbers and bare times ("12:30"), which SQLite reads as dates long ago: they expire at once

  double rows_per_day = 0;  ///< that come in, by the last days' rows
  std::optional<double> days_to_row_limit =
      {};  ///< until a pass trims it, at today's rate; 0: now; none: not foreseeable

  Deleted next_pass = {};      ///< what a run would delete now; nothing in a database that it would leave alone
  std::int32_t engine_mb = 0;  ///< its size as the engine measures it: first page number times page size
};

/// A database against its limit.
struct DatabaseState {
  std::string name;  ///< as the option spells it
  std::filesystem::path path;
  std::uint32_t max_size_mb = 0;        ///< 0: no limit
  bool missing = false;                 ///< has no file, which is nothing wrong
  std::optional<Problem> problem = {};  ///< why it cannot be read; then only the bytes of its files are known
  std::int64_t file_bytes = 0;
  std::int64_t wal_bytes = 0;
  std::int64_t live_bytes = 0;  ///< of pages in use
  std::int64_t page_bytes = 0;  ///< of one page
  std::int64_t free_bytes = 0;  ///< of free pages, which the next compaction gives back
  std::uint32_t engine_mb = 0;  ///< its size as the engine measures it: the sum of its tables, else that of the file
  double trim_factor = 0;       ///< the share of its rows that each table would lose to the size limit; 0: none
  std::vector<TableState> tables = {};  ///< in catalogue order
};

struct DirectoryState {
  std::filesystem::path directory;
  std::string directory_source;               ///< where its name comes from, for people
  std::int64_t now = 0;                       ///< the moment that ages are counted from
  std::vector<DatabaseState> databases = {};  ///< those asked for, in catalogue order
};

/// Reads the databases of the directory. Changes nothing, and works while others write: each database is read in one
/// transaction. What fails is told by `problem`. The storage's options in force decide about waiting and bounds, but it
/// is opened for reading only and not looked through for damage first.
///
/// @param only the databases to read, as the catalogue spells them; empty: all.
[[nodiscard]] DirectoryState ReadDirectoryState(const std::filesystem::path& directory, const std::string& source,
                                                const std::vector<std::string>& only, std::int64_t now);

/// Whether rows of the table are older than its retention by more than a day, which a daily run leaves them.
[[nodiscard]] bool IsOverAge(const TableState& table, std::int64_t now);

/// Whether the table holds more rows than its limit.
[[nodiscard]] bool IsOverRowLimit(const TableState& table);

/// Whether the database has reached its size limit, as the engine measures it, or its file is larger than that.
[[nodiscard]] bool IsOverSizeLimit(const DatabaseState& database);

/// Whether a table is over a limit of its own, holds rows that can never expire, or cannot be read or cleaned.
[[nodiscard]] bool NeedsAttention(const TableState& table, std::int64_t now);

/// Whether a database is over its size limit, cannot be read, or one of its tables needs attention.
[[nodiscard]] bool NeedsAttention(const DatabaseState& database, std::int64_t now);

}  // namespace corvo::telemetry::host
