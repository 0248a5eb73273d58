#include "host/facts/look.h"

#include <gmock/gmock.h>

#include <fstream>

#include "storage/storage_options.h"
#include "support/database.h"
#include "support/option_scope.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

using Kind = Problem::Kind;
using testing::HasSubstr;

/// A database with one table, looked at as the contract's own.
class LookAt : public testing::Test {
 protected:
  void Create(const std::string& sql) const { test::Database(file_).Run(sql); }

  [[nodiscard]] DatabaseReport Look() const {
    const DatabaseView database{.type = "", .name = "HealthLog", .database = "HealthLog", .max_size_mb = 100};
    return LookAtDatabase(database, {contract_}, folder_.Path(), {folder_.Path(), folder_.Path()});
  }

  void ExpectProblem(Kind kind, const std::string& reason) const {
    const DatabaseReport report = Look();
    ASSERT_TRUE(report.problem.has_value());
    EXPECT_EQ(report.problem->kind, kind);
    EXPECT_THAT(report.problem->reason, HasSubstr(reason));
  }

  test::TempDir folder_;
  std::filesystem::path file_ = folder_.Path() / "HealthLog.db";
  ContractView contract_{.type = "",
                         .name = "Boot",
                         .table = "Boot",
                         .database = "HealthLog",
                         .max_rows = 100,
                         .retention_days = 30,
                         .max_size_mb = 100,
                         .descriptor = nullptr};
  const test::OptionScope no_waiting_{&shared::StorageOptions::busy_timeout, std::chrono::milliseconds(1)};
};

TEST_F(LookAt, CountsRowsAndBytesOfASoundDatabaseAndChangesNothing) {
  Create("CREATE TABLE Boot (time TEXT); INSERT INTO Boot VALUES ('2001-01-01'), ('2002-01-01')");
  const auto time = std::filesystem::last_write_time(file_);
  const DatabaseReport report = Look();
  EXPECT_FALSE(report.problem.has_value()) << report.problem->reason;
  EXPECT_EQ(report.tables[0].rows_before, 2);
  EXPECT_EQ(report.bytes_before, static_cast<std::int64_t>(std::filesystem::file_size(file_)));
  EXPECT_EQ(std::filesystem::last_write_time(file_), time);
}

TEST_F(LookAt, TakesAMissingTableForNoProblem) {
  Create("CREATE TABLE Other (time TEXT)");
  const DatabaseReport report = Look();
  EXPECT_FALSE(report.problem.has_value());
  EXPECT_TRUE(report.tables[0].missing);
}

TEST_F(LookAt, AfterwardsFindsTablesThatAnotherProgramTookAway) {
  for (const char* taken : {"DROP TABLE Boot", "PRAGMA writable_schema=ON; DELETE FROM sqlite_schema"}) {
    std::filesystem::remove(file_);
    Create("CREATE TABLE Boot (time TEXT); INSERT INTO Boot VALUES ('2001-01-01')");
    DatabaseReport report = Look();
    Create(taken);
    CountAfterwards(report);
    ASSERT_TRUE(report.problem.has_value()) << taken;
    EXPECT_EQ(report.problem->reason, "another program took Boot away during the run");
    EXPECT_EQ(report.tables[0].rows_after, 0);
    EXPECT_EQ(report.tables[0].AddedByOthers(), -1);
  }
}

TEST_F(LookAt, AfterwardsMindsNoTableThatWasNeverThere) {
  Create("CREATE TABLE Other (time TEXT)");
  DatabaseReport report = Look();
  CountAfterwards(report);
  EXPECT_FALSE(report.problem.has_value());
}

TEST_F(LookAt, FindsALockOfAnotherProgram) {
  Create("CREATE TABLE Boot (time TEXT)");
  for (const char* lock : {"BEGIN IMMEDIATE", "BEGIN EXCLUSIVE"}) {
    test::Database other(file_);
    other.Run(lock);
    ExpectProblem(Kind::kBusy, "another program holds it locked");
  }
}

