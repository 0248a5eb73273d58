#include "host/show/run_json.h"

#include <gmock/gmock.h>

#include "host/report_samples.h"
#include "host/show/json_text.h"

namespace corvo::telemetry::host {
namespace {

TEST(RunDocument, HoldsResultDatabasesAndSeconds) {
  EXPECT_EQ(Json::parse(RunDocument(test::SampleReport())), Json::parse(R"({
    "schema_version": 1,
    "result": {"category": "EC_NoError", "code": 0, "version": 3},
    "databases": [{"name": "HealthLog", "path": "HealthLog.db", "bytes_before": 2000000, "bytes_after": 500000,
                   "tables": [{"table": "Boot", "rows_before": 1500, "rows_after": 500},
                              {"table": "Sleep", "rows_before": null, "rows_after": null},
                              {"table": "Drive", "rows_before": null, "rows_after": null}]}],
    "seconds": 0.25})"));
}

TEST(RunDocument, AddsUpTheTimesOfAllPasses) {
  RunReport report = test::SampleReport();
  report.passes.push_back(report.passes[0]);
  EXPECT_EQ(Json::parse(RunDocument(report))["seconds"], 0.5);
}

TEST(RunDocument, ShowsAFileThatWentAwayAsEmpty) {
  RunReport report = test::SampleReport();
  report.after.clear();
  const Json database = Json::parse(RunDocument(report))["databases"][0];
  EXPECT_EQ(database["bytes_after"], 0);
  EXPECT_EQ(database["tables"][0]["rows_after"], nullptr);
}

TEST(RunDocument, OfARunThatDidNotBeginHasTheRecordAndNoDatabases) {
  common::Error error;
  error.category = common::EC_Custom;
  error.code = 10;
  error.what = "no such directory";
  EXPECT_EQ(Json::parse(RunDocument(error)), Json::parse(R"({"schema_version": 1,
                            "result": {"category": "EC_Custom", "code": 10, "version": 3, "what": "no such directory"},
                            "databases": [], "seconds": 0.0})"));
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
