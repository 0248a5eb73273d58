#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "support/case_name.h"
#include "support/log_capture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using google::protobuf::Message;

/// The statement that takes `count` rows off a table.
std::string Trim(const std::string& table, int count) {
  return "DELETE FROM " + table + " WHERE rowid IN (SELECT rowid FROM " + table + " ORDER BY rowid ASC LIMIT " +
         std::to_string(count) + ");";
}

class EnforceSizeLimit : public EngineTest {
 protected:
  Message* Table(const std::string& name, std::uint32_t max_size_mb) {
    return contracts.Make(name, {.database = "Log", .max_size_mb = max_size_mb});
  }

  /// Makes the database file as long as this, without a page more: its tables measure 0.
  void Lengthen(std::uintmax_t bytes) const { std::filesystem::resize_file(directory / "Log.db", bytes); }

  telemetry::common::Error Enforce(const DatabaseEntry& entry) const { return DataCleanup().EnforceSizeLimit(&entry); }
};

TEST_F(EnforceSizeLimit, NullAndEmptyEntriesAreSuccesses) {
  const StatementLog statements;
  EXPECT_THAT(DataCleanup().EnforceSizeLimit(nullptr), Succeeded());
  EXPECT_THAT(Enforce({100, {}}), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

TEST_F(EnforceSizeLimit, EntryLimitZeroMeasuresNothingWhateverItsContractsSay) {
  CreateDatabase("Log", "A", 10);
  Lengthen(9'000'000);
  const StatementLog statements;
  EXPECT_THAT(Enforce({0, {Table("A", 1)}}), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::IsEmpty());
}

TEST_F(EnforceSizeLimit, MeasuresAllTablesThenCountsAndTrimsEach) {
  Database database = Open("Log");
  CreateTable(database, "A");
  AddRows(database, "A", 5000);
  CreateTableMeasuring(database, "B", 2);
  AddRows(database, "B", 10);
  const StatementLog statements;
  EXPECT_THAT(Enforce({2, {Table("A", 2), Table("B", 2)}}), Succeeded());
  EXPECT_THAT(statements.Sql(),
              testing::ElementsAre("SELECT pgsize, pageno FROM dbstat WHERE name='A'",
                                   "SELECT pgsize, pageno FROM dbstat WHERE name='B'", "SELECT COUNT(*) AS rows FROM A",
                                   Trim("A", 500), "SELECT COUNT(*) AS rows FROM B", Trim("B", 1)));
  EXPECT_EQ(database.Number("SELECT min(value) FROM A"), 501);
}

TEST_F(EnforceSizeLimit, AddsTheTablesUp) {
  Database database = Open("Log");
  CreateTableMeasuring(database, "A", 2);
  AddRows(database, "A", 10);
  CreateTable(database, "B");
  AddRows(database, "B", 10);
  // 2 + 2 MB against 4 MB.
  EXPECT_THAT(Enforce({4, {Table("A", 4), Table("B", 4)}}), Succeeded());
  EXPECT_EQ(database.Count("A"), 9);
  EXPECT_EQ(database.Count("B"), 9);
}

TEST_F(EnforceSizeLimit, BelowTheLimitTrimsNothing) {
  Database database = Open("Log");
  CreateTableMeasuring(database, "A", 2);
  AddRows(database, "A", 10);
  const StatementLog statements;
  EXPECT_THAT(Enforce({3, {Table("A", 3)}}), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("SELECT pgsize, pageno FROM dbstat WHERE name='A'"));
}

TEST_F(EnforceSizeLimit, TablesThatMeasureSomethingHideTheSizeOfTheFile) {
  Database database = Open("Log");
  CreateTableMeasuring(database, "A", 2);
  AddRows(database, "A", 10);
  Lengthen(90'000'000);
  EXPECT_THAT(Enforce({3, {Table("A", 3)}}), Succeeded());
  EXPECT_EQ(database.Count("A"), 10);
}

struct FileCase {
  const char* name;
  std::uintmax_t bytes;
  std::int64_t rows, left;

  friend void PrintTo(const FileCase& value, std::ostream* stream) { *stream << value.name; }
};

/// Tables that measure 0 under a limit of 100 MB: the size of the file counts.
class FileSize : public EnforceSizeLimit, public testing::WithParamInterface<FileCase> {};

TEST_P(FileSize, DecidesTheShareThatEveryTableLoses) {
  CreateDatabase("Log", "A", GetParam().rows);
  Lengthen(GetParam().bytes);
  const LogCapture log;
  EXPECT_THAT(Enforce({100, {Table("A", 100)}}), Succeeded());
  EXPECT_EQ(Open("Log").Count("A"), GetParam().left);
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Files, FileSize,
                         testing::Values(FileCase{"BelowTheLimit", 99'999'999, 5000, 5000},
                                         FileCase{"ExactlyAtTheLimit", 100'000'000, 5000, 4500},
                                         FileCase{"BytesOfTheNextMegabyteDoNotCount", 100'999'999, 5000, 4500},
                                         FileCase{"OnePercentOver", 101'000'000, 5000, 4450},
                                         FileCase{"TwentyPercentOver", 120'000'000, 1000, 700},
                                         FileCase{"From1Point9TimesEmptied", 190'000'000, 1000, 0},
                                         FileCase{"MoreThanThereIs", 250'000'000, 1000, 0},
                                         FileCase{"TenRowsLoseOne", 100'000'000, 10, 9},
                                         FileCase{"TwoRowsLoseOne", 100'000'000, 2, 1},
                                         FileCase{"OneRowLosesOne", 100'000'000, 1, 0}),
                         CaseName());

TEST_F(EnforceSizeLimit, FileOfASymbolicLinkIsMeasuredNotTheLink) {
  CreateDatabase("Log", "A", 1000);
  Lengthen(120'000'000);
  std::filesystem::rename(directory / "Log.db", directory / "Elsewhere.db");
  std::filesystem::create_symlink(directory / "Elsewhere.db", directory / "Log.db");
  EXPECT_THAT(Enforce({100, {Table("A", 100)}}), Succeeded());
  EXPECT_EQ(Open("Elsewhere").Count("A"), 700);
}

TEST_F(EnforceSizeLimit, FileOfTheLastContractIsMeasured) {
  CreateDatabase("Log", "A", 1000);
  CreateDatabase("Large", "B", 1000);
  std::filesystem::resize_file(directory / "Large.db", 100'000'000);
  auto* last = contracts.Make("B", {.database = "Large", .max_size_mb = 100});
  EXPECT_THAT(Enforce({100, {Table("A", 100), last}}), Succeeded());
  EXPECT_EQ(Open("Large").Count("B"), 900);
}

TEST_F(EnforceSizeLimit, MissingFileLeavesTheSizeUnknownAndTrimsNothing) {
  const StatementLog statements;
  EXPECT_THAT(Enforce({1, {Table("A", 1)}}), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("SELECT pgsize, pageno FROM dbstat WHERE name='A'"));
}

TEST_F(EnforceSizeLimit, EmptyTableIsStillAskedForOneRow) {
  CreateDatabase("Log", "A", 0);
  Lengthen(1'000'000);
  const StatementLog statements;
  EXPECT_THAT(Enforce({1, {Table("A", 1)}}), Succeeded());
  EXPECT_EQ(statements.Sql().back(), Trim("A", 1));
}

TEST_F(EnforceSizeLimit, MissingTableIsAskedForOneRowAndForgiven) {
  CreateDatabase("Log", "Other", 3);
  Lengthen(1'000'000);
  const StatementLog statements;
  EXPECT_THAT(Enforce({1, {Table("A", 1)}}), Succeeded());
  EXPECT_EQ(statements.Sql().back(), Trim("A", 1));
  EXPECT_EQ(Open("Log").Count("Other"), 3);
}

TEST_F(EnforceSizeLimit, EachContractCountsWithItsOwnLimit) {
  CreateDatabase("Log", "A", 10);
  Database database = Open("Log");
  for (const char* table : {"B", "C", "D"}) {
    CreateTable(database, table);
    AddRows(database, table, 10);
  }
  Lengthen(3'000'000);
  // Against 3 MB: without a limit, over 3, over 2, under 4.
  EXPECT_THAT(Enforce({1, {Table("A", 0), Table("B", 3), Table("C", 2), Table("D", 4)}}), Succeeded());
  EXPECT_EQ(database.Count("A"), 10);
  EXPECT_EQ(database.Count("B"), 9);
  EXPECT_EQ(database.Count("C"), 4);
  EXPECT_EQ(database.Count("D"), 10);
}

TEST_F(EnforceSizeLimit, NullContractAmongOthersIsLeftOut) {
  CreateDatabase("Log", "A", 10);
  Lengthen(1'000'000);
  auto* table = Table("A", 1);
  EXPECT_THAT(Enforce({1, {table, nullptr, table}}), Succeeded());
  EXPECT_EQ(Open("Log").Count("A"), 8);
}

TEST_F(EnforceSizeLimit, NullContractInFrontSwitchesTheLimitOff) {
  CreateDatabase("Log", "A", 10);
  Lengthen(1'000'000);
  EXPECT_THAT(Enforce({1, {nullptr, Table("A", 1)}}), Succeeded());
  EXPECT_EQ(Open("Log").Count("A"), 10);
}

/// Tables "Good" and "Bad" of 10 rows, over the limit; no rows can be taken off "Bad".
class FailingTable : public EnforceSizeLimit {
 protected:
  FailingTable() {
    CreateDatabase("Log", "Good", 10);
    Open("Log").Run("CREATE TABLE Bad (time TEXT, value PRIMARY KEY) WITHOUT ROWID");
    Lengthen(1'000'000);
  }
};

TEST_F(FailingTable, DoesNotStopTheOthersAndIsForgottenAfterThem) {
  EXPECT_THAT(Enforce({1, {Table("Bad", 1), Table("Good", 1)}}), Succeeded());
  EXPECT_EQ(Open("Log").Count("Good"), 9);
}

TEST_F(FailingTable, IsTheResultWhenItIsTheLast) {
  EXPECT_THAT(Enforce({1, {Table("Good", 1), Table("Bad", 1)}}), FailedWith("no such column: rowid"));
  EXPECT_EQ(Open("Log").Count("Good"), 9);
}

TEST_F(FailingTable, StaysTheResultWhenLaterTablesAreNotTrimmed) {
  EXPECT_THAT(Enforce({1, {Table("Bad", 1), Table("Good", 2)}}), FailedWith("no such column: rowid"));
}

}  // namespace
}  // namespace corvo::test
