// The time limit of a statement.
#include <sqlite3.h>

#include <ostream>
#include <thread>

#include "storage/result_code.h"
#include "storage/side_file_samples.h"
#include "storage/storage_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

using TimeLimit = StorageTest;

constexpr std::size_t kPageSize = 512;

/// A table whose root page leads, by each of its entries, to a page that leads by each of its own to the next one, and
/// so on: few pages, and a count within one step of SQLite that takes them for hundreds of millions.
class RepeatingTree : public TimeLimit {
 protected:
  void CreateRepeatingTree(std::uint32_t levels) {
    Database(file_).Run("PRAGMA page_size=" + std::to_string(kPageSize) + "; CREATE TABLE Other(x)");
    CreateSamples(1700);
    const auto root =
        static_cast<std::size_t>(Database(file_).Number("SELECT rootpage FROM sqlite_schema WHERE name = 'Samples'"));
    std::string file = Content(file_);
    const auto pages = static_cast<std::uint32_t>(file.size() / kPageSize);
    const std::string interior = file.substr((root - 1) * kPageSize, kPageSize);
    const std::string leaf = interior.substr(ChildOf(interior, 0), 4);
    for (std::uint32_t level = 1; level < levels; ++level) {
      file += Leading(interior, level == levels - 1 ? leaf : BigEndian(pages + level + 1));
    }
    file.replace((root - 1) * kPageSize, kPageSize, Leading(interior, BigEndian(pages + 1)));
    constexpr int kPagesInTheHeader = 28;
    file.replace(kPagesInTheHeader, 4, BigEndian(pages + levels - 1));
    Write(file_, file);
  }

 private:
  /// Where the pointer of an entry of an interior page is.
  static std::size_t ChildOf(const std::string& page, int entry) {
    constexpr int kInteriorHeader = 12;
    const std::size_t pointer = kInteriorHeader + 2 * static_cast<std::size_t>(entry);
    return static_cast<unsigned char>(page[pointer]) * 256U + static_cast<unsigned char>(page[pointer + 1]);
  }

  /// The page with every pointer replaced.
  static std::string Leading(std::string page, const std::string& child) {
    const int entries = static_cast<unsigned char>(page[3]) * 256 + static_cast<unsigned char>(page[4]);
    for (int entry = 0; entry < entries; ++entry) {
      page.replace(ChildOf(page, entry), 4, child);
    }
    constexpr int kRightmostPointer = 8;
    return page.replace(kRightmostPointer, 4, child);
  }
};

TEST_F(RepeatingTree, IsCountedNoLongerThanTheLimitAllows) {
  constexpr std::uint32_t kLevels = 5;
  CreateRepeatingTree(kLevels);
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, milliseconds(200));
  TelemetryStorage storage(file_.c_str(), "");
  const auto start = steady_clock::now();

  EXPECT_TRUE(shared::IsInterrupted(RunSql(storage, "SELECT COUNT(*) FROM Samples")));

  EXPECT_LT(steady_clock::now() - start, seconds(3));
}

// A damaged file is read for ten seconds at most.
TEST_F(RepeatingTree, IsNotCountedForEverWithoutALimit) {
  constexpr std::uint32_t kLevels = 7;
  CreateRepeatingTree(kLevels);
  TelemetryStorage storage(file_.c_str(), "");
  const auto start = steady_clock::now();

  EXPECT_TRUE(shared::IsInterrupted(RunSql(storage, "SELECT COUNT(*) FROM Samples")));

  EXPECT_LT(steady_clock::now() - start, seconds(20));
}

TEST_F(RepeatingTree, IsDamageToAStatementThatWrites) {
  constexpr std::uint32_t kLevels = 5;
  CreateRepeatingTree(kLevels);
  const std::string before = Content(file_);
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, seconds(20));
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_TRUE(shared::IsDamaged(RunSql(storage, "DELETE FROM Samples WHERE id = 1")));

  EXPECT_EQ(Content(file_), before);
}

