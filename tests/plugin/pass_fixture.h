#pragma once

#include <gtest/gtest.h>

#include <string>

#include "contracts/catalogue.h"
#include "contracts/lookups.h"
#include "storage/storage_settings.h"
#include "support/database.h"
#include "support/kept_options.h"
#include "support/temp_dir.h"

namespace corvo::test {

constexpr const char* kSuccessJson = R"({"category":"EC_NoError","code":0,"version":3})";

/// Passes over a data directory of the test's own, which starts empty.
class PassTest : public testing::Test {
 protected:
  PassTest() { shared::SetDataDirectory(directory.Path().string()); }
  ~PassTest() override { shared::SetDataDirectory(""); }

  [[nodiscard]] Database Open(const std::string& database) const { return Database(directory / (database + ".db")); }

  /// Creates the table PowerEvents with `count` rows that no retention reaches; its row limit is 50,000.
  void CreatePowerEvents(int count) const {
    Database usage = Open("DeviceUsage");
    usage.Run("CREATE TABLE PowerEvents (time TEXT)");
    usage.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) +
              ") INSERT INTO PowerEvents SELECT '2100-01-01T00:00:00+00:00' FROM n");
  }

  /// Creates a database that a pass fails on, with an error record: its table has no times.
  void CreateFailingDatabase() const { Open("DeviceUsage").Run("CREATE TABLE PowerEvents (moment TEXT)"); }

  TempDir directory;
  KeptOptions kept{telemetry::contracts::ContractCatalogue()};
};

}  // namespace corvo::test
