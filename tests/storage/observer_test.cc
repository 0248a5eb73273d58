// What a statement observer sees.
#include <sqlite3.h>

#include <memory>
#include <ostream>
#include <utility>

#include "storage/result_code.h"
#include "storage/statement_observer.h"
#include "storage/storage_fixture.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using shared::StatementObserver;
using shared::StatementRecord;

/// Keeps every call as a line of text.
class Recorder : public StatementObserver {
 public:
  void OnStart(const StatementRecord& record) noexcept override {
    lines.push_back("start " + Line(record));
    ends_at_start = ends_at_start && record.end == record.start;
  }
  void OnEnd(const StatementRecord& record) noexcept override {
    lines.push_back("end " + Line(record));
    in_order = in_order && record.start <= record.end;
  }

  static std::string Line(const StatementRecord& record) {
    return std::string(record.sql) + " | " + std::to_string(record.rows_changed) + " | " + record.result.what;
  }

  std::vector<std::string> lines;
  bool ends_at_start = true;
  bool in_order = true;
};

class Observer : public StorageTest {
 public:
  Observer() {
    CreateSamples(5);
    former_ = shared::SetStatementObserver(recorder_);
  }
  ~Observer() override { shared::SetStatementObserver(former_); }

 protected:
  std::shared_ptr<Recorder> recorder_ = std::make_shared<Recorder>();
  std::shared_ptr<StatementObserver> former_;
};

TEST_F(Observer, SeesEachStatementOnceBeforeAndAfterItRuns) {
  TelemetryStorage storage(file_.c_str(), "");

  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id < 3"), Succeeded());
  ASSERT_TRUE(RunSql(storage, "DELETE FROM Missing").Failed());

  EXPECT_EQ(recorder_->lines,
            (std::vector<std::string>{"start DELETE FROM Samples WHERE id < 3 | 0 | ",
                                      "end DELETE FROM Samples WHERE id < 3 | 2 | ", "start DELETE FROM Missing | 0 | ",
                                      "end DELETE FROM Missing | 0 | no such table: Missing"}));
  EXPECT_TRUE(recorder_->ends_at_start);
  EXPECT_TRUE(recorder_->in_order);
}

TEST_F(Observer, SeesStatementsOfACommandThatRunsAgain) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand("SELECT 1");
  ASSERT_THAT(storage.Execute(command, false), Succeeded());

  command->Execute("SELECT 2", nullptr, 0);

  EXPECT_EQ(recorder_->lines, (std::vector<std::string>{"start SELECT 1 | 0 | ", "end SELECT 1 | 0 | ",
                                                        "start SELECT 2 | 0 | ", "end SELECT 2 | 0 | "}));
}

TEST_F(Observer, SeesRefusedStatements) {
  TelemetryStorage open(file_.c_str(), "");
  TelemetryStorage missing((dir_ / "Missing.db").c_str(), "");

  ASSERT_TRUE(RunSql(open, "SELECT 1; SELECT 2").Failed());
  ASSERT_TRUE(RunSql(missing, "SELECT 3").Failed());

  ASSERT_EQ(recorder_->lines.size(), 4U);
  EXPECT_THAT(recorder_->lines[1], testing::HasSubstr("more than one statement"));
  EXPECT_THAT(recorder_->lines[3], testing::HasSubstr("no such file"));
}

TEST_F(Observer, IsHandedBackWhenAnotherOneTakesItsPlace) {
  EXPECT_EQ(shared::GetStatementObserver(), recorder_);
  EXPECT_EQ(shared::SetStatementObserver(nullptr), recorder_);
  EXPECT_EQ(shared::GetStatementObserver(), nullptr);

  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "SELECT 1"), Succeeded());
  EXPECT_TRUE(recorder_->lines.empty());
}

/// Ends the statement when it has been told a few times that it runs.
class Impatient : public StatementObserver {
 public:
  void OnProgress(const StatementRecord& record) noexcept override {
    sql = record.sql;
    in_order = in_order && last < record.end && record.start < record.end;
    last = record.end;
    if (++calls == 3) {
      shared::InterruptStatements();
    }
  }
  void OnEnd(const StatementRecord& record) noexcept override { failed = record.result.Failed(); }

  std::string sql;
  int calls = 0;
  bool in_order = true;
  bool failed = false;
  std::chrono::steady_clock::time_point last;
};

TEST_F(Observer, IsToldFromTimeToTimeThatAStatementRuns) {
  const auto impatient = std::make_shared<Impatient>();
  shared::SetStatementObserver(impatient);
  TelemetryStorage storage(file_.c_str(), "");
  const std::string endless = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT count(*) FROM n";

  EXPECT_TRUE(shared::IsInterrupted(RunSql(storage, endless)));
  shared::AllowStatements();

  EXPECT_EQ(impatient->calls, 3);
  EXPECT_EQ(impatient->sql, endless);
  EXPECT_TRUE(impatient->in_order && impatient->failed);
}

struct Change {
  const char* sql;
  std::int64_t rows;

  friend void PrintTo(const Change& value, std::ostream* stream) { *stream << value.sql; }
};

class RowsChanged : public StorageTest, public testing::WithParamInterface<Change> {};

TEST_P(RowsChanged, CountThisStatementAlone) {
  CreateSamples(5);
  Database(file_).Run("CREATE UNIQUE INDEX OneValue ON Samples(v)");
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "DELETE FROM Samples WHERE id = 1"), Succeeded());
  const StatementLog log;

  static_cast<void>(RunSql(storage, GetParam().sql));

  ASSERT_EQ(log.All().size(), 1U);
  EXPECT_EQ(log.All()[0].rows_changed, GetParam().rows);
  EXPECT_EQ(log.All()[0].file, "Test.db");
}

INSTANTIATE_TEST_SUITE_P(Observer, RowsChanged,
                         testing::Values(Change{"DELETE FROM Samples", 4},
                                         Change{"DELETE FROM Samples WHERE id > 3", 2},
                                         Change{"UPDATE Samples SET v = id", 4}, Change{"SELECT * FROM Samples", 0},
                                         Change{"DELETE FROM Samples WHERE id > 9", 0}, Change{"VACUUM;", 0},
                                         Change{"UPDATE Samples SET v = 'same'", 0},
                                         Change{"UPDATE OR FAIL Samples SET v = 'same'", 1},
                                         Change{"DELETE FROM Missing", 0}, Change{"CREATE TABLE New(x)", 0}));

}  // namespace
}  // namespace corvo::test
