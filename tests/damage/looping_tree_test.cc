// Trees of pages that lead back to themselves, or to the same pages again and again.
#include "damage/damage_fixture.h"
#include "damage/time_budget.h"
#include "storage/telemetry_storage.h"
#include "support/option_scope.h"

namespace corvo::test {
namespace {

using std::chrono::seconds;

constexpr std::size_t kPageSize = 512;
constexpr std::uint32_t kCells = 50;

class LoopingTree : public DamageTest {
 protected:
  /// BatteryStatus with many leaf pages below one inner page.
  void SetUp() override {
    Database database = Open();
    database.Run("PRAGMA page_size=" + std::to_string(kPageSize));
    database.Run("CREATE TABLE BatteryStatus(time, charge)");
    database.Run(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500) "
        "INSERT INTO BatteryStatus SELECT '2024-05-01', i FROM n");
  }

  /// Makes the page an inner one, all of whose children are `child`.
  static void MakeInner(std::string& bytes, std::uint32_t page, std::uint32_t child) {
    constexpr std::uint32_t kHeader = 12;
    constexpr std::uint32_t kCellBytes = 5;
    const std::size_t start = TreeHeader(bytes, page);
    constexpr std::uint32_t kContent = kPageSize - kCells * kCellBytes;
    WriteNumber(bytes, start, 5, 1);
    WriteNumber(bytes, start + 1, 0, 2);
    WriteNumber(bytes, start + 3, kCells, 2);
    WriteNumber(bytes, start + 5, kContent, 2);
    WriteNumber(bytes, start + 7, 0, 1);
    WriteNumber(bytes, start + 8, child);
    for (std::uint32_t cell = 0; cell < kCells; ++cell) {
      const std::uint32_t place = kContent + cell * kCellBytes;
      WriteNumber(bytes, start + kHeader + 2 * cell, place, 2);
      WriteNumber(bytes, start + place, child);
      WriteNumber(bytes, start + place + 4, cell + 1, 1);
    }
  }

  /// Whether a statement on the table fails, before long.
  void ExpectFailure(const char* sql) const {
    const TimeBudget budget(seconds(30), std::string("no end: ") + sql);
    shared::TelemetryStorage storage(DatabaseFile(Folder()).string().c_str(), "");
    EXPECT_TRUE(storage.Execute(new shared::SqlCommand(sql), false).Failed()) << sql;
  }

  void ExpectEverythingFails() const {
    const OptionScope limit(&shared::StorageOptions::statement_time_limit, seconds(1));
    ExpectFailure("SELECT COUNT(*) AS rows FROM BatteryStatus");
    ExpectFailure("DELETE FROM BatteryStatus WHERE datetime(time) < datetime('2024-04-02T00:00:00+00:00');");
    ExpectFailure(
        "DELETE FROM BatteryStatus WHERE rowid IN (SELECT rowid FROM BatteryStatus ORDER BY rowid ASC LIMIT 1);");
    ExpectFailure("VACUUM;");
    const TimeBudget budget(seconds(30), "a pass without end");
    EXPECT_TRUE(Clean().Failed());
  }
};

constexpr std::uint32_t kRoot = 2;

TEST_F(LoopingTree, ThatLeadsToItselfEndsEveryStatementWithAFailure) {
  Edit([](std::string& bytes) { MakeInner(bytes, kRoot, kRoot); });

  ExpectEverythingFails();
}

// Fifty to the power of twelve ways, none of them too deep.
TEST_F(LoopingTree, WhosePagesShareTheirChildrenEndsEveryStatementWithAFailure) {
  Edit([](std::string& bytes) {
    for (std::uint32_t page = kRoot; page < kRoot + 12; ++page) {
      MakeInner(bytes, page, page + 1);
    }
  });

  ExpectEverythingFails();
}

}  // namespace
}  // namespace corvo::test
