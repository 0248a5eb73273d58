#include <gtest/gtest.h>

#include "cleanup/scripted_fixture.h"

namespace corvo::test {
namespace {

using Rows = ScriptedStorage::Rows;
using testing::ElementsAre;

/// Throws once, from the record that an operation logs under `tag`.
template <class Thing>
std::function<void(const plog::Record&)> ThrowFromRecordOf(const std::string& tag, Thing thing) {
  return [tag, thing](const plog::Record& record) {
    if (record.getFunc() == tag) {
      throw Thing(thing);
    }
  };
}

/// What escapes from counting the rows: its handler logs, and the log may throw.
class EscapingException : public ScriptedTest {
 protected:
  EscapingException() {
    storage.execute = [](const std::string&) { return Record(telemetry::common::EC_Custom, 5, "denied"); };
  }

  LogCapture log;
};

TEST_F(EscapingException, CStringGoesIntoTheResultAndNotIntoTheLog) {
  log.OnRecord(ThrowFromRecordOf<const char*>("DataCleanup::GetRowCount", "log is full"));
  EXPECT_THAT(collector.DeleteExtraRows(contract, 1), OwnError("log is full"));
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{plog::error, "DataCleanup::DeleteExtraRows",
                                               "DataCleanup::DeleteExtraRows - exception : "}));
}

TEST_F(EscapingException, CStringOfAMissingTableIsForgiven) {
  log.OnRecord(ThrowFromRecordOf<const char*>("DataCleanup::GetRowCount", "no such table: Samples"));
  EXPECT_THAT(collector.DeleteExtraRows(contract, 1), Succeeded());
}

TEST_F(EscapingException, AnythingElseIsConvertedAndLoggedAsUnknown) {
  log.OnRecord(ThrowFromRecordOf<int>("DataCleanup::GetRowCount", 42));
  const Error result = collector.DeleteExtraRows(contract, 1);
  EXPECT_EQ(result.category, telemetry::common::EC_Custom);
  EXPECT_EQ(result.code, 42);
  EXPECT_EQ(result.type, "int");
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{plog::error, "DataCleanup::DeleteExtraRows",
                                               "DataCleanup::DeleteExtraRows - exception : UNKNOWN "}));
}

TEST_F(EscapingException, StandardExceptionIsConvertedToo) {
  log.OnRecord(ThrowFromRecordOf<std::length_error>("DataCleanup::GetRowCount", std::length_error("too long")));
  const Error result = collector.DeleteExtraRows(contract, 1);
  EXPECT_EQ(result.category, telemetry::common::EC_Std);
  EXPECT_EQ(result.what, "too long");
  EXPECT_EQ(log.Texts(plog::error).back(), "DataCleanup::DeleteExtraRows - exception : UNKNOWN ");
}

class ScriptedSizeLimit : public ScriptedTest {
 protected:
  /// Answers the size queries with these page numbers, pages being 1 MB, and every count with 1000.
  void Measure(const std::string& first, const std::string& second) {
    storage.rows = [first, second, calls = 0](const std::string& sql) mutable {
      const bool size = sql.starts_with("SELECT pgsize");
      return size ? Rows{{"1000000", calls++ == 0 ? first : second}} : Rows{{"1000"}};
    };
  }

  DatabaseEntry entry{1, {contract, contract}};
};

TEST_F(ScriptedSizeLimit, SizesOfTablesAddUpModulo32Bits) {
  // The first size wraps to -2,146 MB, the second is 2,147 MB: together exactly the limit.
  storage.rows = [calls = 0](const std::string& sql) mutable {
    if (!sql.starts_with("SELECT pgsize")) {
      return Rows{{"1000"}};
    }
    return calls++ == 0 ? Rows{{"2147483647", "1"}} : Rows{{"2146983640", "1"}};
  };
  EXPECT_THAT(collector.EnforceSizeLimit(&entry), Succeeded());
  EXPECT_THAT(storage.statements.back(), testing::HasSubstr("LIMIT 100);"));
}

TEST_F(ScriptedSizeLimit, FailedMeasurementCountsAsZero) {
  Measure("1", "1");
  storage.execute = [calls = 0](const std::string&) mutable {
    return calls++ == 0 ? Record(telemetry::common::EC_WinApi, 5, "denied") : Error();
  };
  EXPECT_THAT(collector.EnforceSizeLimit(&entry), Succeeded());
  EXPECT_THAT(storage.statements.back(), testing::HasSubstr("LIMIT 100);"));
}

TEST_F(ScriptedSizeLimit, FailedCountIsTheResultAndDeletesNothing) {
  Measure("1", "0");
  storage.execute = [](const std::string& sql) {
    return sql.starts_with("SELECT COUNT") ? Record(telemetry::common::EC_SEH, 5, "fault") : Error();
  };
  EXPECT_THAT(collector.EnforceSizeLimit(&entry), FailedWith("fault"));
  EXPECT_THAT(storage.statements, testing::Not(testing::Contains(testing::StartsWith("DELETE"))));
}

TEST_F(ScriptedSizeLimit, LaterSuccessReplacesAnEarlierFailure) {
  Measure("1", "0");
  storage.execute = [calls = 0](const std::string& sql) mutable {
    return sql.starts_with("DELETE") && calls++ == 0 ? Record(telemetry::common::EC_WinApi, 5, "denied") : Error();
  };
  EXPECT_THAT(collector.EnforceSizeLimit(&entry), Succeeded());
}

TEST_F(ScriptedSizeLimit, StandardExceptionWhileLookingForTheFileMeansAnUnknownSize) {
  storage.path = []() -> std::string { throw 42; };
  LogCapture log;
  log.OnRecord(ThrowFromRecordOf<std::length_error>("GetDatabaseFullPathName", std::length_error("too long")));
  EXPECT_THAT(collector.EnforceSizeLimit(&entry), Succeeded());
  EXPECT_THAT(storage.statements, testing::Each(testing::StartsWith("SELECT pgsize")));
}

TEST_F(ScriptedSizeLimit, OtherExceptionWhileLookingForTheFileReachesTheCaller) {
  storage.path = []() -> std::string { throw 42; };
  LogCapture log;
  log.OnRecord(ThrowFromRecordOf<int>("GetDatabaseFullPathName", 7));
  EXPECT_THROW(static_cast<void>(collector.EnforceSizeLimit(&entry)), int);
}

}  // namespace
}  // namespace corvo::test
