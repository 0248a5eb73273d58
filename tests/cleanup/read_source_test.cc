#include <gtest/gtest.h>

#include <filesystem>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "contracts/catalogue.h"
#include "storage/storage_settings.h"
#include "support/kept_options.h"
#include "support/log_capture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using testing::ElementsAre;

constexpr const char* kTag = "DataCleanup::ReadSource";
constexpr int kCannotOpen = 14;  // SQLITE_CANTOPEN
const LogLine kStarted{plog::info, kTag, "Started DataCleanup::ReadSource"};
const LogLine kFinished{plog::info, kTag, "Finished DataCleanup::ReadSource"};
const LogLine kSuccess{plog::info, kTag, R"({"category":"EC_NoError","code":0,"version":3})"};

/// A pass over the real catalogue.
class ReadSource : public EngineTest {
 protected:
  DataCleanup collector;
  KeptOptions kept{telemetry::contracts::ContractCatalogue()};
};

TEST_F(ReadSource, EmptyDirectoryIsASuccessThatIsReported) {
  const LogCapture log;
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_THAT(log.Lines(), ElementsAre(kStarted, kSuccess, kFinished));
}

TEST_F(ReadSource, MissingDirectoryIsASuccess) {
  shared::SetDataDirectory(directory / "missing");
  const LogCapture log;
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_THAT(log.Lines(), ElementsAre(kStarted, kSuccess, kFinished));
  EXPECT_FALSE(std::filesystem::exists(directory / "missing"));
}

TEST_F(ReadSource, CleansTheDatabasesOfTheCatalogueByTheirContracts) {
  {
    Database usage = Open("DeviceUsage");
    CreateTable(usage, "PowerEvents");
    AddRows(usage, "PowerEvents", 3, "2023-05-01T00:00:00+00:00");
    AddRows(usage, "PowerEvents", 2);
    CreateDatabase("Cache", "Other", 1);
  }
  const StatementLog statements;
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_EQ(Open("DeviceUsage").Count("PowerEvents"), 2);
  std::vector<std::string> usage;
  for (const Statement& statement : statements.All()) {
    if (statement.file == "DeviceUsage.db") {
      usage.push_back(statement.sql);
    }
  }
  EXPECT_THAT(usage,
              ElementsAre("DELETE FROM PowerEvents WHERE datetime(time) < datetime('2024-02-02T00:00:00+00:00');",
                          "SELECT COUNT(*) AS rows FROM PowerEvents", "VACUUM;"));
  EXPECT_EQ(statements.All().front().file, "Cache.db");
  EXPECT_EQ(statements.All().back().file, "DeviceUsage.db");
}

TEST_F(ReadSource, SuccessfulPassWithACompactionWritesThreeRecordsOnly) {
  {
    CreateDatabase("DeviceUsage", "PowerEvents", 2);
    Database usage = Open("DeviceUsage");
    AddPayload(usage, "PowerEvents", 1'000'000);
    usage.Run("DELETE FROM PowerEvents WHERE typeof(value) = 'blob'");
  }
  const LogCapture log;
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_THAT(log.Lines(), ElementsAre(kStarted, kSuccess, kFinished));
  EXPECT_LT(std::filesystem::file_size(directory / "DeviceUsage.db"), 20'000U);
}

TEST_F(ReadSource, FileNamedAfterATypeWhoseDatabaseIsMissingLosesExpiredRowsAndFailsThePass) {
  {
    Database stray = Open("Device");
    CreateTable(stray, "Device");
    AddRows(stray, "Device", 3, "2023-05-01T00:00:00+00:00");
    AddRows(stray, "Device", 2);
    CreateDatabase("DeviceUsage", "PowerEvents", 2);
  }
  const StatementLog statements;
  const auto result = collector.ReadSource();
  EXPECT_THAT(result, FailedWith("DeviceProfile.db"));
  EXPECT_EQ(result.code, kCannotOpen);
  EXPECT_EQ(Open("Device").Count("Device"), 2);
  EXPECT_FALSE(std::filesystem::exists(directory / "DeviceProfile.db"));
  EXPECT_THAT(statements.All(), ElementsAre(testing::Field(&Statement::file, "Device.db"),
                                            testing::Field(&Statement::file, "DeviceProfile.db")))
      << "the deletion and the count, where the pass ends";
}

TEST_F(ReadSource, LeavesTheExcludedDatabaseAlone) {
  CreateDatabase("State", "PowerEvents", 5);
  const StatementLog statements;
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

TEST_F(ReadSource, FailureOfAStepIsTheResultAndIsReported) {
  Open("DeviceUsage").Run("CREATE TABLE PowerEvents (moment TEXT)");
  const LogCapture log;
  const auto result = collector.ReadSource();
  EXPECT_THAT(result, FailedWith("no such column: time"));
  const std::string json = telemetry::common::ErrorText(result);
  EXPECT_THAT(log.Lines(), ElementsAre(kStarted,
                                       LogLine{plog::error, "DataCleanup::DeleteExpiredRows",
                                               "DataCleanup::DeleteExpiredRows - exception : " + json},
                                       LogLine{plog::info, kTag, json}, kFinished));
}

TEST_F(ReadSource, StandardExceptionBecomesTheResultAndIsLogged) {
  // The file system refuses to look for a name of this length.
  shared::SetDataDirectory(directory / std::string(300, 'x'));
  const LogCapture log;
  const auto result = collector.ReadSource();
  EXPECT_EQ(result.category, telemetry::common::EC_Std);
  EXPECT_EQ(result.code, 1);
  EXPECT_THAT(result.what, testing::HasSubstr("exists"));
  EXPECT_THAT(result.type, testing::HasSubstr("filesystem_error"));
  const std::string json = telemetry::common::ErrorText(result);
  EXPECT_THAT(log.Lines(),
              ElementsAre(kStarted, LogLine{plog::error, kTag, std::string(kTag) + " - exception : " + json},
                          LogLine{plog::info, kTag, json}, kFinished));
}

TEST_F(ReadSource, NeedsNoLogger) { EXPECT_THAT(collector.ReadSource(), Succeeded()); }

TEST_F(ReadSource, LoggerThatAdmitsErrorsOnlyGetsNoProgress) {
  const LogCapture log(plog::error);
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST_F(ReadSource, ConfigurationFromOutsideIsIgnored) {
  collector.Configure(nullptr);
  collector.Configure("{\"retention_days\":1}");
  EXPECT_THAT(collector.ReadSource(), Succeeded());
}

TEST_F(ReadSource, SecondPassOverACleanDirectoryDeletesNothing) {
  CreateDatabase("DeviceUsage", "PowerEvents", 45'001);
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_EQ(Open("DeviceUsage").Count("PowerEvents"), 45'000);
  const StatementLog statements;
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  for (const Statement& statement : statements.All()) {
    EXPECT_EQ(statement.rows_changed, 0) << statement.sql;
  }
}

}  // namespace
}  // namespace corvo::test
