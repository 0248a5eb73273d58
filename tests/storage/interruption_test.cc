// A host that asks the statements of its process to end.
#include <sqlite3.h>

#include <chrono>
#include <future>
#include <memory>

#include "storage/result_code.h"
#include "storage/statement_observer.h"
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using std::chrono::minutes;

constexpr const char* kEndlessCount =
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT COUNT(*) FROM n";

/// Asks for the end of all statements as soon as one begins.
class InterruptAtStart : public shared::StatementObserver {
 public:
  void OnStart(const shared::StatementRecord& /*statement*/) noexcept override { begun_.set_value(); }
  void OnEnd(const shared::StatementRecord& /*statement*/) noexcept override {}
  void WaitForStart() { begun_.get_future().wait(); }

 private:
  std::promise<void> begun_;
};

class Interruption : public StorageTest {
 protected:
  Interruption() { CreateSamples(1000); }
  ~Interruption() override { shared::AllowStatements(); }

  /// Runs a statement on a thread of its own and interrupts it when it has begun.
  Error RunAndInterrupt(const char* sql) {
    const auto observer = std::make_shared<InterruptAtStart>();
    const shared::StatementObserverScope scope(observer);
    auto result = std::async(std::launch::async, [this, sql] {
      TelemetryStorage storage(file_.c_str(), "");
      return RunSql(storage, sql);
    });
    observer->WaitForStart();
    shared::InterruptStatements();
    return result.get();
  }
};

TEST_F(Interruption, EndsAStatementThatRuns) { EXPECT_TRUE(shared::IsInterrupted(RunAndInterrupt(kEndlessCount))); }

TEST_F(Interruption, RollsBackWhatAStatementHadDone) {
  const Error result = RunAndInterrupt(
      "WITH RECURSIVE n(i) AS (SELECT 2000 UNION ALL SELECT i + 1 FROM n) INSERT INTO Samples SELECT i, i FROM n");

  EXPECT_TRUE(shared::IsInterrupted(result)) << ErrorText(result);
  EXPECT_EQ(Database(file_).Number("SELECT COUNT(*) FROM Samples"), 1000);
}

TEST_F(Interruption, EndsTheWaitForALock) {
  const OptionScope waiting(&shared::StorageOptions::busy_timeout, minutes(10));
  Database other(file_);
  other.Run("BEGIN EXCLUSIVE");

  EXPECT_TRUE(shared::IsInterrupted(RunAndInterrupt("DELETE FROM Samples")));
}

TEST_F(Interruption, FailsLaterStatementsUntilTheyAreAllowedAgain) {
  TelemetryStorage storage(file_.c_str(), "");
  shared::InterruptStatements();

  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), FailsWith(SQLITE_INTERRUPT, "interrupted: by the host"));
  EXPECT_TRUE(shared::StatementsInterrupted());

  shared::AllowStatements();
  EXPECT_FALSE(shared::StatementsInterrupted());
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());
}

}  // namespace
}  // namespace corvo::test