TEST_F(LookAt, FindsDamage) {
  std::ofstream(file_) << "this is no database, but it is long enough to look at";
  ExpectProblem(Kind::kUnfit, "file is not a database");
}

TEST_F(LookAt, FindsADirectoryInPlaceOfTheFile) {
  std::filesystem::create_directory(file_);
  ExpectProblem(Kind::kCannotOpen, "not a regular file");
}

TEST_F(LookAt, FindsASideFileThatIsNoFile) {
  Create("CREATE TABLE Boot (time TEXT)");
  std::filesystem::create_directory(folder_.Path() / "HealthLog.db-journal");
  ExpectProblem(Kind::kCannotOpen, "HealthLog.db-journal");
}

TEST_F(LookAt, AsksForRoomInBothPlaces) {
  Create("CREATE TABLE Boot (time TEXT)");
  const DatabaseView database{.type = "", .name = "HealthLog", .database = "HealthLog", .max_size_mb = 100};
  const DatabaseReport report =
      LookAtDatabase(database, {contract_}, folder_.Path(), {folder_.Path(), folder_.Path() / "missing"});
  EXPECT_FALSE(report.problem.has_value()) << "what cannot be asked is no reason";
}

struct Misread {
  const char* sql;
  const char* reason;

  friend void PrintTo(const Misread& value, std::ostream* stream) { *stream << value.sql; }
};

class WhatTheRulesWouldMisread : public LookAt, public testing::WithParamInterface<Misread> {};

TEST_P(WhatTheRulesWouldMisread, IsAProblemOfTheTableAndTheDatabase) {
  Create(GetParam().sql);
  ExpectProblem(Kind::kUnfit, GetParam().reason);
  EXPECT_EQ(Look().tables[0].problem, GetParam().reason);
}

INSTANTIATE_TEST_SUITE_P(
    Tables, WhatTheRulesWouldMisread,
    testing::Values(Misread{"CREATE TABLE Boot (stamp TEXT)", "Boot has no column time"},
                    Misread{"CREATE TABLE Boot (time TEXT PRIMARY KEY) WITHOUT ROWID", "Boot has no rowids"},
                    Misread{"CREATE TABLE Boot (time TEXT, rowid TEXT)", "Boot has an ordinary column called rowid"},
                    Misread{"CREATE TABLE Base (time TEXT); CREATE VIEW Boot AS SELECT * FROM Base", "Boot is a view"},
                    Misread{"CREATE VIRTUAL TABLE Boot USING fts4(time)", "Boot is a virtual table"}));

TEST_F(LookAt, AsksOnlyForWhatTheContractsRulesNeed) {
  contract_.retention_days = 0;
  Create("CREATE TABLE Boot (stamp TEXT)");
  EXPECT_FALSE(Look().problem.has_value());
  contract_ = {.type = "",
               .name = "Boot",
               .table = "Boot",
               .database = "HealthLog",
               .max_rows = 0,
               .retention_days = 30,
               .max_size_mb = 0,
               .descriptor = nullptr};
  Create("DROP TABLE Boot; CREATE TABLE Boot (time TEXT PRIMARY KEY) WITHOUT ROWID");
  EXPECT_FALSE(Look().problem.has_value());
}

TEST_F(LookAt, TakesTheRowidUnderItsOwnNameForWhatItIs) {
  Create("CREATE TABLE Boot (time TEXT, rowid INTEGER PRIMARY KEY)");
  EXPECT_FALSE(Look().problem.has_value());
}

TEST(HasFile, IsTrueForAnythingThatHasTheName) {
  const test::TempDir folder;
  EXPECT_FALSE(HasFile(folder.Path() / "missing.db"));
  EXPECT_TRUE(HasFile(folder.Path()));
}

TEST(HasFile, IsTrueForANameThatCannotBeLookedAt) {
  const test::TempDir folder;
  EXPECT_TRUE(HasFile(folder.Path() / std::string(5000, 'x')));
}

}  // namespace
}  // namespace corvo::telemetry::host
