#include "host/samples/generation_plan.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "common/timestamp.h"
#include "host/samples/row_source.h"
#include "host/show/time_text.h"

namespace corvo::telemetry::host {
namespace {

class GenerationPlanTest : public testing::Test {
 protected:
  [[nodiscard]] ContractView ContractOf(const TablePlan& table) const {
    return *std::find_if(catalogue_.contracts.begin(), catalogue_.contracts.end(),
                         [&table](const ContractView& contract) { return contract.table == table.table; });
  }

  [[nodiscard]] static std::vector<TablePlan> Tables(const GenerationPlan& plan) {
    std::vector<TablePlan> tables;
    for (const DatabasePlan& database : plan.databases) {
      tables.insert(tables.end(), database.tables.begin(), database.tables.end());
    }
    return tables;
  }

  const CatalogueView catalogue_ = ReadCatalogue();
  const GenerationPlan plan_ = PlanGeneration(catalogue_, 1, 0);
};

TEST_F(GenerationPlanTest, LeavesOutOneDatabaseAndOneTableOfAnother) {
  ASSERT_FALSE(catalogue_.Of(plan_.missing_database).empty());
  EXPECT_EQ(plan_.databases.size(), catalogue_.databases.size() - 1);
  EXPECT_EQ(Tables(plan_).size(), catalogue_.contracts.size() - catalogue_.Of(plan_.missing_database).size() - 1);
  for (const TablePlan& table : Tables(plan_)) {
    EXPECT_NE(table.table, plan_.missing_table);
    EXPECT_NE(ContractOf(table).database, plan_.missing_database);
  }
}

TEST_F(GenerationPlanTest, ReachesBackPastEveryRetention) {
  for (const TablePlan& table : Tables(plan_)) {
    EXPECT_GT(table.span_s, ContractOf(table).retention_days * common::kSecondsPerDay) << table.table;
  }
}

TEST_F(GenerationPlanTest, ReachesBackAsFarAsAskedWhateverTheRetentions) {
  for (const TablePlan& table : Tables(PlanGeneration(catalogue_, 1, 3))) {
    EXPECT_EQ(table.span_s, 3 * common::kSecondsPerDay) << table.table;
  }
}

TEST_F(GenerationPlanTest, KeepsLongTablesAboveTheirLimitWhenTheirExpiredRowsAreGone) {
  ASSERT_GE(plan_.long_tables.size(), 3U);
  for (const TablePlan& table : Tables(plan_)) {
    const bool is_long = testing::Value(plan_.long_tables, testing::Contains(table.table));
    EXPECT_EQ(is_long, ContractOf(table).max_rows != 0 && table.rows * 4 / 5 > ContractOf(table).max_rows)
        << table.table;
  }
}

TEST_F(GenerationPlanTest, MultipliesRowsByTheScaleAndKeepsSomeInEveryTable) {
  const auto rows = [this](double scale) { return Tables(PlanGeneration(catalogue_, scale, 0)).front().rows; };
  EXPECT_EQ(rows(2), rows(1) * 2);
  EXPECT_EQ(rows(0.001), 10);
}

TEST_F(GenerationPlanTest, GivesEachTableRowsOfItsOwnThatTheSeedDecides) {
  const TablePlan first = Tables(plan_).front();
  TablePlan other = first;
  other.table = "Other";
  const auto row = [](const TablePlan& table, std::uint64_t seed) { return RowSource(table, 0, seed).Row(0); };
  EXPECT_EQ(row(first, 1), row(first, 1));
  EXPECT_NE(row(first, 1), row(first, 2));
  EXPECT_NE(row(first, 1), row(other, 1));
}

}  // namespace
}  // namespace corvo::telemetry::host
