#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/facts/directory_state.h"
#include "host/facts/explain/limits.h"
#include "host/facts/explain/table_row.h"

namespace corvo::telemetry::host {

/// One row and what becomes of it.
struct RowExplanation {
  TableRow row;
  Rule next_pass = Rule::kNone;                       ///< by which the next pass deletes it; none: it is kept
  std::optional<std::int64_t> expires = {};           ///< moment after which a pass deletes it for its age; none: never
  std::optional<std::int64_t> rows_until_limit = {};  ///< that have to come in until the row limit reaches it
  std::optional<double> days_until_limit = {};        ///< the same at today's rate; none: not foreseeable
};

/// A row that was asked for and is not there.
struct MissingRow {
  std::int64_t rowid = 0;
  std::string text;  ///< what there is instead, for people
};

/// A table, its limits, and what they do to it.
struct Explanation {
  ContractView contract;
  DatabaseView database;
  std::filesystem::path path;  ///< of the database's file
  std::int64_t now = 0;        ///< the moment that ages are counted from
  std::string left_alone =
      {};                     ///< why a run leaves the whole database alone, whatever its rows; empty when it does not
  bool missing_file = false;  ///< then of the table nothing is known, and nothing is wrong
  std::int64_t file_bytes = 0;  ///< size of the database's file
  std::uint32_t engine_mb = 0;  ///< size of the database as the engine measures it
  double trim_factor = 0;       ///< share of its rows that the table would lose to the size limit now; 0: none
  TableState table = {};
  Reach reach = {};
  bool rowids_may_change = false;             ///< compaction may renumber its rows: none of its columns is the rowid
  std::vector<RowExplanation> rows = {};      ///< those that were asked for and are there, in that order
  std::vector<MissingRow> missing_rows = {};  ///< the others
};

/// Why there is no explanation.
class CannotExplain : public std::runtime_error {
 public:
  explicit CannotExplain(const std::string& what) : std::runtime_error(what) {}
  CannotExplain(const std::filesystem::path& file, Problem problem);

  /// What stands against the file; none when the file is not to blame.
  [[nodiscard]] const std::optional<Problem>& Cause() const { return cause_; }

 private:
  std::optional<Problem> cause_;
};

/// Reads the database of the table and explains it. Changes nothing, and works while others write; the storage's
/// options in force decide about waiting and bounds.
///
/// @param rowids of rows to explain, too; none for the table alone.
/// @throws CannotExplain naming the table or the file, and the reason, when it cannot be read, when the rules would
///         misread the table, or when rows of a table are asked for that does not exist.
[[nodiscard]] Explanation Explain(const std::filesystem::path& directory, const std::string& table,
                                  const std::vector<std::int64_t>& rowids, std::int64_t now);

}  // namespace corvo::telemetry::host
