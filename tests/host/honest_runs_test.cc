#include <gmock/gmock.h>

#include <algorithm>
#include <ctime>
#include <iostream>
#include <random>
#include <utility>

#include "contracts/catalogue.h"
#include "host/facts/look.h"
#include "host/facts/record/verification.h"
#include "host/pass/directory_run.h"
#include "host/pass/loaded_module.h"
#include "host/show/verify/breach_text.h"
#include "storage/storage_options.h"
#include "support/database.h"
#include "support/kept_options.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

constexpr int kGroups = 4;  // which can be run side by side
constexpr int kRunsOfAGroup = 50;

/// Databases with some tables of the catalogue, and rows of which some expire, are too many or have no time.
class RandomDirectory {
 public:
  explicit RandomDirectory(unsigned seed) : random_(seed) {}

  void Fill(const std::filesystem::path& directory) {
    const CatalogueView catalogue = ReadCatalogue();
    for (const DatabaseView& view : catalogue.databases) {
      if (OneIn(3)) {
        test::Database database(DatabaseFile(view, directory));
        database.Run(OneIn(3) ? "PRAGMA journal_mode = WAL" : "PRAGMA page_size = 1024");
        database.Run("PRAGMA synchronous = OFF; BEGIN");
        for (const ContractView& contract : catalogue.Of(view.database)) {
          if (OneIn(2)) {
            AddTable(database, contract);
          }
        }
        database.Run("COMMIT");
      }
    }
  }

 private:
  bool OneIn(int number) { return Below(number) == 0; }
  int Below(int number) { return std::uniform_int_distribution<int>(0, number - 1)(random_); }

  void AddTable(test::Database& database, const ContractView& contract) {
    database.Run("CREATE TABLE " + contract.table +
                 (OneIn(2) ? " (id INTEGER PRIMARY KEY, time TEXT, x)" : " (time TEXT, x)"));
    // Times go from twice the retention ago to a little ahead, so that some are right at their limit.
    const double days = contract.retention_days == 0 ? 10 : contract.retention_days;
    const int rows =
        contract.max_rows != 0 && OneIn(20) ? static_cast<int>(contract.max_rows) - Below(2'000) : Below(60);
    database.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(rows) +
                 ") INSERT INTO " + contract.table + " (time, x) SELECT CASE WHEN i % 17 = 0 THEN NULL ELSE " +
                 "strftime('%Y-%m-%dT%H:%M:%f+00:00', 'now', (-2.0 * " + std::to_string(days) + " * (1 - i / " +
                 std::to_string(rows + 1) + ".0)) || ' days') END, 'row' FROM n");
    if (OneIn(3)) {
      database.Run("DELETE FROM " + contract.table + " WHERE rowid % 3 = 0");
    }
  }

  std::mt19937 random_;
};

std::string Breaches(const Verification& verification) {
  std::string text = verification.history_problem;
  for (const DatabaseCheck& database : verification.databases) {
    text += database.problem ? database.name + ": " + database.problem->reason + "\n" : "";
    for (const Breach& breach : database.breaches) {
      text += database.name + ", " + BreachText(breach) + "\n";
    }
  }
  return text;
}

Verification VerifyReadOnly(const std::filesystem::path& directory) {
  shared::StorageOptions options = shared::GetStorageOptions();
  options.read_only = true;
  const shared::StorageOptionsScope reading(options);
  return Verify(directory, "--data-dir", {}, std::time(nullptr));
}

/// What a run with the module did to a new directory, and how it stands afterwards.
std::pair<RunReport, Verification> RunAndVerify(shared::plugin::IDynamicPluginModule& module, unsigned seed) {
  const test::KeptOptions kept(contracts::ContractCatalogue());
  const test::TempDir directory;
  RandomDirectory(seed).Fill(directory.Path());
  shared::StorageOptions options = shared::GetStorageOptions();
  options.data_directory = directory.Path().string();
  const shared::StorageOptionsScope storage(options);
  const std::int64_t start = std::time(nullptr);
  RunReport report = Run(module, {.directory = directory.Path(), .source = "--data-dir", .only = {}});
  RunRecord record = RecordOf(report);
  record.start = start;
  record.end = std::time(nullptr);
  AddToHistory(directory.Path(), record);
  return {std::move(report), VerifyReadOnly(directory.Path())};
}

class HonestRuns : public testing::TestWithParam<int> {};

TEST_P(HonestRuns, KeepTheirPromises) {
  LoadedModule module(CORVO_CLEANUP_MODULE);
  const unsigned seed = std::random_device()();
  std::cout << "seed " << seed << std::endl;
  std::int64_t deleted = 0;
  int databases = 0;
  for (unsigned run = 0; run < kRunsOfAGroup; ++run) {
    const auto [report, verification] = RunAndVerify(module.Module(), seed + run);
    ASSERT_EQ(Breaches(verification), "") << "run " << run;
    ASSERT_EQ(verification.databases.size(), report.databases.size());
    deleted += report.RowsDeleted();
    databases += static_cast<int>(report.Cleaned());
  }
  EXPECT_GT(databases, kRunsOfAGroup);
  EXPECT_GT(deleted, 5'000);
}

INSTANTIATE_TEST_SUITE_P(All, HonestRuns, testing::Range(0, kGroups));

}  // namespace
}  // namespace corvo::telemetry::host
