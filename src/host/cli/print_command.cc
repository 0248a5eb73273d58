#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/cli/words/common_options.h"
#include "host/cli/words/help_text.h"
#include "host/cli/words/option_values.h"
#include "host/cli/words/wrong_usage.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/look.h"
#include "host/facts/rows/table_rows.h"
#include "host/platform/platform.h"
#include "host/show/fold.h"
#include "host/show/rows/row_formats.h"
#include "host/show/rows/row_table.h"
#include "host/show/standard_output.h"
#include "host/show/units.h"
#include "storage/database_name.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRowsAtOnce = 200;
constexpr std::size_t kMostOfADocument = 256'000'000;  // bytes of values, as programs hold a document in memory

struct PrintOptions {
  std::string data_dir;
  std::string table;  ///< as the catalogue spells it
  bool oldest = false;
  int limit = 10;
  std::string format = "table";
  Bounds bounds;
};

/// Where the table is kept.
struct Place {
  std::string database;
  fs::path file;
};

Place PlaceOf(const std::string& table, const fs::path& directory) {
  const CatalogueView catalogue = ReadCatalogue();
  const auto contract = std::find_if(catalogue.contracts.begin(), catalogue.contracts.end(),
                                     [&table](const ContractView& each) { return each.table == table; });
  Place place{contract->database, directory / shared::AddDatabaseExtension(contract->database)};
  if (!HasFile(place.file)) {
    throw CommandFailure(kPassFailed,
                         fmt::format("cannot print {}: there is no {} in {}; generate makes one to try, --data-dir "
                                     "names another directory",
                                     table, common::Utf8(place.file.filename()), common::Utf8(directory)));
  }
  return place;
}

/// Gives every row that is asked for to `take`, some at a time.
void ReadRows(TableRows& rows, int limit, const std::function<void(const Cells& row)>& take) {
  auto left = static_cast<std::size_t>(limit);
  while (left > 0) {
    const std::vector<Cells> some = rows.Next(std::min(left, kRowsAtOnce));
    if (some.empty()) {
      return;
    }
    std::for_each(some.begin(), some.end(), take);
    left -= some.size();
  }
}

std::string HowMany(std::size_t rows, const PrintOptions& options, const Place& place) {
  const std::string where = fmt::format("{} in {}", options.table, common::Utf8(place.file.filename()));
  if (rows == 0) {
    return where + " has no rows.";
  }
  const std::string count = Counted(static_cast<std::int64_t>(rows), "row");
  if (rows < static_cast<std::size_t>(options.limit)) {
    return fmt::format("All {} of {}, {} first.", count, where, options.oldest ? "oldest" : "newest");
  }
  return fmt::format("The {} {} of {}.", options.oldest ? "oldest" : "newest", count, where);
}

void PrintTable(TableRows& rows, const PrintOptions& options, const Place& place) {
  RowTable table(rows.Columns(), TerminalWidth(stdout), ShowsBlocks(stdout));
  ReadRows(rows, options.limit, [&table](const Cells& row) { table.Add(row); });
  Print((table.Rows() > 0 ? table.Text(UsesColour(stdout)) + "\n" : "") +
        Indented(HowMany(table.Rows(), options, place), 0, OutputWidth()));
}

void PrintLines(TableRows& rows, const PrintOptions& options) {
  const std::vector<std::string>& columns = rows.Columns();
  if (options.format == "csv") {
    const Reader reader = IsTerminal(stdout) ? Reader::kTerminal : Reader::kProgram;
    Print(CsvHead(columns, reader));
    ReadRows(rows, options.limit, [reader](const Cells& row) { Print(CsvLine(row, reader)); });
  } else {
    ReadRows(rows, options.limit, [&columns](const Cells& row) { Print(RowJsonLine(columns, row)); });
  }
}

void PrintDocument(TableRows& rows, const PrintOptions& options, const Place& place) {
  Json document = {{"schema_version", 1},
                   {"kind", "print"},
                   {"table", options.table},
                   {"database", place.database},
                   {"path", common::Utf8(place.file)},
                   {"order", options.oldest ? "oldest" : "newest"},
                   {"columns", rows.Columns()},
                   {"rows", Json::array()}};
  std::size_t bytes = 0;
  ReadRows(rows, options.limit, [&](const Cells& row) {
    for (const Cell& cell : row) {
      bytes += cell.text.size();
    }
    if (bytes > kMostOfADocument) {
      throw std::runtime_error("the rows are too large for one document; ask for fewer, or for --format jsonl");
    }
    document["rows"].push_back(RowJson(rows.Columns(), row));
  });
  Print(JsonText(document) + "\n");
}

void PrintRows(const PrintOptions& options, const Place& place, bool json) {
  const bool is_table = !json && options.format == "table";
  const auto longest = is_table ? OutputWidth() + 1 : 0;
  TableRows rows({place.file, options.table, options.oldest, longest});
  if (json) {
    PrintDocument(rows, options, place);
  } else if (is_table) {
    PrintTable(rows, options, place);
  } else {
    PrintLines(rows, options);
  }
}

ExitCode PrintCommand(const PrintOptions& options, bool json) {
  const DataDirectory directory = RequireDataDirectory(options.data_dir);
  const Interruptions interruptions;
  const shared::StorageOptionsScope storage(ReadOnlyOptionsOf(options.bounds, directory.path));
  const Place place = PlaceOf(options.table, directory.path);
  try {
    PrintRows(options, place, json);
  } catch (const std::runtime_error& failure) {
    RequireNoInterruption();
    throw CommandFailure(
        kPassFailed, fmt::format("cannot print {} of {}: {}", options.table, common::Utf8(place.file), failure.what()));
  }
  return kDone;
}

constexpr const char* kFooter =
    "Rows are ordered by rowid, as the row limit sees their age. jsonl and csv hold every column and every value in "
    "full; a value of csv that begins with =, +, - or @ is left as it is, so a spreadsheet can take it for a formula.";

}  // namespace

Action AddPrint(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("print", "Show the newest rows of a table, or the oldest");
  const auto options = std::make_shared<PrintOptions>();
  AddTable(command, {"TABLE", "", "The table, as contracts names it"}, options->table);
  AddDataDirectory(command, options->data_dir);
  command.add_flag("--oldest", options->oldest, "Show the oldest rows instead, oldest first");
  AddNumber(command, {"--limit", "ROWS", "Most rows to show"}, options->limit, 1, 100'000);
  CLI::Option& format = AddChoice(command, {"--format", "FORMAT", "table, jsonl (a JSON object a line) or csv"},
                                  options->format, {"table", "jsonl", "csv"});
  AddBounds(command, options->bounds);
  SetHelp(command,
          {{"print BatteryStatus --data-dir try", "the newest 10 rows"},
           {"print BatteryStatus --data-dir try --oldest --limit 3", "the oldest 3"},
           {"print Device --data-dir try --limit 1000 --format csv", "the newest 1000, for a spreadsheet"}},
          kFooter);
  return [options, &format](bool json) {
    if (json && format.count() > 0) {
      WrongUsage("--json writes a document of its own, so --format has no place beside it");
    }
    return PrintCommand(*options, json);
  };
}

}  // namespace corvo::telemetry::host
