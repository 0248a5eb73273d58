#pragma once

#include "host/facts/run_report.h"

namespace corvo::test {

/// A record as the storage library makes them.
inline telemetry::common::Error StorageFailure(int code, const char* what) {
  telemetry::common::Error error;
  error.category = telemetry::common::EC_Custom;
  error.code = code;
  error.type = "sqlite3";
  error.what = what;
  return error;
}

/// A run over one database of three tables: one loses rows, one is missing, one cannot be counted.
inline telemetry::host::RunReport SampleReport() {
  using telemetry::host::Deleted;
  telemetry::host::RunReport report{
      .directory = "data", .directory_source = "--data-dir", .databases = {}, .passes = {}};
  report.databases = {
      {.name = "HealthLog",
       .path = "HealthLog.db",
       .bytes_before = 2'000'000,
       .bytes_after = 500'000,
       .tables = {
           {.table = "Boot", .rows_before = 1500, .rows_after = 500, .deleted = {.expired = 900, .row_limit = 100}},
           {.table = "Sleep", .missing = true},
           {.table = "Drive", .problem = "locked"}}}};
  report.passes = {{.result = {}, .rows_deleted = 1000, .seconds = 0.25}};
  return report;
}

/// A reason why a database was not cleaned.
inline telemetry::host::Problem SampleProblem(telemetry::host::Problem::Kind kind, const char* reason, int code = 0) {
  return {kind, reason, code == 0 ? telemetry::common::Error() : StorageFailure(code, reason)};
}

}  // namespace corvo::test
