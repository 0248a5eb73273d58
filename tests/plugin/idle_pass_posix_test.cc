// What a pass writes that has nothing to delete, by the kernel's own count.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <vector>

#include "plugin/data_cleanup_plugin.h"
#include "plugin/pass_fixture.h"
#include "storage/statement_observer.h"
#include "support/buffer_allocator.h"
#include "support/option_scope.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using shared::StorageOptions;

/// What this process has written until now.
struct Written {
  std::int64_t by_calls = 0;  ///< bytes handed to the system's functions
  std::int64_t to_disk = 0;   ///< bytes of files that the system has to write out

  bool operator==(const Written&) const = default;
};

/// Nothing where the kernel does not tell.
Written WrittenUntilNow() {
  std::ifstream file("/proc/self/io");
  std::map<std::string, std::int64_t> counts;
  for (std::string name; file >> name;) {
    file >> counts[name];
  }
  return {counts["wchar:"], counts["write_bytes:"]};
}

class Compactions : public shared::StatementObserver {
 public:
  void OnEnd(const shared::StatementRecord& statement) noexcept override {
    left_out += statement.left_out != nullptr ? 1 : 0;
  }

  int left_out = 0;
};

class IdlePass : public PassTest {
 protected:
  IdlePass() { CreatePowerEvents(1'000); }

  static void Pass() {
    char* output = nullptr;
    const BufferAllocator allocator;
    telemetry::plugin::DataCleanupPlugin().Execute("", output, allocator);
    EXPECT_STREQ(output, kSuccessJson);
  }

  [[nodiscard]] std::map<std::string, fs::file_time_type> Times() const {
    std::map<std::string, fs::file_time_type> times;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory.Path())) {
      times[entry.path().filename().string()] = entry.last_write_time();
    }
    return times;
  }

  [[nodiscard]] std::uintmax_t LogBytes() const { return fs::file_size(directory / "DeviceUsage.db-wal"); }

  std::shared_ptr<Compactions> compactions_ = std::make_shared<Compactions>();

 private:
  const shared::StatementObserverScope scope_{compactions_};
};

/// One who reads, and stays.
class Reader {
 public:
  explicit Reader(Database& database) : database_(database) {
    database.Run("BEGIN");
    static_cast<void>(database.Count("PowerEvents"));
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { database_.Run("ROLLBACK"); }

 private:
  Database& database_;
};

TEST_F(IdlePass, WritesNotOneByteWhenCompactionIsLeftOut) {
  const OptionScope option(&StorageOptions::compact_when_free, 1);
  const auto times = Times();
  const Written before = WrittenUntilNow();
  Pass();
  EXPECT_EQ(WrittenUntilNow(), before);
  EXPECT_EQ(compactions_->left_out, 1);
  EXPECT_EQ(Times(), times);
}

TEST_F(IdlePass, WritesTheWholeDatabaseAnewOtherwise) {
  const Written before = WrittenUntilNow();
  if (before == Written()) {
    GTEST_SKIP() << "the kernel does not tell what is written";
  }
  Pass();
  EXPECT_GT(WrittenUntilNow().by_calls - before.by_calls,
            static_cast<std::int64_t>(fs::file_size(directory / "DeviceUsage.db")));
}

TEST_F(IdlePass, WritesNothingToALogThatSomebodyKeepsOpenEither) {
  Database collector = Open("DeviceUsage");
  collector.Run("PRAGMA journal_mode=WAL; INSERT INTO PowerEvents VALUES('2100-01-01T00:00:00+00:00')");
  const OptionScope option(&StorageOptions::compact_when_free, 1);
  Pass();  // The first connection that finds the log marks its place in the shared index.
  const auto times = Times();
  ASSERT_EQ(times.size(), 3U);
  const Written before = WrittenUntilNow();
  Pass();
  EXPECT_EQ(WrittenUntilNow().by_calls, before.by_calls);
  EXPECT_EQ(compactions_->left_out, 2);
  EXPECT_EQ(Times(), times);
}

class FivePasses : public IdlePass, public testing::WithParamInterface<bool> {};

TEST_P(FivePasses, LetALogThatAReaderKeepsGrowOnlyWithCompaction) {
  Database collector = Open("DeviceUsage");
  collector.Run("PRAGMA journal_mode=WAL; INSERT INTO PowerEvents VALUES('2100-01-01T00:00:00+00:00')");
  const Reader reader(collector);
  const OptionScope option(&StorageOptions::compact_when_free, GetParam() ? 1 : 0);
  std::vector<std::uintmax_t> sizes = {LogBytes()};
  for (int pass = 0; pass < 5; ++pass) {
    Pass();
    sizes.push_back(LogBytes());
  }
  for (std::size_t pass = 1; pass < sizes.size(); ++pass) {
    if (GetParam()) {
      EXPECT_EQ(sizes[pass], sizes[0]);
    } else {
      EXPECT_GT(sizes[pass], sizes[pass - 1]);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(IdlePass, FivePasses, testing::Bool(),
                         [](const auto& test_case) { return test_case.param ? "LeftOut" : "Compacted"; });

}  // namespace
}  // namespace corvo::test
