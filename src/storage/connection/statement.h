#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/error.h"
#include "storage/results.h"

struct sqlite3;
struct sqlite3_stmt;

namespace corvo::shared {

using Parameters = std::vector<std::optional<std::string>>;  ///< texts of ?1, ?2 …; none is NULL

struct StatementFinalizer {
  void operator()(sqlite3_stmt* statement) const;
};

/// A prepared statement, finalised with its owner.
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

/// Prepares the one statement of a text. More than one, none, or a zero byte in the text is a failure.
[[nodiscard]] telemetry::common::Error Prepare(sqlite3* handle, const std::string& sql, Statement& statement);

/// Whether running the prepared statement cannot change the file.
[[nodiscard]] bool OnlyReads(sqlite3_stmt* statement);

/// Runs a prepared statement to its end. `results` gets its rows, and stays as it is on failure.
[[nodiscard]] telemetry::common::Error Run(sqlite3_stmt* statement, const Parameters& parameters, Rows& results);

/// The whole number that a query answers with in its first row; a query without a row is a failure.
[[nodiscard]] telemetry::common::Error ReadNumber(sqlite3* handle, const std::string& sql, std::int64_t& number);

}  // namespace corvo::shared