constexpr const char* kEndless = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT MAX(i) FROM n";

/// A statement that never ends of itself.
struct Endless {
  const char* name;
  std::string sql;

  friend void PrintTo(const Endless& value, std::ostream* stream) { *stream << value.name; }
};

class EndlessStatement : public TimeLimit, public testing::WithParamInterface<Endless> {};

TEST_P(EndlessStatement, IsEndedAndRolledBackAndLeavesTheStorageUsable) {
  CreateSamples(3);
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, milliseconds(50));
  TelemetryStorage storage(file_.c_str(), "");
  const auto start = steady_clock::now();

  EXPECT_THAT(RunSql(storage, GetParam().sql), FailsWith(SQLITE_INTERRUPT, "interrupted"));

  EXPECT_LT(steady_clock::now() - start, seconds(3));
  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples"), "3");
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());
}

INSTANTIATE_TEST_SUITE_P(TimeLimit, EndlessStatement,
                         testing::Values(Endless{"Query", kEndless},
                                         Endless{"Deletion",
                                                 std::string("DELETE FROM Samples WHERE id < (") + kEndless + ")"},
                                         Endless{"Insertion",
                                                 "INSERT INTO Samples(v) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL "
                                                 "SELECT i + 1 FROM n) SELECT i FROM n"}),
                         CaseName());

TEST_F(TimeLimit, IsKeptAfterALongerOne) {
  CreateSamples(3);
  const OptionScope longer(&shared::StorageOptions::statement_time_limit, std::chrono::hours(1));
  TelemetryStorage patient(file_.c_str(), "");
  ASSERT_EQ(ReadValue(patient, "SELECT COUNT(*) FROM Samples"), "3");
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, milliseconds(50));
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, kEndless), FailsWith(SQLITE_INTERRUPT, "interrupted"));

  EXPECT_EQ(ReadValue(patient, "SELECT COUNT(*) FROM Samples"), "3");
}

TEST_F(TimeLimit, IsThatOfEachStatementWhereSeveralRun) {
  CreateSamples(3);
  const OptionScope longer(&shared::StorageOptions::statement_time_limit, milliseconds(300));
  TelemetryStorage patient(file_.c_str(), "");
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, milliseconds(50));
  TelemetryStorage storage(file_.c_str(), "");
  telemetry::common::Error result;
  std::thread other([&] { result = RunSql(patient, kEndless); });

  EXPECT_THAT(RunSql(storage, kEndless), FailsWith(SQLITE_INTERRUPT, "interrupted"));

  other.join();
  EXPECT_THAT(result, FailsWith(SQLITE_INTERRUPT, "interrupted"));
}

TEST_F(TimeLimit, StartsAnewForEachStatement) {
  CreateSamples(3);
  constexpr seconds kLimit(1);
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, kLimit);
  TelemetryStorage storage(file_.c_str(), "");
  const auto start = steady_clock::now();

  while (steady_clock::now() - start < kLimit + milliseconds(200)) {
    ASSERT_THAT(RunSql(storage,
                       "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
                       "SELECT MAX(i) FROM n"),
                Succeeded());
  }
  EXPECT_THAT(RunSql(storage, "DELETE FROM Samples"), Succeeded());
}

TEST_F(TimeLimit, StartsAnewForACommandThatRunsAgain) {
  CreateSamples(3);
  const OptionScope limit(&shared::StorageOptions::statement_time_limit, milliseconds(50));
  TelemetryStorage storage(file_.c_str(), "");
  auto* command = new SqlCommand(kEndless);
  ASSERT_THAT(storage.Execute(command, false), FailsWith(SQLITE_INTERRUPT, testing::_));

  command->Execute("SELECT COUNT(*) FROM Samples", nullptr, 0);

  EXPECT_THAT(command->GetLastError(), Succeeded());
  EXPECT_EQ(Texts(command->GetResults()), (std::vector<Row>{{"3"}}));
}

}  // namespace
}  // namespace corvo::test
