#pragma once

#include <cstdint>
#include <string>

#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// Sums over the tables that could be counted before the run, and over the files.
struct Sums {
  std::int64_t before = 0;
  std::int64_t after = 0;
  bool before_known = false;  ///< there was such a table
  bool after_known = true;    ///< each of them could be counted after the run, too
  Deleted deleted = {};
  std::int64_t added = 0;
  std::int64_t bytes_before = 0;
  std::int64_t bytes_after = 0;

  void Add(const Sums& other);
};

/// Over all databases and their tables.
[[nodiscard]] Sums SumUp(const RunReport& report);

/// What became of a size: "1.5 MB" less, "grew 1.5 MB", or nothing.
[[nodiscard]] std::string Change(std::int64_t before, std::int64_t after);

/// Databases and tables of a run with their rows before and after, what was deleted by which rule, and sizes. Columns
/// that say nothing in any line are left out.
///
/// @param width columns to keep to, as far as names and figures let it: then the heads are short, sizes and days
///        stand in a table of their own, and the columns that are needed least are left out. 0: as wide as it is.
[[nodiscard]] std::string RunTable(const RunReport& report, bool colour, int width);

}  // namespace corvo::telemetry::host
