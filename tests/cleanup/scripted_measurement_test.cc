#include <gtest/gtest.h>

#include <ostream>

#include "cleanup/scripted_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

using Rows = ScriptedStorage::Rows;
using testing::ElementsAre;

struct SizeCase {
  const char* name;
  Rows rows;
  std::int32_t expected;

  friend void PrintTo(const SizeCase& value, std::ostream* stream) { *stream << value.name; }
};

class ScriptedSize : public ScriptedTest, public testing::WithParamInterface<SizeCase> {};

TEST_P(ScriptedSize, IsReadFromTheFirstRowWithoutALogRecord) {
  storage.rows = [](const std::string&) { return GetParam().rows; };
  const LogCapture log;
  EXPECT_EQ(DataCleanup::GetTableSize(contract), GetParam().expected);
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Answers, ScriptedSize,
    testing::Values(SizeCase{"NoRows", {}, 0}, SizeCase{"OneColumn", {{"4096"}}, 0}, SizeCase{"NoColumns", {{}}, 0},
                    SizeCase{"Page123", {{"4096", "123"}}, 1}, SizeCase{"Page122", {{"4096", "122"}}, 0},
                    SizeCase{"OnlyTheFirstRowCounts", {{"4096", "123"}, {"4096", "9999"}}, 1},
                    SizeCase{"FurtherColumnsDoNotCount", {{"1000000", "2", "7"}}, 2},
                    SizeCase{"NoNumber", {{"many", "123"}}, 0}, SizeCase{"EmptyText", {{"4096", ""}}, 0},
                    SizeCase{"LeadingNumberCounts", {{" 4096x", "123 pages"}}, 1},
                    SizeCase{"Overflow", {{"65536", "32768"}}, 0}, SizeCase{"Wraps", {{"2147483647", "1"}}, -2146}),
    CaseName());

class ScriptedCount : public ScriptedTest {
 protected:
  telemetry::common::Error CountOf(const Rows& rows) {
    storage.rows = [rows](const std::string&) { return rows; };
    return DataCleanup::GetRowCount(contract, count);
  }

  std::uint32_t count = 9;
};

TEST_F(ScriptedCount, IsTheFirstColumnOfTheFirstRow) {
  EXPECT_THAT(CountOf({{"17", "5"}, {"8"}}), Succeeded());
  EXPECT_EQ(count, 17U);
}

TEST_F(ScriptedCount, OfNoNumberIsZero) {
  EXPECT_THAT(CountOf({{"many"}}), Succeeded());
  EXPECT_EQ(count, 0U);
}

TEST_F(ScriptedCount, KeepsTheBitsOfANegativeNumber) {
  EXPECT_THAT(CountOf({{"-2"}}), Succeeded());
  EXPECT_EQ(count, 4'294'967'294U);
}

TEST_F(ScriptedCount, WithoutRowsIsAnUnknownExceptionWhateverItsCause) {
  const LogCapture log;
  EXPECT_THAT(CountOf({}), OwnError("DataCleanup::GetRowCount(474) - UNKNOWN EXCEPTION"));
  EXPECT_EQ(count, 9U);
  EXPECT_THAT(log.Texts(plog::error),
              ElementsAre("DataCleanup::GetRowCount{\"category\":\"EC_Std\",\"code\":1,\"type\":\"std::runtime_error\","
                          "\"version\":3,\"what\":\"DataCleanup::GetRowCount(474) - UNKNOWN EXCEPTION\"}"));
}

TEST_F(ScriptedCount, OfARowWithoutColumnsIsAnUnknownExceptionToo) {
  EXPECT_THAT(CountOf({{}}), OwnError("DataCleanup::GetRowCount(474) - UNKNOWN EXCEPTION"));
  EXPECT_EQ(count, 9U);
}

TEST_F(ScriptedCount, RecordOfTheStorageIsLoggedAsItIs) {
  storage.execute = [](const std::string&) { return Record(telemetry::common::EC_WinApi, 5, "denied"); };
  const LogCapture log;
  EXPECT_THAT(DataCleanup::GetRowCount(contract, count), FailedWith("denied"));
  EXPECT_THAT(log.Lines(),
              ElementsAre(LogLine{plog::error, "DataCleanup::GetRowCount",
                                  "DataCleanup::GetRowCount - exception : {\"category\":\"EC_WinApi\",\"code\":5,"
                                  "\"version\":3,\"what\":\"denied\"}"}));
}

TEST_F(ScriptedCount, TextThatCannotBeWrittenAsJsonIsLoggedAsNull) {
  storage.execute = [](const std::string&) { return Record(telemetry::common::EC_Custom, 5, "\xFF"); };
  const LogCapture log;
  EXPECT_TRUE(DataCleanup::GetRowCount(contract, count).Failed());
  EXPECT_THAT(log.Texts(plog::error), ElementsAre("DataCleanup::GetRowCount - exception : (null)"));
}

TEST_F(ScriptedCount, BeyondSignedRangeIsNeverOverARowLimit) {
  storage.rows = [](const std::string&) { return Rows{{"-2147483648"}}; };
  EXPECT_THAT(collector.DeleteExtraRows(contract, 10), Succeeded());
  EXPECT_THAT(storage.statements, ElementsAre("SELECT COUNT(*) AS rows FROM Samples"));
}

}  // namespace
}  // namespace corvo::test
