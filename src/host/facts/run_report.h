#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "common/error.h"

namespace corvo::telemetry::host {

// What a run found and did, in plain values: `pass` fills them in, `show` makes texts and documents of them.

struct TableCount {
  std::string table;
  std::optional<std::int64_t> rows;  ///< none when the table is missing or cannot be read
  std::string problem;               ///< why it cannot be read; empty for a missing table
};

/// One database file that exists.
struct DatabaseCount {
  std::string name;  ///< as the option spells it
  std::filesystem::path path;
  std::int64_t bytes;  ///< the file with its write-ahead log
  std::vector<TableCount> tables;
};

struct PassOutcome {
  common::Error result;  ///< the record that the module gave, or one made here when it gave none
  std::int64_t rows_deleted;
  double seconds;
  std::string failed_database;  ///< path; empty when no statement failed
};

/// What a run did. `before` and `after` were taken with the same catalogue; a file may come or go in between.
struct RunReport {
  std::vector<DatabaseCount> before;
  std::vector<DatabaseCount> after;
  std::vector<PassOutcome> passes;  ///< at least one

  [[nodiscard]] const common::Error& Result() const { return passes.back().result; }
  [[nodiscard]] double Seconds() const;
};

/// One database with its counts before and after the run; no `after` when the file is gone.
struct DatabaseChange {
  const DatabaseCount* before;
  const DatabaseCount* after;
};

/// Pairs the counts of a database by its name, in the order of `before`.
[[nodiscard]] std::vector<DatabaseChange> Changes(const RunReport& report);

}  // namespace corvo::telemetry::host
