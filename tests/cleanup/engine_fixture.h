#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "cleanup/database_map.h"
#include "support/contract_factory.h"
#include "support/database.h"
#include "support/record_matchers.h"
#include "support/temp_dir.h"

namespace corvo::test {

using telemetry::cleanup::DatabaseEntry;
using telemetry::cleanup::DatabaseMap;

/// A data directory of its own for every test, and contracts to clean it with. The clock stands at
/// 2024-05-02T00:00:00 UTC unless a test sets it.
class EngineTest : public testing::Test {
 protected:
  EngineTest();
  ~EngineTest() override;

  /// Opens a database of the data directory by its name without extension, and creates it when it is missing.
  [[nodiscard]] Database Open(const std::string& name) const { return Database(directory.Path() / (name + ".db")); }

  /// Creates the database with one table of `count` rows.
  void CreateDatabase(const std::string& name, const std::string& table, std::int64_t count) const;

  TempDir directory;
  ContractFactory contracts;
};

inline constexpr const char* kOldTime = "2024-04-01T00:00:00+00:00";
inline constexpr const char* kRecentTime = "2024-05-01T23:00:00+00:00";

/// Creates a table as collectors create it.
void CreateTable(Database& database, const std::string& table);

/// Appends rows whose column `value` counts from 1.
void AddRows(Database& database, const std::string& table, std::int64_t count, const std::string& time = kRecentTime);

/// Appends one row of `bytes` bytes, to make a table large.
void AddPayload(Database& database, const std::string& table, std::int64_t bytes);

/// Creates a table whose first page lies so far back in the file that it measures `megabytes`. Only for the first
/// table of a fresh file, where the pages before it go to a table "Filler".
void CreateTableMeasuring(Database& database, const std::string& table, std::int64_t megabytes);

}  // namespace corvo::test
