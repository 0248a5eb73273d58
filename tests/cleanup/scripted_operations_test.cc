#include <gtest/gtest.h>

#include "cleanup/scripted_fixture.h"
#include "support/case_name.h"

namespace corvo::test {
namespace {

using telemetry::common::EC_Custom;
using telemetry::common::EC_NoError;
using telemetry::common::EC_SEH;
using telemetry::common::EC_WinApi;
using telemetry::common::MakeErrorFromException;
using testing::ElementsAre;

class Calls : public ScriptedTest {};

TEST_F(Calls, ExpiryOpensTheDatabaseByItsFileName) {
  EXPECT_THAT(DataCleanup::DeleteExpiredRows(contract, 1), Succeeded());
  // The file name is asked of a storage for the contract.
  EXPECT_THAT(storage.opened, ElementsAre("contract Samples", "file Log.db"));
  EXPECT_THAT(storage.forms, ElementsAre("list of 1"));
}

TEST_F(Calls, TrimmingHandsOverASingleCommand) {
  EXPECT_THAT(DataCleanup::TruncateRows(contract, 1), Succeeded());
  EXPECT_THAT(storage.opened, ElementsAre("contract Samples"));
  EXPECT_THAT(storage.forms, ElementsAre("single"));
}

TEST_F(Calls, CompactionAndMeasurementHandOverAListOfOne) {
  storage.rows = [](const std::string&) { return ScriptedStorage::Rows{{"1"}}; };
  std::uint32_t count = 0;
  EXPECT_THAT(DataCleanup::Vacuum(contract), Succeeded());
  EXPECT_THAT(DataCleanup::GetRowCount(contract, count), Succeeded());
  EXPECT_EQ(DataCleanup::GetTableSize(contract), 0);
  EXPECT_THAT(storage.opened, ElementsAre("contract Samples", "contract Samples", "contract Samples"));
  EXPECT_THAT(storage.forms, ElementsAre("list of 1", "list of 1", "list of 1"));
}

class EveryOperation : public ScriptedTest, public testing::WithParamInterface<Operation> {
 protected:
  /// Runs the operation over a storage whose every statement ends with this record.
  Error RunWith(const Error& record) {
    storage.execute = [record](const std::string&) { return record; };
    return GetParam().run(collector, contract);
  }

