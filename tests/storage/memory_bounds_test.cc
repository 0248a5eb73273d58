// Memory that a file can make SQLite take.
#include <sqlite3.h>

#include <fstream>
#include <ostream>

#include "storage/result_code.h"
#include "storage/storage_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

constexpr std::int64_t kMegabyte = 1 << 20;

/// The most memory that SQLite has taken at once since the object was made, in bytes.
class PeakMemory {
 public:
  PeakMemory() { sqlite3_memory_highwater(1); }
  [[nodiscard]] static std::int64_t Bytes() { return sqlite3_memory_highwater(0); }
};

struct LargeFileCase {
  const char* name;
  const char* journal_mode;
  const char* statement;

  friend void PrintTo(const LargeFileCase& value, std::ostream* stream) { *stream << value.name; }
};

class HugeCacheInTheHeader : public StorageTest, public testing::WithParamInterface<LargeFileCase> {
 protected:
  /// 130 MB, one row on each page, with a header that asks for a cache of 10^8 pages.
  void CreateLargeFile(const std::string& journal_mode) {
    {
      Database database(file_);
      database.Run("PRAGMA page_size=65536; PRAGMA synchronous=OFF; PRAGMA journal_mode=" + journal_mode);
      database.Run("CREATE TABLE Samples(id INTEGER PRIMARY KEY, v)");
      database.Run(
          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 2000) "
          "INSERT INTO Samples SELECT i, zeroblob(65000) FROM n");
    }
    constexpr int kSuggestedCacheSize = 48;
    std::fstream stream(file_, std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(kSuggestedCacheSize);
    stream.write("\x05\xF5\xE1\x00", 4);
  }
};

TEST_P(HugeCacheInTheHeader, IsNotTaken) {
  CreateLargeFile(GetParam().journal_mode);
  ASSERT_EQ(Database(file_).Number("PRAGMA cache_size"), 100'000'000);
  ASSERT_GT(std::filesystem::file_size(file_), 120 * kMegabyte);
  TelemetryStorage storage(file_.c_str(), "");
  const PeakMemory peak;

  EXPECT_THAT(RunSql(storage, GetParam().statement), Succeeded());

  EXPECT_LT(peak.Bytes(), 100 * kMegabyte);
}

INSTANTIATE_TEST_SUITE_P(MemoryBounds, HugeCacheInTheHeader,
                         testing::Values(LargeFileCase{"Count", "DELETE", "SELECT COUNT(*) FROM Samples"},
                                         LargeFileCase{"Deletion", "DELETE", "DELETE FROM Samples WHERE id % 2 = 0"},
                                         LargeFileCase{"DeletionIntoALog", "WAL",
                                                       "DELETE FROM Samples WHERE id % 2 = 0"},
                                         LargeFileCase{"Compaction", "DELETE", "VACUUM;"}),
                         CaseName());

using CacheSize = StorageTest;

TEST_F(CacheSize, OfTheHeaderIsReplacedByTheOneThatSqliteHasByDefault) {
  CreateSamples(1);
  Database(file_).Run("PRAGMA default_cache_size=100000000");
  TelemetryStorage storage(file_.c_str(), "");
  ASSERT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Samples"), Succeeded());

  EXPECT_EQ(ReadValue(storage, "PRAGMA main.cache_size"), Database(":memory:").Query("PRAGMA cache_size")[0][0]);
}

/// A small file with an index over long texts that are computed from short rows.
struct LongTexts {
  const char* name;
  std::string before;  ///< schema that SQLite builds without work
  std::string after;   ///< the same as the file has it

  friend void PrintTo(const LongTexts& value, std::ostream* stream) { *stream << value.name; }
};

class ComputedTexts : public StorageTest, public testing::WithParamInterface<LongTexts> {
 protected:
  ComputedTexts() {
    CreateSamples(3);
    Database database(file_);
    database.Run(GetParam().before);
    database.Run("PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = '" + GetParam().after +
                 "' WHERE name = 'Long'");
  }

  void ExpectAllRows() const {
    Database database(file_);
    EXPECT_EQ(database.Number("SELECT COUNT(*) FROM Samples NOT INDEXED"), 3);
  }
};

using TextsAboveTheLimit = ComputedTexts;

TEST_P(TextsAboveTheLimit, FailTheDeletionWithinBoundsAndKeepTheRows) {
  TelemetryStorage storage(file_.c_str(), "");
  const PeakMemory peak;

  const Error error = RunSql(storage, "DELETE FROM Samples WHERE id = 1");

  EXPECT_TRUE(shared::IsTooBig(error) || shared::IsOutOfMemory(error)) << ErrorText(error);
  EXPECT_LT(peak.Bytes(), 150 * kMegabyte);
  ExpectAllRows();
}

