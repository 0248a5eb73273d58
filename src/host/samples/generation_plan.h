#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"

namespace corvo::telemetry::host {

struct TablePlan {
  const google::protobuf::Descriptor* type;
  std::string table;
  std::int64_t rows;
  std::int64_t span_s;      ///< age of the oldest row, in seconds
  std::size_t text_length;  ///< length of texts, in characters
};

struct DatabasePlan {
  std::string database;
  std::vector<TablePlan> tables;
};

/// What `generate` writes, and the oddities it puts in on purpose.
struct GenerationPlan {
  std::vector<DatabasePlan> databases;
  std::string missing_database;          ///< gets no file
  std::string missing_table;             ///< gets no table
  std::string oversize_database;         ///< ends up above its size limit
  std::vector<std::string> long_tables;  ///< hold more rows than their limit
};

/// Plans from the options of the contracts alone.
///
/// With a retention, a fifth of the rows is older than it, unless `days` (0 for none) says how far back all tables go.
/// @param scale factor on the number of rows; every table gets some.
[[nodiscard]] GenerationPlan PlanGeneration(const CatalogueView& catalogue, double scale, std::uint32_t days);

}  // namespace corvo::telemetry::host
