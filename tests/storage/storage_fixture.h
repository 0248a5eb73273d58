#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/error.h"
#include "storage/telemetry_storage.h"
#include "support/database.h"
#include "support/option_scope.h"
#include "support/record_matchers.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::common {
inline void PrintTo(const Error& error, std::ostream* stream) { *stream << ErrorText(error); }
}  // namespace corvo::telemetry::common

namespace corvo::test {

using shared::SqlCommand;
using shared::TelemetryStorage;
using telemetry::common::Error;

/// A record that the storage makes: SQLite's extended code, and a text that `what` matches.
template <class Matcher>
auto FailsWith(int code, const Matcher& what) {
  return testing::AllOf(testing::Field("category", &Error::category, telemetry::common::EC_Custom),
                        testing::Field("code", &Error::code, code), testing::Field("what", &Error::what, what),
                        testing::Field("type", &Error::type, "sqlite3"), testing::Field("origin", &Error::origin, ""));
}

/// Runs one statement and leaves its command to the storage.
inline Error RunSql(TelemetryStorage& storage, const std::string& sql) {
  return storage.Execute(new SqlCommand(sql.c_str()), false);
}

/// The rows of a result, every value as text.
inline std::vector<Row> Texts(const shared::Rows& results) {
  std::vector<Row> rows;
  for (int row = 0; row < results.count; ++row) {
    Row& texts = rows.emplace_back();
    for (int column = 0; column < results[row].count; ++column) {
      texts.emplace_back(results[row][column].GetColumnValue());
    }
  }
  return rows;
}

/// The rows of one query; its failure throws.
inline std::vector<Row> Read(TelemetryStorage& storage, const std::string& sql) {
  auto* command = new SqlCommand(sql.c_str());
  if (const Error error = storage.Execute(command, false); error.Failed()) {
    throw std::runtime_error(sql + ": " + ErrorText(error));
  }
  return Texts(command->GetResults());
}

/// The first value of the first row of one query.
inline std::string ReadValue(TelemetryStorage& storage, const std::string& sql) {
  return Read(storage, sql).at(0).at(0);
}

/// An empty folder and the storage's default settings.
class StorageTest : public testing::Test {
 public:
  StorageTest() { SetDefaults(); }
  ~StorageTest() override { SetDefaults(); }

 protected:
  /// A database with the table Samples(id INTEGER PRIMARY KEY, v) and rows 1 … `rows`.
  void CreateSamples(int rows) {
    Database database(file_);
    database.Run("CREATE TABLE Samples(id INTEGER PRIMARY KEY, v)");
    database.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(rows) +
                 ") INSERT INTO Samples SELECT i, 'value ' || i FROM n");
  }

  TempDir dir_;
  std::string file_ = dir_ / "Test.db";

 private:
  static void SetDefaults() { shared::SetStorageOptions(shared::StorageOptions()); }
};

}  // namespace corvo::test
