#include "host/show/run/run_json.h"

#include <gmock/gmock.h>

#include "host/report_samples.h"
#include "host/show/json_text.h"

namespace corvo::telemetry::host {
namespace {

TEST(RunDocument, HoldsResultDatabasesPassesAndSeconds) {
  EXPECT_EQ(Json::parse(RunDocument(test::SampleReport())), Json::parse(R"({
    "schema_version": 1,
    "result": {"category": "EC_NoError", "code": 0, "version": 3},
    "databases": [{"name": "HealthLog", "path": "HealthLog.db", "bytes_before": 2000000, "bytes_after": 500000,
                   "tables": [{"table": "Boot", "rows_before": 1500, "rows_after": 500, "missing": false,
                               "deleted": {"expired": 900, "row_limit": 100, "size_limit": 0},
                               "added_by_others": 0, "problem": null, "oldest_left": null, "seconds": 0.0},
                              {"table": "Sleep", "rows_before": null, "rows_after": null, "missing": true,
                               "deleted": {"expired": 0, "row_limit": 0, "size_limit": 0},
                               "added_by_others": null, "problem": null, "oldest_left": null, "seconds": 0.0},
                              {"table": "Drive", "rows_before": null, "rows_after": null, "missing": false,
                               "deleted": {"expired": 0, "row_limit": 0, "size_limit": 0},
                               "added_by_others": null, "problem": "locked", "oldest_left": null, "seconds": 0.0}],
                   "cleaned": true, "problem": null, "compaction_seconds": 0.0,
                   "not_compacted": null}],
    "seconds": 0.25,
    "data_directory": {"path": "data", "source": "--data-dir"},
    "cleaned": 1,
    "interrupted": false,
    "passes": [{"database": null, "result": {"category": "EC_NoError", "code": 0, "version": 3}, "rows_deleted": 1000,
                "seconds": 0.25, "failed_database": null, "failed_statement": null, "advice": null}],
    "planned": false})"));
}

TEST(RunDocument, AddsUpTheTimesOfAllPasses) {
  RunReport report = test::SampleReport();
  report.passes.push_back(report.passes[0]);
  EXPECT_EQ(Json::parse(RunDocument(report))["seconds"], 0.5);
}

TEST(RunDocument, SaysWhyADatabaseWasNotCleanedAndWhatToDo) {
  RunReport report = test::SampleReport();
  report.databases[0].problem = test::SampleProblem(Problem::Kind::kBusy, "another program holds it locked", 5);
  const Json document = Json::parse(RunDocument(report));
  const Json& problem = document["databases"][0]["problem"];
  EXPECT_EQ(document["cleaned"], 0);
  EXPECT_EQ(document["databases"][0]["cleaned"], false);
  EXPECT_EQ(problem["kind"], "busy");
  EXPECT_EQ(problem["reason"], "another program holds it locked");
  EXPECT_EQ(problem["record"]["code"], 5);
  EXPECT_THAT(problem["advice"].get<std::string>(), testing::HasSubstr("try again"));
}

TEST(RunDocument, IsAFailureWhenADatabaseWasNotCleaned) {
  RunReport report = test::SampleReport();
  report.databases[0].problem = test::SampleProblem(Problem::Kind::kNoRoom, "no room to compact it");
  const Json result = Json::parse(RunDocument(report))["result"];
  EXPECT_EQ(result["code"], 1);
  EXPECT_EQ(result["what"], "HealthLog was not cleaned: no room to compact it");
}

TEST(RunDocument, NamesTheStatementThatFailedThePass) {
  RunReport report = test::SampleReport();
  report.passes[0].result = test::StorageFailure(1, "no such column: time");
  report.passes[0].failure = FailedStatement{"/data/HealthLog.db", "DELETE FROM Boot", report.passes[0].result};
  const Json pass = Json::parse(RunDocument(report))["passes"][0];
  EXPECT_EQ(pass["failed_database"], "/data/HealthLog.db");
  EXPECT_EQ(pass["failed_statement"], "DELETE FROM Boot");
  EXPECT_THAT(pass["advice"].get<std::string>(), testing::HasSubstr("--log-level"));
}

TEST(RunDocument, OfARunThatDidNotBeginHasTheRecordAndNoDatabases) {
  common::Error error;
  error.category = common::EC_Custom;
  error.code = 10;
  error.what = "no such directory";
  EXPECT_EQ(Json::parse(RunDocument(error)), Json::parse(R"({"schema_version": 1,
                            "result": {"category": "EC_Custom", "code": 10, "version": 3, "what": "no such directory"},
                            "databases": [], "seconds": 0.0, "data_directory": null, "cleaned": 0,
                            "interrupted": false, "passes": [], "planned": false, "kind": "failure"})"));
}

TEST(ErrorJson, IsReadBackAsTheSameRecord) {
  common::Error error;
  error.category = common::EC_Custom;
  error.code = 267;
  error.what = "database disk image is malformed";
  error.type = "sqlite3";
  error.origin = "here";
  const common::Error read = ReadError(ErrorJson(error));
  EXPECT_EQ(read.category, error.category);
  EXPECT_EQ(read.code, error.code);
  EXPECT_EQ(read.what, error.what);
  EXPECT_EQ(read.type, error.type);
  EXPECT_EQ(read.origin, error.origin);
}

TEST(ErrorJson, OfAStrangeObjectReadsAsAnUnknownFailure) {
  const common::Error read = ReadError(Json::parse(R"({"category":7,"code":"x","what":null,"type":[]})"));
  EXPECT_EQ(read.category, common::EC_Unknown);
  EXPECT_EQ(read.code, 0);
  EXPECT_EQ(read.what, "");
}

TEST(ErrorJson, ReplacesBytesThatAreNotUtf8) {
  common::Error error;
  error.what = "directory \xff";
  EXPECT_EQ(ErrorJson(error)["what"], "directory \xEF\xBF\xBD");
}

}  // namespace
}  // namespace corvo::telemetry::host
