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

/// A run over one database of three tables: one loses rows, one is missing, one cannot be read.
inline telemetry::host::RunReport SampleReport() {
  telemetry::host::RunReport report;
  report.before = {{.name = "HealthLog",
                    .path = "HealthLog.db",
                    .bytes = 2'000'000,
                    .tables = {{"Boot", 1500, ""}, {"Sleep", std::nullopt, ""}, {"Drive", std::nullopt, "locked"}}}};
  report.after = report.before;
  report.after[0].bytes = 500'000;
  report.after[0].tables[0].rows = 500;
  report.passes = {{.result = {}, .rows_deleted = 1000, .seconds = 0.25, .failed_database = ""}};
  return report;
}

}  // namespace corvo::test
