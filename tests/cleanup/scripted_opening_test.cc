#include <gtest/gtest.h>

#include <utility>

#include "cleanup/scripted_fixture.h"
#include "contracts/catalogue.h"

namespace corvo::test {
namespace {

using testing::IsEmpty;

/// What opens a storage, and what needs none.
using ScriptedOpening = ScriptedTest;

TEST_F(ScriptedOpening, RetentionZeroOpensNoStorage) {
  EXPECT_THAT(DataCleanup::DeleteExpiredRows(contract, 0), Succeeded());
  EXPECT_THAT(storage.opened, IsEmpty());
}

TEST_F(ScriptedOpening, CompactionOfNullOpensNoStorage) {
  EXPECT_THAT(DataCleanup::Vacuum(nullptr), Succeeded());
  EXPECT_THAT(storage.opened, IsEmpty());
}

TEST_F(ScriptedOpening, RowLimitZeroOpensNoStorage) {
  EXPECT_THAT(collector.DeleteExtraRows(contract, 0), Succeeded());
  EXPECT_THAT(storage.opened, IsEmpty());
}

TEST_F(ScriptedOpening, TruncatingNoRowsOpensNoStorage) {
  EXPECT_THAT(DataCleanup::TruncateRows(contract, 0), Succeeded());
  EXPECT_THAT(storage.opened, IsEmpty());
}

// Each pass asks anew where every contract and database lives.
TEST_F(ScriptedOpening, SecondPassOpensWhatTheFirstOpened) {
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  const std::vector<std::string> first = std::exchange(storage.opened, {});
  EXPECT_GE(first.size(), telemetry::contracts::ContractCatalogue().size());

  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_EQ(storage.opened, first);
}

}  // namespace
}  // namespace corvo::test
