// Runs that leave compaction out on purpose.
#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "host/facts/record/history.h"
#include "host/pass/stall_limit.h"
#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

/// One database, in which a fifth of the rows has expired.
class RunCompaction : public RunTest {
 protected:
  void SetUp() override {
    fs::create_directory(data_);
    Database(file_).Run(
        "CREATE TABLE CollectorCache (time TEXT, text TEXT);"
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 1000) "
        "INSERT INTO CollectorCache SELECT iif(i > 200, strftime('%Y-%m-%dT%H:%M:%S+00:00', 'now'), "
        "'2000-01-01T00:00:00+00:00'), hex(zeroblob(200)) FROM n");
  }

  [[nodiscard]] HostRun Command(const std::vector<std::string>& words) const {
    std::vector<std::string> all = words;
    all.insert(all.end(), {"--data-dir", data_});
    return RunHost(all);
  }

  [[nodiscard]] std::int64_t FreePages() const { return Database(file_).Number("PRAGMA freelist_count"); }

  [[nodiscard]] static json TheDatabase(const HostRun& run) { return run.Json()["databases"].at(0); }

  const fs::path file_ = File("Cache.db");
};

TEST_F(RunCompaction, IsLeftOutBelowTheShareAndTheDatabaseCountsAsCleaned) {
  const HostRun run = Run({"--compact-when-free", "50"});
  EXPECT_EQ(run.exit_code, 0) << run.out << run.err;
  EXPECT_THAT(run.out, testing::ContainsRegex("Not compacted: Cache \\(.+ % free\\)\n"));
  EXPECT_THAT(run.out, HasSubstr("Cleaned 1 database: 200 rows deleted, 0 B freed"));
  EXPECT_GT(FreePages(), 0);
}

TEST_F(RunCompaction, IsMadeFromTheShareOn) {
  const HostRun run = Run({"--compact-when-free", "5"});
  EXPECT_EQ(run.exit_code, 0) << run.out << run.err;
  EXPECT_THAT(run.out, Not(HasSubstr("Not compacted")));
  EXPECT_EQ(FreePages(), 0);
}

TEST_F(RunCompaction, IsLeftOutWithoutAWriteWhenNothingIsToBeDeleted) {
  ASSERT_EQ(Run().exit_code, 0);
  const auto time = fs::last_write_time(file_);
  EXPECT_EQ(Run({"--compact-when-free", "1"}).exit_code, 0);
  EXPECT_EQ(fs::last_write_time(file_), time);
}

TEST_F(RunCompaction, IsToldToProgramsWhenItIsLeftOut) {
  const json left_out = TheDatabase(Run({"--compact-when-free", "50", "--json"}));
  EXPECT_EQ(left_out["cleaned"], true);
  EXPECT_THAT(left_out["not_compacted"]["reason"].get<std::string>(), HasSubstr(" % free"));
  EXPECT_GT(left_out["not_compacted"]["free_percent"], 10);
  EXPECT_EQ(left_out["not_compacted"]["seconds"], nullptr);
  EXPECT_EQ(TheDatabase(Run({"--json"}))["not_compacted"], nullptr);
}

TEST_F(RunCompaction, IsLeftOutAltogetherWithoutAStall) {
  const HostRun run = Run({"--max-stall", "0"});
  EXPECT_EQ(run.exit_code, 0) << run.out << run.err;
  EXPECT_THAT(run.out, HasSubstr("Not compacted: Cache (--max-stall is 0 s)\n"));
  EXPECT_GT(FreePages(), 0);
}

TEST_F(RunCompaction, IsLeftOutWhenItWouldTakeLonger) {
  const HostRun run = Run({"--max-stall", "0.0000001", "--json"});
  EXPECT_EQ(run.exit_code, 0) << run.out << run.err;
  const json left_out = TheDatabase(run)["not_compacted"];
  EXPECT_THAT(left_out["reason"].get<std::string>(), HasSubstr(", --max-stall is 1e-07 s"));
  EXPECT_GT(left_out["seconds"], 0);
  EXPECT_GT(FreePages(), 0);
}

TEST_F(RunCompaction, HasItsRateFoundOutOnceAndThenRemembered) {
  ASSERT_EQ(Run({"--max-stall", "0.0000001"}).exit_code, 0);
  const auto runs = telemetry::host::ReadHistory(data_);
  EXPECT_GT(runs.at(0).compaction_rate, 0);
  EXPECT_EQ(telemetry::host::FindStallLimit(5, data_).bytes_per_second, runs.at(0).compaction_rate);
}

TEST_F(RunCompaction, IsMadeWhenItWouldNot) {
  EXPECT_EQ(Run({"--max-stall", "86400"}).exit_code, 0);
  EXPECT_EQ(FreePages(), 0);
}

TEST_F(RunCompaction, IsForetoldByAPlan) {
  const HostRun plan = Command({"plan", "--compact-when-free", "50"});
  EXPECT_EQ(plan.exit_code, 0) << plan.out << plan.err;
  EXPECT_THAT(plan.out, HasSubstr("Not compacted: Cache ("));
  EXPECT_THAT(plan.out, HasSubstr("200 rows would go, 0 B would be freed"));
  EXPECT_THAT(Command({"plan", "--max-stall", "0"}).out, HasSubstr("Not compacted: Cache (--max-stall is 0 s)"));
}

