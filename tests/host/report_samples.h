#pragma once

#include "host/facts/run_report.h"

namespace corvo::test {

inline const telemetry::host::Json kSuccessResult = {{"category", "EC_NoError"}, {"code", 0}, {"version", 3}};

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
  report.passes = {{.result = kSuccessResult, .rows_deleted = 1000, .seconds = 0.25, .failed_database = ""}};
  return report;
}

}  // namespace corvo::test