INSTANTIATE_TEST_SUITE_P(
    MemoryBounds, TextsAboveTheLimit,
    testing::Values(LongTexts{"OneColumn", "CREATE INDEX Long ON Samples(hex(zeroblob(1)))",
                              "CREATE INDEX Long ON Samples(hex(zeroblob(120000000)))"},
                    LongTexts{"TwoColumns", "CREATE INDEX Long ON Samples(hex(zeroblob(1)), hex(zeroblob(2)))",
                              "CREATE INDEX Long ON Samples(hex(zeroblob(60000000)), hex(zeroblob(60000001)))"},
                    LongTexts{"PartialIndex", "CREATE INDEX Long ON Samples(v) WHERE length(hex(zeroblob(1))) > 1",
                              "CREATE INDEX Long ON Samples(v) WHERE length(hex(zeroblob(120000000))) > 1"}),
    CaseName());

/// An index over this many texts, each well below the largest value.
LongTexts ManyTexts(const char* name, int count) {
  std::string before = "CREATE INDEX Long ON Samples(";
  std::string after = before;
  for (int column = 0; column < count; ++column) {
    const std::string comma = column > 0 ? "," : "";
    before += comma + "hex(zeroblob(" + std::to_string(column) + "))";
    after += comma + "hex(zeroblob(4000000 + " + std::to_string(column) + "))";
  }
  return {name, before + ")", after + ")"};
}

using TextsAboveTheMemoryLimit = ComputedTexts;

TEST_P(TextsAboveTheMemoryLimit, FailTheDeletionForWantOfMemoryAndKeepTheRows) {
  const OptionScope limit(&shared::StorageOptions::memory_limit, 64 * kMegabyte);
  TelemetryStorage storage(file_.c_str(), "");
  const PeakMemory peak;

  EXPECT_TRUE(shared::IsOutOfMemory(RunSql(storage, "DELETE FROM Samples WHERE id = 1")));

  EXPECT_LE(peak.Bytes(), 64 * kMegabyte);
  EXPECT_EQ(ReadValue(storage, "SELECT COUNT(*) FROM Samples NOT INDEXED"), "3");
  ExpectAllRows();
}

INSTANTIATE_TEST_SUITE_P(MemoryBounds, TextsAboveTheMemoryLimit, testing::Values(ManyTexts("TwentyColumns", 20)),
                         CaseName());

using MemoryLimit = StorageTest;

TEST_F(MemoryLimit, EndsWithTheOptionsThatSetIt) {
  CreateSamples(1);
  const std::int64_t before = sqlite3_hard_heap_limit64(-1);
  {
    const OptionScope limit(&shared::StorageOptions::memory_limit, 64 * kMegabyte);
    TelemetryStorage storage(file_.c_str(), "");
    ASSERT_THAT(RunSql(storage, "SELECT 1"), Succeeded());
    EXPECT_EQ(sqlite3_hard_heap_limit64(-1), 64 * kMegabyte);
  }
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT length(zeroblob(1))"), Succeeded());
  EXPECT_EQ(sqlite3_hard_heap_limit64(-1), before);
}

TEST_F(MemoryLimit, ThatIsTooLowForTheCheckMakesNoFileADamagedOne) {
  CreateSamples(1);
  Database(file_).Run(
      "WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i + 1 FROM n WHERE i < 5000) "
      "INSERT INTO Samples SELECT i, hex(zeroblob(1000)) FROM n");
  int too_low = 0;
  for (std::int64_t bytes = kMegabyte / 4; bytes < 3 * kMegabyte; bytes += kMegabyte / 8) {
    const OptionScope limit(&shared::StorageOptions::memory_limit, bytes);
    TelemetryStorage storage(file_.c_str(), "");
    const Error result = RunSql(storage, "DELETE FROM Samples WHERE id = 0");
    too_low += shared::IsOutOfMemory(result) ? 1 : 0;
    EXPECT_FALSE(shared::IsDamaged(result)) << bytes << " bytes: " << ErrorText(result);
  }
  EXPECT_GT(too_low, 0);
}

TEST_F(MemoryLimit, OfTheHostStaysWithoutTheOption) {
  CreateSamples(1);
  const std::int64_t before = sqlite3_hard_heap_limit64(200 * kMegabyte);
  {
    TelemetryStorage storage(file_.c_str(), "");
    EXPECT_THAT(RunSql(storage, "SELECT 1"), Succeeded());
    EXPECT_EQ(sqlite3_hard_heap_limit64(-1), 200 * kMegabyte);
  }
  sqlite3_hard_heap_limit64(before);
}

}  // namespace
}  // namespace corvo::test