TEST_F(RunCompaction, IsRemembered) {
  ASSERT_EQ(Run({"--compact-when-free", "50"}).exit_code, 0);
  ASSERT_EQ(Run().exit_code, 0);
  const json runs = Command({"history", "--json"}).Json()["runs"];
  const json left_out = runs[0]["databases"][0];
  EXPECT_THAT(left_out["not_compacted"].get<std::string>(), HasSubstr(" % free"));
  EXPECT_EQ(left_out["compacted_bytes"], 0);
  const json made = runs[1]["databases"][0];
  EXPECT_EQ(made["not_compacted"], nullptr);
  EXPECT_EQ(made["compacted_bytes"], fs::file_size(file_));
}

TEST_F(RunCompaction, PromisesNoFreePagesOnlyWhenItIsMade) {
  ASSERT_EQ(Run({"--compact-when-free", "50"}).exit_code, 0);
  const HostRun left_out = Command({"verify", "--json"});
  EXPECT_EQ(left_out.exit_code, 0) << left_out.out;
  EXPECT_EQ(TheDatabase(left_out)["promises"]["no_free_pages"], "none");
  ASSERT_EQ(Run().exit_code, 0);
  EXPECT_EQ(TheDatabase(Command({"verify", "--json"}))["promises"]["no_free_pages"], "kept");
}

TEST_F(RunCompaction, IsNothingThatARunPromisesWhoseOptionsCouldLeaveItOut) {
  ASSERT_EQ(Run({"--compact-when-free", "50"}).exit_code, 0);
  {
    Database other(file_);
    other.Run("BEGIN IMMEDIATE");
    ASSERT_EQ(Run({"--compact-when-free", "50", "--busy-timeout", "0"}).exit_code, 1);
  }
  const json verified = TheDatabase(Command({"verify", "--json"}));
  EXPECT_EQ(verified["promises"]["cleaned"], "broken");
  EXPECT_EQ(verified["promises"]["no_free_pages"], "none");
}

TEST_F(RunCompaction, OfOnePassIsNotForgottenForTheNextThatLeavesItOut) {
  const json database = TheDatabase(Run({"--compact-when-free", "5", "--passes", "2", "--json"}));
  EXPECT_EQ(database["not_compacted"], nullptr);
  EXPECT_EQ(FreePages(), 0);
}

TEST_F(RunCompaction, IsShownInAReportWhenItWasLeftOut) {
  ASSERT_EQ(Run({"--max-stall", "0"}).exit_code, 0);
  const std::string page = folder_ / "page.html";
  ASSERT_EQ(Command({"report", "--of", "run", "--html", page}).exit_code, 0);
  std::ostringstream text;
  text << std::ifstream(page).rdbuf();
  EXPECT_THAT(text.str(), HasSubstr("Not compacted: --max-stall is 0 s"));
}

TEST_F(RunCompaction, HasOptionsWithinTheirRange) {
  for (const std::vector<std::string>& words : {std::vector<std::string>{"--compact-when-free", "101"},
                                                {"--compact-when-free", "-1"},
                                                {"--compact-when-free", "much"},
                                                {"--max-stall", "-1"},
                                                {"--max-stall", "86401"}}) {
    EXPECT_EQ(Run(words).exit_code, 2) << words[1];
  }
}

// Sizes are measured by the file, which nothing but compaction makes smaller.
class SizeLimitOfARun : public RunTest {
 protected:
  [[nodiscard]] std::int64_t RowsLeft() { return Database(File("DeviceProfileEvents.db")).Count("DeviceEvents"); }
};

TEST_F(SizeLimitOfARun, TrimsOnceWhateverLeavesCompactionOut) {
  Generate("1");
  const HostRun first = Run({"--max-stall", "0", "--compact-when-free", "100"});
  ASSERT_EQ(first.exit_code, 0) << first.err;
  EXPECT_THAT(first.out, HasSubstr("Not compacted: Cache"));
  EXPECT_THAT(first.out, Not(HasSubstr("DeviceProfileEvents (")));
  const std::int64_t rows = RowsLeft();
  const json second = Run({"--max-stall", "0", "--compact-when-free", "100", "--json"}).Json();
  EXPECT_EQ(RowsLeft(), rows);
  EXPECT_EQ(second["passes"][0]["rows_deleted"], 0);
}

TEST_F(SizeLimitOfARun, TrimsInSeveralPassesNoMoreThanWithEachCompaction) {
  Generate("1");
  fs::copy(data_, folder_ / "plain");
  ASSERT_EQ(RunHost({"run", "--passes", "3", "--data-dir", folder_ / "plain"}).exit_code, 0);
  ASSERT_EQ(Run({"--max-stall", "0", "--passes", "3"}).exit_code, 0);
  EXPECT_EQ(RowsLeft(), Database(folder_ / "plain/DeviceProfileEvents.db").Count("DeviceEvents"));
}

}  // namespace
}  // namespace corvo::test
