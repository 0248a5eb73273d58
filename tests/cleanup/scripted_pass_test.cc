#include <gtest/gtest.h>

#include <fstream>
#include <ostream>

#include "cleanup/database_location.h"
#include "cleanup/scripted_fixture.h"
#include "contracts/lookups.h"
#include "support/case_name.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

using telemetry::cleanup::GetDatabaseFileName;
using telemetry::cleanup::GetDatabaseFullPathName;
using testing::ElementsAre;

struct PathCase {
  const char* name;
  const char* given;
  const char* expected;

  friend void PrintTo(const PathCase& value, std::ostream* stream) { *stream << value.name; }
};

class ScriptedPath : public ScriptedTest, public testing::WithParamInterface<PathCase> {};

TEST_P(ScriptedPath, GetsTheFileNameUnlessItHoldsIt) {
  storage.path = [] { return GetParam().given; };
  EXPECT_EQ(GetDatabaseFullPathName(contract), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Answers, ScriptedPath,
                         testing::Values(PathCase{"WholePath", "/data/Log.db", "/data/Log.db"},
                                         PathCase{"Directory", "/data/", "/data/Log.db"},
                                         PathCase{"NoSeparatorIsAdded", "/data", "/dataLog.db"},
                                         PathCase{"NameInTheMiddle", "/data/Log.db/copy", "/data/Log.db/copy"},
                                         PathCase{"NameAsPartOfAnother", "/data/MyLog.dbx", "/data/MyLog.dbx"},
                                         PathCase{"CaseCounts", "/data/log.db", "/data/log.dbLog.db"},
                                         PathCase{"ShorterThanTheName", "/d", "/dLog.db"},
                                         PathCase{"Empty", "", "Log.db"}),
                         CaseName());

class ScriptedLocation : public ScriptedTest {
 protected:
  /// Expects the marker, and the one record that goes with it.
  void ExpectMarker() {
    const LogCapture log;
    EXPECT_EQ(GetDatabaseFullPathName(contract), "[INVALID PATHNAME]");
    EXPECT_THAT(log.Lines(), ElementsAre(LogLine{plog::error, "GetDatabaseFullPathName",
                                                 "GetDatabaseFullPathName : exception - UNKNOWN"}));
  }
};

TEST_F(ScriptedLocation, PathThatThrowsIsAMarkerAndIsLogged) {
  storage.path = []() -> std::string { throw std::bad_alloc(); };
  ExpectMarker();
}

TEST_F(ScriptedLocation, StorageThatCannotBeConstructedIsAMarkerAndIsLogged) {
  storage.open = [](const std::string&) { throw "closed"; };
  ExpectMarker();
}

TEST_F(ScriptedLocation, FileOfADatabaseThatCannotBeOpenedIsNamedAfterTheType) {
  storage.last_error = [] { return Record(telemetry::common::EC_WinApi, 2, "not found"); };
  const LogCapture log;
  EXPECT_EQ(GetDatabaseFileName(contract), "Samples.db");
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
}

TEST_F(ScriptedLocation, PathIsAskedOfAStorageForTheFile) {
  EXPECT_EQ(GetDatabaseFullPathName(contract), "/data/Log.db");
  EXPECT_THAT(storage.opened, ElementsAre("contract Samples", "file Log.db"));
}

TEST_F(ScriptedLocation, MarkerOfADatabaseWithoutANameIsUsedLikeAFileName) {
  const TempDir directory;
  storage.name = [] { return ""; };
  storage.path = [&directory] { return directory / ""; };
  const std::string path = GetDatabaseFullPathName(contract);
  EXPECT_EQ(path, directory / "[INVALID FILE]");
  EXPECT_FALSE(telemetry::cleanup::DatabaseFileExists(path.c_str()));
  EXPECT_THAT(storage.opened, ElementsAre("contract Samples", "file [INVALID FILE]"));
}

/// A pass over one database whose file is there.
class ScriptedPass : public ScriptedTest {
 protected:
  ScriptedPass() {
    std::ofstream(directory / "Log.db").flush();
    storage.path = [this] { return directory / "Log.db"; };
    storage.rows = [](const std::string&) { return ScriptedStorage::Rows{{"10"}}; };
    table = contracts.Make("T", {.database = "Log", .max_rows = 5, .retention_days = 1});
  }

  Error Clean() const { return collector.CleanDatabases({{"log", {0, {table}}}}); }

  TempDir directory;
  google::protobuf::Message* table = nullptr;
};

TEST_F(ScriptedPass, BothTableStepsRunAndTheFirstFailureIsCarriedThroughUnchanged) {
  storage.execute = [calls = 0](const std::string&) mutable {
    return Record(telemetry::common::EC_WinApi, ++calls, "denied");
  };
  const Error result = Clean();
  EXPECT_EQ(result.category, telemetry::common::EC_WinApi);
  EXPECT_EQ(result.code, 1);
  EXPECT_THAT(storage.statements, ElementsAre(testing::HasSubstr("datetime(time)"), testing::HasSubstr("COUNT")));
}

TEST_F(ScriptedPass, SystemFailureOfTheCompactionIsTheResult) {
  storage.execute = [](const std::string& sql) {
    return sql == "VACUUM;" ? Record(telemetry::common::EC_SEH, 3, "fault") : Error();
  };
  const Error result = Clean();
  EXPECT_EQ(result.category, telemetry::common::EC_SEH);
  EXPECT_EQ(result.code, 3);
  EXPECT_EQ(result.what, "fault");
}

TEST_F(ScriptedPass, MissingTableInBothStepsIsForgivenAndTheDatabaseIsCompacted) {
  storage.execute = [](const std::string& sql) {
    return sql == "VACUUM;" ? Error() : Record(telemetry::common::EC_Custom, 1, "no such table: T");
  };
  EXPECT_THAT(Clean(), Succeeded());
  EXPECT_EQ(storage.statements.back(), "VACUUM;");
}

TEST_F(ScriptedPass, OtherThanAStandardExceptionBecomesTheResultAndIsLogged) {
  storage.path = []() -> std::string { throw 42; };
  LogCapture log;
  log.OnRecord([](const plog::Record& record) {
    if (std::string(record.getFunc()) == "GetDatabaseFullPathName") {
      throw 7;
    }
  });
  const Error result = collector.ReadSource();
  EXPECT_EQ(result.category, telemetry::common::EC_Custom);
  EXPECT_EQ(result.code, 7);
  const std::string json = R"({"category":"EC_Custom","code":7,"type":"int","version":3})";
  const char* tag = "DataCleanup::ReadSource";
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{plog::info, tag, "Started DataCleanup::ReadSource"},
                                       LogLine{plog::error, tag, "DataCleanup::ReadSource - exception : " + json},
                                       LogLine{plog::info, tag, json},
                                       LogLine{plog::info, tag, "Finished DataCleanup::ReadSource"}));
}

}  // namespace
}  // namespace corvo::test
