// A program of its own: it replaces the standard library's steady clock, also for the libraries, to put it forward.
#include <sqlite3.h>
#include <time.h>

#include <chrono>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

std::chrono::seconds ahead{0};

}  // namespace
}  // namespace corvo::test

std::chrono::steady_clock::time_point std::chrono::steady_clock::now() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return time_point(corvo::test::ahead + std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec));
}

namespace corvo::test {
namespace {

class VerdictTime : public StorageTest {
 protected:
  VerdictTime() {
    CreateSamples(100);
    Database(file_).Run("CREATE TABLE Other(x)");
  }
  ~VerdictTime() override { ahead = std::chrono::seconds(0); }

  /// By a transaction of SQLite, which a verdict outlives.
  void Damage() {
    Database(file_).Run(
        "PRAGMA writable_schema=ON; UPDATE sqlite_schema SET rootpage = "
        "(SELECT rootpage FROM sqlite_schema WHERE name = 'Samples') WHERE name = 'Other'");
  }

  Error Delete(int id) {
    TelemetryStorage storage(file_.c_str(), "");
    return RunSql(storage, "DELETE FROM Samples WHERE id = " + std::to_string(id));
  }
};

TEST_F(VerdictTime, IsFiveMinutes) {
  ASSERT_THAT(Delete(1), Succeeded());
  Damage();

  ahead = std::chrono::minutes(4);
  EXPECT_THAT(Delete(2), Succeeded()) << "checked again, the file would be refused";

  ahead = std::chrono::minutes(6);
  EXPECT_THAT(Delete(3), FailsWith(SQLITE_CORRUPT, testing::StartsWith("database disk image is malformed: ")));
}

}  // namespace
}  // namespace corvo::test
