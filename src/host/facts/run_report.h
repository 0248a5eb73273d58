#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "common/error.h"

namespace corvo::telemetry::host {

// What a run found and did, in plain values: `pass` fills them in, `show` makes texts and documents of them.

/// Rows that a run deleted from a table, by the rule that named them.
struct Deleted {
  std::int64_t expired = 0;
  std::int64_t row_limit = 0;
  std::int64_t size_limit = 0;

  [[nodiscard]] std::int64_t Sum() const { return expired + row_limit + size_limit; }
  void Add(const Deleted& other);
};

/// Why a database was not cleaned.
struct Problem {
  enum class Kind {
    kCannotOpen,   ///< it is no ordinary file, or this user may not read and write it
    kPathTooLong,  ///< SQLite takes no path of this length
    kBusy,         ///< another program holds it locked
    kUnfit,        ///< its content is nothing that the rules could work on: damage, or a schema that they would misread
    kNoRoom,       ///< there is no room to compact it
    kFailed,       ///< a statement of the pass failed
    kNotReached,   ///< the pass ended before it
    kInterrupted,  ///< the user asked for the end of the run
  };

  /// What is behind it, where that leads to another advice than the kind and the record.
  enum class Cause {
    kOther,
    kDanglingLink,        ///< its name is a link to a file that is not there
    kHalfChanged,         ///< a writer ended in the middle of a change, which only who may write can put right
    kReadOnlyFileSystem,  ///< where nobody can write
    kNoFileHandles,       ///< the process has as many files open as it may
    kNoRoomBeside,        ///< the room that is short is that of the data directory
  };

  Kind kind;
  std::string reason;    ///< in a few words, without the name of the database
  common::Error record;  ///< what the storage library said; success when the host found it itself
  Cause cause = Cause::kOther;
};

struct TableReport {
  std::string table;
  bool missing = false;  ///< there is no such table before the run, which is nothing wrong
  std::optional<std::int64_t> rows_before = {};
  std::optional<std::int64_t> rows_after = {};
  Deleted deleted = {};
  std::string problem = {};                      ///< what the rules would misread in it, or why it cannot be counted
  std::optional<std::int64_t> last_rowid = {};   ///< the largest after the run; none when there is none
  std::optional<std::int64_t> oldest_left = {};  ///< in seconds since 1970-01-01 UTC; found by plans alone
  double seconds = 0;                            ///< of the statements on it

  /// Rows that others wrote during the run, less those that others deleted; none when a count is missing.
  [[nodiscard]] std::optional<std::int64_t> AddedByOthers() const;

  /// Whether the run deleted more than half of the rows that it found.
  [[nodiscard]] bool LostMost() const;
};

/// Why a database that was cleaned was not compacted: the options of the run left it out.
struct LeftOutCompaction {
  std::string reason;                  ///< in a few words
  double free_percent = 0;             ///< of the file
  std::optional<double> seconds = {};  ///< that it would take, where that is the reason and known
};

/// One database file that exists.
struct DatabaseReport {
  std::string name;  ///< as the option spells it
  std::filesystem::path path;
  std::int64_t bytes_before = 0;  ///< of the file with its write-ahead log
  std::int64_t bytes_after = 0;
  std::vector<TableReport> tables;
  std::optional<Problem> problem = {};  ///< none when it was cleaned
  double compaction_seconds = 0;
  int compactions = 0;                                  ///< one a pass, but for those that were left out
  std::int64_t compacted_bytes = 0;                     ///< that these wrote
  std::optional<LeftOutCompaction> not_compacted = {};  ///< by every pass; none when one compacted it

  [[nodiscard]] Deleted DeletedRows() const;
};

/// A statement of a pass that failed, a missing table aside.
struct FailedStatement {
  std::string database;  ///< path
  std::string sql;
  common::Error result;
};

struct PassOutcome {
  common::Error result;  ///< the record that the module gave, or one made here when it gave none
  std::int64_t rows_deleted = 0;
  double seconds = 0;
  std::string database = {};                    ///< the one that the pass was for; empty when it was for all
  std::optional<FailedStatement> failure = {};  ///< the last one
};

/// What a run did.
struct RunReport {
  std::filesystem::path directory;
  std::string directory_source;  ///< where the name of the directory comes from, for people
  bool narrowed = false;         ///< to databases that the user named
  bool planned = false;          ///< it was run on copies: the databases themselves are as they were
  std::vector<DatabaseReport> databases;
  std::vector<PassOutcome> passes;  ///< none when there was nothing that a pass could be run on
  int signal = 0;                   ///< by which the user ended the run early; 0 when it ended by itself

  /// The first failure of a pass, else the first reason why a database was not cleaned, else success.
  [[nodiscard]] common::Error Result() const;
  [[nodiscard]] double Seconds() const;
  [[nodiscard]] std::size_t Cleaned() const;
  [[nodiscard]] std::int64_t RowsDeleted() const;
};

}  // namespace corvo::telemetry::host
