#include <gtest/gtest.h>

#include "host/facts/explain/explanation.h"
#include "host/pass/directory_run.h"
#include "plugin/data_cleanup_plugin.h"
#include "storage/storage_options.h"
#include "support/contract_factory.h"
#include "support/database.h"
#include "support/fake_clock.h"
#include "support/temp_dir.h"
#include "support/test_catalogue.h"

namespace corvo::test {
namespace {

using telemetry::host::RowExplanation;
using telemetry::host::Rule;

/// A row that the next pass keeps, in a table of 2 days and 10 rows: when its time comes, as told and as it is.
class ExplainMoment : public testing::Test {
 protected:
  ExplainMoment() {
    catalogue_.databases = {factory_.Make("Log", {.database = "Log"})};
    catalogue_.contracts = {factory_.Make("Events", {.database = "Log", .max_rows = 10, .retention_days = 2})};
    Database(file_).Run("CREATE TABLE Events (id INTEGER PRIMARY KEY, time TEXT)");
    Add("2024-05-01T12:00:00.999+02:00");
  }

  void Add(const std::string& time) const { Database(file_).Run("INSERT INTO Events (time) VALUES ('" + time + "')"); }

  [[nodiscard]] RowExplanation Explain() const {
    return telemetry::host::Explain(folder_.Path(), "Events", {1}, FakeClock::kStart).rows.at(0);
  }

  /// Whether it is there after a pass at this moment.
  [[nodiscard]] bool IsKept(std::int64_t now) {
    const FakeClock clock(now);
    const shared::StorageOptionsScope kept(shared::GetStorageOptions());
    shared::SetDataDirectory(folder_.Path().string());
    const auto report = telemetry::host::Run(module_, {.directory = folder_.Path(), .source = "", .only = {}});
    EXPECT_FALSE(report.Result().Failed());
    return Database(file_).Number("SELECT COUNT(*) FROM Events WHERE id = 1") == 1;
  }

  TempDir folder_;
  std::filesystem::path file_ = folder_.Path() / "Log.db";
  ContractFactory factory_;
  TestCatalogue catalogue_;
  telemetry::plugin::DataCleanupPlugin module_;
};

TEST_F(ExplainMoment, OfExpiryIsTheLastAtWhichAPassKeepsTheRow) {
  const RowExplanation row = Explain();
  EXPECT_EQ(row.next_pass, Rule::kNone);
  ASSERT_TRUE(row.expires.has_value());
  EXPECT_TRUE(IsKept(*row.expires));
  EXPECT_FALSE(IsKept(*row.expires + 1));
}

TEST_F(ExplainMoment, OfTheRowLimitIsWhenAsManyRowsHaveComeInAsWasTold) {
  for (std::int64_t missing = Explain().rows_until_limit.value(); missing > 0; --missing) {
    EXPECT_TRUE(IsKept(FakeClock::kStart)) << missing;
    Add("2024-05-01");
    EXPECT_EQ(Explain().rows_until_limit, missing - 1);
  }
  EXPECT_EQ(Explain().next_pass, Rule::kRowLimit);
  EXPECT_FALSE(IsKept(FakeClock::kStart));
}

}  // namespace
}  // namespace corvo::test
