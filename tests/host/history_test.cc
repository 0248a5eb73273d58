#include "host/facts/record/history.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "host/facts/record/history_line.h"
#include "host/run_fixture.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

RunRecord RunAt(std::int64_t start) {
  RunRecord run{.start = start, .end = start + 2, .seconds = 1.5};
  run.databases.push_back({.name = "HealthLog", .bytes_before = 9'000, .bytes_after = 4'000});
  run.databases[0].tables.push_back({.table = "Boot",
                                     .rows_before = 100,
                                     .rows_after = 70,
                                     .deleted = {.expired = 20, .row_limit = 7, .size_limit = 3},
                                     .last_rowid = 70,
                                     .seconds = 0.25});
  return run;
}

class History : public testing::Test {
 protected:
  void Add(const RunRecord& run) const { AddToHistory(folder_.Path(), run); }
  [[nodiscard]] std::vector<RunRecord> Read() const { return ReadHistory(folder_.Path()); }

  [[nodiscard]] std::vector<std::int64_t> Starts() const {
    std::vector<std::int64_t> starts;
    for (const RunRecord& run : Read()) {
      starts.push_back(run.start);
    }
    return starts;
  }

  [[nodiscard]] std::string Text() const {
    std::ostringstream text;
    text << std::ifstream(file_, std::ios::binary).rdbuf();
    return text.str();
  }
  void Write(const std::string& text) const { std::ofstream(file_, std::ios::binary) << text; }

  test::TempDir folder_;
  const fs::path file_ = folder_.Path() / kHistoryFile;
};

TEST_F(History, IsEmptyWithoutAFile) { EXPECT_THAT(Read(), IsEmpty()); }

