#include "system/crowd.h"

#include <gtest/gtest.h>

#include <iostream>
#include <memory>

#include "support/database.h"
#include "support/fixture_data.h"
#include "support/temp_dir.h"
#include "system/child_process.h"
#include "system/comparison.h"
#include "system/pass.h"

namespace corvo::test {
namespace {

constexpr int kPasses = 20;
constexpr std::int64_t kFresh = 50;

std::vector<std::unique_ptr<ChildProcess>> StartCollectors(const std::string& directory) {
  std::vector<std::unique_ptr<ChildProcess>> collectors;
  for (int collector = 1; collector <= kCollectors; ++collector) {
    const std::string first_row = std::to_string(collector * 1'000'000);
    collectors.push_back(
        std::make_unique<ChildProcess>(std::vector<std::string>{CORVO_CROWD_COLLECTOR, directory, first_row}));
  }
  for (const auto& collector : collectors) {
    EXPECT_EQ(collector->ReadLine(), "inserting");
  }
  return collectors;
}

/// Number of rounds that the collector says it has done.
std::int64_t StopCollector(ChildProcess& collector) {
  collector.EndInput();
  const std::string rounds = collector.ReadLine().value_or("0");
  EXPECT_EQ(collector.Wait(), 0) << "an insertion failed, see above";
  return std::stoll(rounds);
}

TEST(Crowd, PassesBesideBusyCollectorsLoseNoFreshRowAndNeitherSideFails) {
  TempDir directory;
  for (const CrowdedTable& table : kCrowdedTables) {
    WriteFixture(directory.Path(),
                 {.journal_mode = table.journal_mode, .rows = {50, kFresh}, .databases = {table.database}});
  }
  const auto collectors = StartCollectors(directory.Path().string());
  for (int pass = 0; pass < kPasses; ++pass) {
    const nlohmann::json record = RunPass(directory.Path(), {"--busy-timeout", "30000"});
    EXPECT_TRUE(Succeeded(record)) << record;
  }
  std::int64_t rounds = 0;
  for (const auto& collector : collectors) {
    rounds += StopCollector(*collector);
  }
  std::cout << rounds << " rows a table were inserted meanwhile\n";

  // The last pass deletes the expired rows that came after the others.
  EXPECT_TRUE(Succeeded(RunPass(directory.Path())));
  EXPECT_EQ(Damage(directory.Path()), "");
  for (const CrowdedTable& table : kCrowdedTables) {
    Database database(directory.Path() / (std::string(table.database) + ".db"));
    EXPECT_EQ(database.Count(table.table), kFresh + rounds) << table.table;
  }
}

}  // namespace
}  // namespace corvo::test
