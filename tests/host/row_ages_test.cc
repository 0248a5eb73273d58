#include "host/facts/rows/row_ages.h"

#include <gmock/gmock.h>

#include <numeric>

#include "support/database.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::int64_t kDay = 86'400;
constexpr std::int64_t kNow = 1'700'000'000;  // 2023-11-14T22:13:20+00:00

TableState Table(std::uint32_t retention_days, std::int64_t oldest_days) {
  return {.contract = {.type = "",
                       .name = "Boot",
                       .table = "Boot",
                       .database = "HealthLog",
                       .max_rows = 0,
                       .retention_days = retention_days,
                       .max_size_mb = 0,
                       .descriptor = nullptr},
          .rows = 1,
          .oldest = kNow - oldest_days * kDay};
}

TEST(AgeScale, ReachesBeyondTheRetentionInWholeDays) {
  const AgeScale scale = ScaleOf(Table(30, 3), kNow);
  EXPECT_EQ(scale.days, 1);
  EXPECT_EQ(scale.classes, 34);
}

TEST(AgeScale, ReachesToTheOldestRowButNotBeyondTwiceTheRetention) {
  EXPECT_EQ(ScaleOf(Table(30, 37), kNow).classes, 38);
  const AgeScale far = ScaleOf(Table(30, 4000), kNow);
  EXPECT_EQ(far.days * far.classes, 60);
}

TEST(AgeScale, OfATableThatKeepsItsRowsIsThatOfItsRows) {
  const AgeScale young = ScaleOf(Table(0, 2), kNow);
  EXPECT_EQ(young.days * young.classes, 7);
  const AgeScale old = ScaleOf(Table(0, 1'000'000), kNow);
  EXPECT_GE(old.days * old.classes, 3'652);
  EXPECT_LE(old.classes, 40);
}

TEST(AgeScale, HasNeverMoreThanFortyClasses) {
  for (const std::uint32_t retention : {1U, 39U, 40U, 365U, 19'000U, 49'711U, 4'000'000'000U}) {
    for (const std::int64_t oldest : {-5L, 0L, 41L, 20'000L, 2'500'000L}) {
      const AgeScale scale = ScaleOf(Table(retention, oldest), kNow);
      EXPECT_GE(scale.days, 1);
      EXPECT_GE(scale.classes, 1);
      EXPECT_LE(scale.classes, 40);
    }
  }
}

TEST(KeptSeconds, AreThoseOfThePassAlsoWhereTheyWrap) {
  EXPECT_EQ(KeptSeconds(Table(30, 0).contract, kNow), 30 * kDay);
  EXPECT_EQ(KeptSeconds(Table(49'711, 0).contract, kNow), 63'104);
  EXPECT_EQ(KeptSeconds(Table(0, 0).contract, kNow), std::nullopt);
  EXPECT_EQ(KeptSeconds(Table(40'000, 0).contract, kNow), std::nullopt);
}

class ReadAges : public testing::Test {
 protected:
  RowAges Read(const std::string& values) {
    test::Database(file_).Run("CREATE TABLE Boot (time TEXT); INSERT INTO Boot VALUES " + values);
    const DatabaseState database{.name = "HealthLog", .path = file_, .tables = {Table(30, 37)}};
    return ReadRowAges(database, kNow).at(0).value();
  }

  test::TempDir folder_;
  std::filesystem::path file_ = folder_.Path() / "HealthLog.db";
};

TEST_F(ReadAges, CountsRowsByWholeDays) {
  const RowAges ages = Read(
      "('2023-11-14T22:13:20+00:00'), ('2023-11-13T22:13:21+00:00'), ('2023-11-13T22:13:20+00:00'), "
      "('2023-10-15T22:13:21+00:00'), ('2023-11-15T00:00:00+02:00')");
  EXPECT_EQ(ages.rows.at(0), 3);
  EXPECT_EQ(ages.rows.at(1), 1);
  EXPECT_EQ(ages.rows.at(29), 1);
  EXPECT_EQ(std::accumulate(ages.rows.begin(), ages.rows.end(), std::int64_t{0}), 5);
}

TEST_F(ReadAges, CountsWhatHasNoPlaceAmongTheClasses) {
  const RowAges ages = Read(
      "(NULL), ('yesterday'), ('now'), (''), ('2030-01-01'), ('2023-11-15T10:00:00+00:00'), ('2001-01-01'), (2024)");
  EXPECT_EQ(ages.undated, 4);
  EXPECT_EQ(ages.future, 1);
  EXPECT_EQ(ages.rows.at(0), 1);
  EXPECT_EQ(ages.older, 2);
}

TEST_F(ReadAges, AreNoneOfATableThatCannotBeCounted) {
  test::Database(file_).Run("CREATE TABLE Boot (stamp TEXT)");
  TableState missing = Table(30, 0);
  missing.missing = true;
  TableState problem = Table(30, 0);
  problem.problem = "has no column time";
  const DatabaseState database{.name = "HealthLog", .path = file_, .tables = {Table(30, 0), missing, problem}};
  EXPECT_THAT(ReadRowAges(database, kNow), testing::Each(testing::Eq(std::nullopt)));
}

}  // namespace
}  // namespace corvo::telemetry::host
