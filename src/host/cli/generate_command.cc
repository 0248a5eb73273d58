#include <fmt/core.h>
#include <fmt/format.h>

#include <filesystem>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/facts/catalogue_view.h"
#include "host/platform/platform.h"
#include "host/samples/database_writer.h"
#include "host/samples/generation_plan.h"
#include "host/samples/row_source.h"
#include "host/samples/time_text.h"
#include "host/show/text_table.h"
#include "host/show/units.h"
#include "storage/database_name.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

void MakeDirectory(const fs::path& directory) {
  std::error_code error;
  fs::create_directories(directory, error);
  if (!fs::is_directory(directory)) {
    throw CommandFailure(kUsage, fmt::format("cannot make the directory {}: {}", common::Utf8(directory),
                                             error ? error.message() : "something else has its name"));
  }
}

void RefuseDatabases(const fs::path& directory) {
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    if (entry.path().extension() == shared::kDatabaseExtension) {
      throw CommandFailure(kUsage,
                           fmt::format("{} already holds databases ({}); --force replaces those of the catalogue",
                                       common::Utf8(directory), common::Utf8(entry.path().filename())));
    }
  }
}

// Journals too: an old one would be played back into the new file.
void RemoveDatabases(const fs::path& directory, const CatalogueView& catalogue) {
  for (const DatabaseView& database : catalogue.databases) {
    const std::string file = shared::AddDatabaseExtension(database.database);
    for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
      fs::remove(directory / (file + suffix));
    }
  }
}

std::int64_t WriteDatabase(const fs::path& file, const DatabasePlan& plan, std::int64_t now, std::uint64_t seed) {
  DatabaseWriter writer(file);
  for (const TablePlan& table : plan.tables) {
    writer.CreateTable(table.table, ColumnsOf(*table.type));
  }
  std::int64_t rows = 0;
  for (const TablePlan& table : plan.tables) {
    writer.StartRows(table.table, ColumnsOf(*table.type).size());
    RowSource source(table, now, seed);
    for (std::int64_t row = 0; row < table.rows; ++row) {
      writer.Insert(source.Row(row));
    }
    rows += table.rows;
  }
  writer.Commit();
  return rows;
}

void PrintSummary(const GenerationPlan& plan, const std::vector<TableLine>& lines, const GenerateOptions& options) {
  fmt::print("{}\n",
             FormatTable(lines, {Align::kLeft, Align::kRight, Align::kRight, Align::kRight}, UsesColour(stdout)));
  fmt::print("Put in on purpose:\n");
  fmt::print("  no database   {}\n", plan.missing_database);
  fmt::print("  no table      {}\n", plan.missing_table);
  if (options.scale >= 1) {
    fmt::print("  too large     {}\n", plan.oversize_database);
  }
  if (!plan.long_tables.empty()) {
    fmt::print("  too many rows {}\n", fmt::join(plan.long_tables, ", "));
  }
}

}  // namespace

ExitCode GenerateCommand(const GenerateOptions& options) {
  const fs::path directory(options.data_dir);
  const std::int64_t now = options.now.empty() ? StartOfToday() : ParseDay(options.now);
  MakeDirectory(directory);
  const CatalogueView catalogue = ReadCatalogue();
  if (!options.force) {
    RefuseDatabases(directory);
  }
  RemoveDatabases(directory, catalogue);

  const GenerationPlan plan = PlanGeneration(catalogue, options.scale, options.days);
  std::vector<TableLine> lines = {{{"DATABASE", "TABLES", "ROWS", "SIZE"}, Tone::kStrong}};
  std::int64_t total_rows = 0;
  std::int64_t total_bytes = 0;
  for (const DatabasePlan& database : plan.databases) {
    const fs::path file = directory / shared::AddDatabaseExtension(database.database);
    const std::int64_t rows = WriteDatabase(file, database, now, options.seed);
    const auto bytes = static_cast<std::int64_t>(fs::file_size(file));
    lines.push_back(
        {{database.database, std::to_string(database.tables.size()), WithSeparators(rows), HumanBytes(bytes)}});
    total_rows += rows;
    total_bytes += bytes;
  }
  PrintSummary(plan, lines, options);
  fmt::print("\nGenerated {} in {}: {}, {} (seed {}, up to {})\n",
             Counted(static_cast<std::int64_t>(plan.databases.size()), "database"), common::Utf8(directory),
             Counted(total_rows, "row"), HumanBytes(total_bytes), options.seed, TimeText(now));
  return kDone;
}

}  // namespace corvo::telemetry::host