TEST_F(History, KeepsWhatARunDid) {
  Add(RunAt(1'700'000'000));
  const RunRecord run = Read().at(0);
  EXPECT_EQ(run.start, 1'700'000'000);
  EXPECT_EQ(run.end, 1'700'000'002);
  EXPECT_EQ(run.seconds, 1.5);
  EXPECT_EQ(run.result, "");
  EXPECT_EQ(run.DeletedRows().Sum(), 30);
  EXPECT_EQ(run.BytesFreed(), 5'000);
  const TableRecord& table = run.databases.at(0).tables.at(0);
  EXPECT_EQ(table.table, "Boot");
  EXPECT_EQ(table.rows_before, 100);
  EXPECT_EQ(table.rows_after, 70);
  EXPECT_EQ(table.deleted.row_limit, 7);
  EXPECT_EQ(table.last_rowid, 70);
  EXPECT_EQ(table.seconds, 0.25);
}

TEST_F(History, KeepsWhatWasCompactedAndWhatWasNot) {
  RunRecord run = RunAt(1);
  run.databases[0].compacted_bytes = 4'000;
  run.compaction_rate = 2.5e6;
  run.databases.push_back({.name = "Cache", .not_compacted = "0.3 % free"});
  Add(run);
  EXPECT_EQ(Read().at(0).compaction_rate, 2.5e6);
  EXPECT_EQ(Read().at(0).databases.at(0).compacted_bytes, 4'000);
  EXPECT_EQ(Read().at(0).databases.at(0).not_compacted, "");
  EXPECT_EQ(Read().at(0).databases.at(1).not_compacted, "0.3 % free");
}

TEST_F(History, ReadsLinesThatSayNothingOfIt) {
  std::string line = HistoryLine(RunAt(1));
  const std::string members = R"("compacted_bytes":0,"not_compacted":"",)";
  ASSERT_THAT(line, HasSubstr(members));
  line.erase(line.find(members), members.size());
  Write(line + "\n");
  EXPECT_THAT(Starts(), ElementsAre(1));
}

TEST_F(History, KeepsWhatIsNotKnownAsSuch) {
  RunRecord run = RunAt(1);
  run.databases[0].tables = {{.table = "Gone"}};
  Add(run);
  const TableRecord table = Read().at(0).databases.at(0).tables.at(0);
  EXPECT_FALSE(table.rows_before || table.rows_after || table.last_rowid);
}

TEST_F(History, IsInTheOrderOfTheRuns) {
  for (const std::int64_t start : {30, 10, 20}) {
    Add(RunAt(start));
  }
  EXPECT_THAT(Starts(), ElementsAre(30, 10, 20));
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Path()), {}), 1);
}

TEST_F(History, ForgetsTheOldestRuns) {
  std::string lines;
  for (std::size_t run = 0; run < kMostRuns; ++run) {
    lines += HistoryLine(RunAt(static_cast<std::int64_t>(run))) + "\n";
  }
  Write(lines);
  Add(RunAt(1'000));
  EXPECT_THAT(Read(), SizeIs(kMostRuns));
  EXPECT_EQ(Starts().front(), 1);
  EXPECT_EQ(Starts().back(), 1'000);
}

TEST_F(History, StaysAroundAMegabyteWhateverTheRunsAre) {
  RunRecord big = RunAt(1);
  big.databases.assign(20, {.name = "Cache", .problem = std::string(100'000, 'x')});
  std::string lines;
  for (int run = 0; run < 150; ++run) {
    lines += HistoryLine(big) + "\n";
  }
  ASSERT_GT(lines.size(), 1'500'000u);
  Write(lines);
  Add(RunAt(2));
  EXPECT_LE(fs::file_size(file_), 1'000'000u);
  EXPECT_GT(fs::file_size(file_), 900'000u);
  EXPECT_EQ(Starts().back(), 2);
}

TEST_F(History, LeavesATornLineOut) {
  Add(RunAt(1));
  const std::string whole = Text();
  Add(RunAt(2));
  Write(Text().substr(0, whole.size() * 2 - 20));
  EXPECT_THAT(Starts(), ElementsAre(1));
  Add(RunAt(3));
  EXPECT_THAT(Starts(), ElementsAre(1, 3));
}

TEST_F(History, LeavesOutWhatIsNoRecord) {
  const std::string line = HistoryLine(RunAt(7));
  Write("\n\x01\xff\n{}\n[]\nnull\n{\"version\":2}\n" + line + "\r\n" + std::string(50'000, '[') + "\n" + line);
  EXPECT_THAT(Starts(), ElementsAre(7, 7));
}

TEST_F(History, ReadsNoMoreThanTheEndOfAHugeFile) {
  Write("");
  fs::resize_file(file_, 10'000'000);
  std::ofstream(file_, std::ios::binary | std::ios::app) << "\n" << HistoryLine(RunAt(7)) << "\n";
  EXPECT_THAT(Starts(), ElementsAre(7));
  Add(RunAt(8));
  EXPECT_THAT(Starts(), ElementsAre(7, 8));
  EXPECT_LT(fs::file_size(file_), 10'000u);
}

TEST_F(History, KeepsMembersThatANewerProgramAdded) {
  std::string line = HistoryLine(RunAt(7));
  line.insert(line.size() - 1, R"(,"added":"later")");
  Write(line + "\n");
  Add(RunAt(8));
  EXPECT_THAT(Text(), HasSubstr(line));
}

TEST_F(History, RefusesADirectoryInItsPlaceAndLeavesItThere) {
  fs::create_directory(file_);
  EXPECT_THROW(static_cast<void>(Read()), std::runtime_error);
  EXPECT_THROW(Add(RunAt(1)), std::runtime_error);
  EXPECT_TRUE(fs::is_directory(file_));
}

TEST_F(History, RefusesAHardLinkAndLeavesItThere) {
  const fs::path other = folder_.Path() / "other";
  std::ofstream(other) << "theirs";
  fs::create_hard_link(other, file_);
  EXPECT_THROW(static_cast<void>(Read()), std::runtime_error);
  EXPECT_THROW(Add(RunAt(1)), std::runtime_error);
  EXPECT_EQ(Text(), "theirs");
  EXPECT_EQ(fs::hard_link_count(other), 2u);
}

/// A part of a line and what takes its place.
using Replacement = std::pair<std::string, std::string>;

class NumbersNobodyCounted : public testing::TestWithParam<Replacement> {};

TEST_P(NumbersNobodyCounted, MakeNoRecord) {
  std::string line = HistoryLine(RunAt(7));
  const auto& [from, to] = GetParam();
  const std::size_t at = line.find(from);
  ASSERT_NE(at, std::string::npos) << line;
  EXPECT_TRUE(ReadHistoryLine(line).has_value());
  EXPECT_FALSE(ReadHistoryLine(line.replace(at, from.size(), to)).has_value());
}

INSTANTIATE_TEST_SUITE_P(All, NumbersNobodyCounted,
                         testing::Values(Replacement(R"("start":7)", R"("start":-1)"),
                                         Replacement(R"("start":7)", R"("start":7.5)"),
                                         Replacement(R"("start":7)", R"("start":"7")"),
                                         Replacement(R"("start":7)", R"("start":1e99)"),
                                         Replacement(R"("start":7)", R"("start":9223372036854775807)"),
                                         Replacement(R"("expired":20)", R"("expired":-20)"),
                                         Replacement(R"("expired":20)", R"("expired":18446744073709551615)"),
                                         Replacement(R"("last_rowid":70)", R"("last_rowid":9223372036854775808)"),
                                         Replacement(R"("version":1)", R"("version":2)"),
                                         Replacement(R"("databases":[)", R"("databases":[1,)"),
                                         Replacement(R"("name":"HealthLog")", R"("name":null)")));

TEST(RecordOf, TellsWhyARunDidNotCleanEverything) {
  RunReport report;
  report.databases.push_back({.name = "Cache", .path = {}, .tables = {{.table = "Boot"}}});
  EXPECT_EQ(RecordOf(report).result, "");
  report.databases[0].problem = Problem{Problem::Kind::kBusy, "another program holds it locked", {}};
  EXPECT_EQ(RecordOf(report).result, "Cache: another program holds it locked");
  EXPECT_EQ(RecordOf(report).databases.at(0).problem, "another program holds it locked");
  report.signal = 15;
  EXPECT_EQ(RecordOf(report).result, "interrupted");
}

TEST(RecordOf, HoldsNoByteThatJsonCannot) {
  RunReport report;
  report.databases.push_back({.name = "Cache", .path = {}, .tables = {}});
  report.databases[0].problem = Problem{Problem::Kind::kUnfit, "\xff\xfe\n" + std::string(499, '\xc3'), {}};
  const std::string line = HistoryLine(RecordOf(report));
  EXPECT_EQ(line.find('\n'), std::string::npos);
  EXPECT_TRUE(ReadHistoryLine(line).has_value());
}

using RunHistory = test::RunTest;

TEST_F(RunHistory, HoldsEachRunWithWhatItDid) {
  Generate();
  const auto before = std::time(nullptr);
  ASSERT_EQ(Run().exit_code, 0);
  ASSERT_EQ(Run({"--database", "Cache"}).exit_code, 0);
  const std::vector<RunRecord> runs = ReadHistory(data_);
  ASSERT_THAT(runs, SizeIs(2));
  EXPECT_EQ(runs[0].databases.size(), 5u);
  EXPECT_EQ(runs[1].databases.size(), 1u);
  EXPECT_GE(runs[0].start, before);
  EXPECT_GE(runs[1].start, runs[0].end);
  for (const TableRecord& table : runs[0].databases[0].tables) {
    EXPECT_EQ(table.rows_after, *table.rows_before - table.deleted.Sum());
  }
}

TEST_F(RunHistory, StaysWhenTheDatabasesAreGeneratedAnew) {
  Generate();
  ASSERT_EQ(Run().exit_code, 0);
  ASSERT_EQ(test::RunHost({"generate", "--data-dir", data_, "--scale", "0.01", "--force"}).exit_code, 0);
  EXPECT_THAT(ReadHistory(data_), SizeIs(1));
}

TEST_F(RunHistory, IsNoReasonToFailARunWhenItCannotBeWritten) {
  Generate();
  fs::create_directory(File(kHistoryFile));
  const test::HostRun run = Run();
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.err, HasSubstr("this run is missing from the history: " + File(kHistoryFile).string()));
  EXPECT_TRUE(fs::is_empty(File(kHistoryFile)));
}

TEST_F(RunHistory, HoldsNoPlan) {
  Generate();
  ASSERT_EQ(test::RunHost({"plan", "--data-dir", data_}).exit_code, 0);
  EXPECT_FALSE(fs::exists(File(kHistoryFile)));
}

}  // namespace
}  // namespace corvo::telemetry::host