  void ExpectUnchanged(const Error& record) {
    const Error result = RunWith(record);
    EXPECT_EQ(result.category, record.category);
    EXPECT_EQ(result.code, record.code);
    EXPECT_EQ(result.what, record.what);
    EXPECT_EQ(result.type, record.type);
    EXPECT_EQ(result.origin, record.origin);
  }
};

TEST_P(EveryOperation, CarriesRecordsOfTheSystemThroughUnchanged) {
  Error record = Record(EC_WinApi, 32, "sharing violation");
  record.type = "system";
  record.origin = "storage";
  ExpectUnchanged(record);
  record.category = EC_SEH;
  record.code = -1073741819;
  ExpectUnchanged(record);
}

TEST_P(EveryOperation, TakesACodeAloneForAFailure) { ExpectUnchanged(Record(EC_NoError, 7, "")); }

TEST_P(EveryOperation, TakesACategoryAloneForAFailure) { ExpectUnchanged(Record(EC_Custom, 0, "")); }

TEST_P(EveryOperation, ForgivesAMissingTable) {
  EXPECT_THAT(RunWith(Record(EC_Custom, 1, "SQL logic error (no such table: Samples)")), Succeeded());
}

TEST_P(EveryOperation, DoesNotForgiveAnotherSpelling) {
  ExpectUnchanged(Record(EC_Custom, 1, "No such table: Samples"));
}

INSTANTIATE_TEST_SUITE_P(Engine, EveryOperation, testing::ValuesIn(Operations()), CaseName());

class AnythingThrown : public ScriptedTest, public testing::WithParamInterface<Thrown> {
 protected:
  /// Throws from statements, or from opening a storage.
  void ThrowFrom(bool opening) {
    if (opening) {
      storage.open = [](const std::string&) { GetParam().raise(); };
    } else {
      storage.execute = [](const std::string&) -> Error {
        GetParam().raise();
        return {};
      };
    }
  }
};

TEST_P(AnythingThrown, WhileTrimmingBecomesOneFixedTextWithoutALogRecord) {
  for (const bool opening : {false, true}) {
    ThrowFrom(opening);
    const LogCapture log;
    EXPECT_THAT(DataCleanup::TruncateRows(contract, 1), OwnError("DataCleanup::TruncateRows(540) message is NULL"));
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
  }
}

TEST_P(AnythingThrown, WhileCompactingBecomesOneFixedTextWithoutALogRecord) {
  for (const bool opening : {false, true}) {
    ThrowFrom(opening);
    const LogCapture log;
    EXPECT_THAT(DataCleanup::Vacuum(contract), OwnError("DataCleanup::Vacuum(563) message is NULL"));
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
  }
}

TEST_P(AnythingThrown, WhileMeasuringIsNoSize) {
  for (const bool opening : {false, true}) {
    ThrowFrom(opening);
    const LogCapture log;
    EXPECT_EQ(DataCleanup::GetTableSize(contract), 0);
    ASSERT_THAT(log.Lines(), testing::SizeIs(1));
    EXPECT_THAT(log.Lines()[0].text, testing::StartsWith("DataCleanup::GetTableSize - exception : "));
  }
}

TEST_P(AnythingThrown, WhileExpiringNeverLeavesTheOperation) {
  ThrowFrom(true);
  const LogCapture log;
  EXPECT_NO_THROW(static_cast<void>(DataCleanup::DeleteExpiredRows(contract, 1)));
  ASSERT_THAT(log.Lines(), testing::SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(Things, AnythingThrown, testing::ValuesIn(ThrownThings()), CaseName());

class OtherThanRecords : public AnythingThrown {};

TEST_P(OtherThanRecords, WhileExpiringIsConvertedAndLoggedAsUnknown) {
  ThrowFrom(false);
  Error expected;
  try {
    GetParam().raise();
  } catch (...) {
    expected = MakeErrorFromException(std::current_exception());
  }
  const LogCapture log;
  const Error result = DataCleanup::DeleteExpiredRows(contract, 1);
  EXPECT_EQ(ErrorText(result), ErrorText(expected));
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{plog::error, "DataCleanup::DeleteExpiredRows",
                                               "DataCleanup::DeleteExpiredRows - exception : : UNKNOWN"}));
}

TEST_P(OtherThanRecords, WhileMeasuringIsLoggedAsUnknown) {
  ThrowFrom(false);
  const LogCapture log;
  EXPECT_EQ(DataCleanup::GetTableSize(contract), 0);
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{plog::error, "DataCleanup::GetTableSize",
                                               "DataCleanup::GetTableSize - exception : UNKNOWN"}));
}

TEST_P(OtherThanRecords, WhileCountingBecomesOneFixedTextAndIsLoggedWithoutASeparator) {
  ThrowFrom(false);
  const LogCapture log;
  std::uint32_t count = 9;
  EXPECT_THAT(DataCleanup::GetRowCount(contract, count), OwnError("DataCleanup::GetRowCount(474) - UNKNOWN EXCEPTION"));
  EXPECT_EQ(count, 9U);
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{plog::error, "DataCleanup::GetRowCount",
                                               "DataCleanup::GetRowCount{\"category\":\"EC_Std\",\"code\":1,\"type\":"
                                               "\"std::runtime_error\",\"version\":3,\"what\":"
                                               "\"DataCleanup::GetRowCount(474) - UNKNOWN EXCEPTION\"}"}));
}

std::vector<Thrown> OtherThings() {
  std::vector<Thrown> things = ThrownThings();
  things.resize(3);
  return things;
}

INSTANTIATE_TEST_SUITE_P(Things, OtherThanRecords, testing::ValuesIn(OtherThings()), CaseName());

}  // namespace
}  // namespace corvo::test
