// How a whole pass groups the catalogue, which is the tests' own here.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "support/log_capture.h"
#include "support/statement_log.h"
#include "support/test_catalogue.h"

namespace corvo::test {
namespace {

using telemetry::common::ErrorText;
using testing::ElementsAre;

constexpr const char* kTag = "DataCleanup::ReadSource";

class GroupingInAPass : public EngineTest {
 protected:
  TestCatalogue catalogue;
  DataCleanup collector;
};

TEST_F(GroupingInAPass, StandardExceptionBecomesTheResultAndIsLogged) {
  catalogue.on_reading = [] { throw std::length_error("too many"); };
  const LogCapture log;
  const auto result = collector.ReadSource();
  EXPECT_THAT(result, FailedWith("too many"));
  EXPECT_EQ(result.type, "std::length_error");
  const std::string json = ErrorText(result);
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{plog::info, kTag, "Started DataCleanup::ReadSource"},
                                       LogLine{plog::error, kTag, std::string(kTag) + " - exception : " + json},
                                       LogLine{plog::info, kTag, json},
                                       LogLine{plog::info, kTag, "Finished DataCleanup::ReadSource"}));
}

TEST_F(GroupingInAPass, AnyOtherExceptionBecomesTheResult) {
  catalogue.on_reading = [] { throw 7; };
  const auto result = collector.ReadSource();
  EXPECT_EQ(result.category, telemetry::common::EC_Custom);
  EXPECT_EQ(result.code, 7);
}

TEST_F(GroupingInAPass, SeesTheContractsOfThisPass) {
  CreateDatabase("A", "First", 10);
  CreateDatabase("B", "Second", 10);
  catalogue.contracts = {contracts.Make("First", {.database = "A", .max_rows = 10})};
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_EQ(Open("B").Count("Second"), 10);

  catalogue.contracts.push_back(contracts.Make("Second", {.database = "B", .max_rows = 10}));
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_EQ(Open("B").Count("Second"), 9);
}

// A database goes by its own name, and so has its limit, from the pass on that finds its file.
TEST_F(GroupingInAPass, ResolvesTheDatabasesOfThisPass) {
  catalogue.contracts = {contracts.Make("Samples", {.database = "Log", .max_size_mb = 5})};
  catalogue.databases = {contracts.Make("LogDatabase", {.database = "Log", .max_size_mb = 5})};
  EXPECT_THAT(collector.ReadSource(), Succeeded());

  CreateDatabase("Log", "Samples", 10);
  const StatementLog statements;
  EXPECT_THAT(collector.ReadSource(), Succeeded());
  EXPECT_THAT(statements.Sql(), ElementsAre("SELECT pgsize, pageno FROM dbstat WHERE name='Samples'", "VACUUM;"));
}

}  // namespace
}  // namespace corvo::test
