// Waiting for other connections.
#include <sqlite3.h>

#include <future>
#include <memory>
#include <utility>

#include "storage/statement_observer.h"
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

class Locking : public StorageTest {
 protected:
  Locking() { CreateSamples(3); }
};

class LockKinds : public Locking, public testing::WithParamInterface<const char*> {};

TEST_P(LockKinds, HeldLongerThanTheTimeoutAreTheResult) {
  const OptionScope waiting(&shared::StorageOptions::busy_timeout, std::chrono::milliseconds(1));
  Database other(file_);
  other.Run(GetParam());
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), FailsWith(SQLITE_BUSY, "database is locked"));

  other.Run("ROLLBACK");
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());
}

INSTANTIATE_TEST_SUITE_P(Locking, LockKinds, testing::Values("BEGIN IMMEDIATE", "BEGIN EXCLUSIVE"));

/// Tells when the first statement has begun.
class StartSignal : public shared::StatementObserver {
 public:
  void OnStart(const shared::StatementRecord& /*statement*/) noexcept override { started_.set_value(); }
  void OnEnd(const shared::StatementRecord& /*statement*/) noexcept override {}
  void Wait() { started_.get_future().wait(); }

 private:
  std::promise<void> started_;
};

TEST_F(Locking, WaitsForALockThatIsReleasedInTime) {
  const OptionScope waiting(&shared::StorageOptions::busy_timeout, std::chrono::minutes(10));
  Database other(file_);
  other.Run("BEGIN EXCLUSIVE");
  const auto signal = std::make_shared<StartSignal>();
  const auto former = shared::SetStatementObserver(signal);

  auto result = std::async(std::launch::async, [this] {
    TelemetryStorage storage(file_.c_str(), "");
    return RunSql(storage, "DELETE FROM Samples");
  });
  signal->Wait();
  other.Run("COMMIT");

  EXPECT_THAT(result.get(), Succeeded());
  EXPECT_EQ(other.Count("Samples"), 0);
  shared::SetStatementObserver(former);
}

}  // namespace
}  // namespace corvo::test
