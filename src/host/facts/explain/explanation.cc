#include "host/facts/explain/explanation.h"

#include <fmt/core.h>

#include <algorithm>
#include <utility>

#include "common/text.h"
#include "contracts/rules.h"
#include "host/facts/file_problem.h"
#include "host/facts/forecast.h"
#include "host/facts/look.h"
#include "host/facts/query.h"
#include "host/facts/reading.h"
#include "host/facts/table_check.h"
#include "storage/storage_options.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;
using shared::TelemetryStorage;

void Require(const common::Error& error, const fs::path& file) {
  if (error.Failed()) {
    throw CannotExplain(file, ProblemOf(error, file, Access::kRead));
  }
}

ContractView ContractOf(const CatalogueView& catalogue, const std::string& table) {
  const auto found = std::find_if(catalogue.contracts.begin(), catalogue.contracts.end(),
                                  [&table](const ContractView& each) { return each.table == table; });
  if (found == catalogue.contracts.end()) {
    throw CannotExplain("there is no table " + table);
  }
  return *found;
}

/// A contract whose database no message stands for has one without a limit.
DatabaseView DatabaseOf(const CatalogueView& catalogue, const ContractView& contract) {
  const auto found = std::find_if(catalogue.databases.begin(), catalogue.databases.end(),
                                  [&contract](const DatabaseView& each) { return each.database == contract.database; });
  return found != catalogue.databases.end()
             ? *found
             : DatabaseView{.type = "", .name = "", .database = contract.database, .max_size_mb = 0};
}

/// What the rules would misread in one table keeps a run from all tables of its database.
std::string ProblemOfAny(const std::vector<TableState>& tables) {
  const auto unfit =
      std::find_if(tables.begin(), tables.end(), [](const TableState& each) { return !each.problem.empty(); });
  return unfit == tables.end() ? "" : unfit->problem;
}

void TakeOver(const DatabaseState& state, Explanation& explanation) {
  if (state.problem) {
    throw CannotExplain(state.path, *state.problem);
  }
  const auto table = std::find_if(state.tables.begin(), state.tables.end(), [&explanation](const TableState& each) {
    return each.contract.type == explanation.contract.type;
  });
  explanation.missing_file = state.missing;
  if (state.missing || table == state.tables.end()) {
    return;
  }
  if (!table->problem.empty()) {
    throw CannotExplain(state.path, {Problem::Kind::kUnfit, table->problem, table->record});
  }
  explanation.table = *table;
  explanation.file_bytes = state.file_bytes;
  explanation.engine_mb = state.engine_mb;
  explanation.left_alone = ProblemOfAny(state.tables);
  if (!explanation.left_alone.empty()) {
    return;
  }
  explanation.trim_factor =
      TrimShare({.tables = {}, .max_size_mb = explanation.database.max_size_mb, .size_mb = state.engine_mb},
                explanation.contract.max_size_mb);
}

std::string NoSuchRow(TelemetryStorage& storage, const Explanation& explanation, std::int64_t rowid) {
  const std::string& table = explanation.contract.table;
  const auto first = AskNumberOrNone(storage, fmt::format("SELECT MIN(rowid) FROM \"{}\"", table));
  const auto last = AskNumberOrNone(storage, fmt::format("SELECT MAX(rowid) FROM \"{}\"", table));
  return first && last ? fmt::format("{} has no row with the rowid {}; its rowids lie between {} and {}", table, rowid,
                                     *first, *last)
                       : fmt::format("{} has no row with the rowid {}; it is empty", table, rowid);
}

std::optional<TableRow> RowOf(TelemetryStorage& storage, const Explanation& explanation, const TableCheck& check,
                              std::int64_t rowid) {
  const ContractView& contract = explanation.contract;
  if (!check.has_rowids) {
    throw CannotExplain(contract.table + " has no rowids");
  }
  RowRequest request{.table = contract.table, .rowid = rowid, .has_time = check.has_time};
  if (contract.retention_days != 0) {
    request.cutoff = contracts::Cutoff(explanation.now, contract.retention_days);
  }
  std::optional<TableRow> row;
  Require(FindRow(storage, request, row), explanation.path);
  return row;
}

RowExplanation ExplainRow(const Explanation& explanation, const TableRow& row) {
  const ContractView& contract = explanation.contract;
  RowExplanation explained{.row = row};
  if (explanation.left_alone.empty()) {
    explained.next_pass = FateOf(row.place, explanation.table.next_pass);
  }
  if (row.moment) {
    explained.expires = ExpiryMoment(*row.moment, contract.retention_days);
  }
  if (LimitsRows(contract.max_rows)) {
    explained.rows_until_limit = RowsUntilLimit(row.place, contract.max_rows);
    if (explanation.table.rows_per_day > 0) {
      explained.days_until_limit = static_cast<double>(*explained.rows_until_limit) / explanation.table.rows_per_day;
    }
  }
  return explained;
}

/// What the state of the directory does not tell of the table.
void LookCloser(Explanation& explanation, const std::vector<std::int64_t>& rowids) {
  const ContractView& contract = explanation.contract;
  const shared::StorageOptionsScope reading(ReadingOptions(explanation.path));
  TelemetryStorage storage(explanation.path.string().c_str(), "");
  Require(RunStatement(storage, "BEGIN"), explanation.path);
  TableCheck check;
  Require(CheckTable(storage, contract, check), explanation.path);
  if (check.has_rowids) {
    Require(AskWhetherRowidsMayChange(storage, contract.table, explanation.rowids_may_change), explanation.path);
  }
  for (const std::int64_t rowid : rowids) {
    if (const std::optional<TableRow> row = RowOf(storage, explanation, check, rowid)) {
      explanation.rows.push_back(ExplainRow(explanation, *row));
    } else {
      explanation.missing_rows.push_back({rowid, NoSuchRow(storage, explanation, rowid)});
    }
  }
}

}  // namespace

CannotExplain::CannotExplain(const fs::path& file, Problem problem)
    : std::runtime_error(fmt::format("{} cannot be explained: {}", common::Utf8(file), problem.reason)),
      cause_(std::move(problem)) {}

Explanation Explain(const fs::path& directory, const std::string& table, const std::vector<std::int64_t>& rowids,
                    std::int64_t now) {
  const CatalogueView catalogue = ReadCatalogue();
  Explanation explanation{.contract = ContractOf(catalogue, table), .database = {}, .path = {}, .now = now};
  explanation.database = DatabaseOf(catalogue, explanation.contract);
  explanation.path = DatabaseFile(explanation.database, directory);
  explanation.table.contract = explanation.contract;
  const DirectoryState state = ReadDirectoryState(directory, "", {explanation.contract.database}, now);
  if (!state.databases.empty()) {
    TakeOver(state.databases.front(), explanation);
  }
  const bool size_limited = explanation.database.max_size_mb != 0 && explanation.contract.max_size_mb != 0;
  explanation.reach = ReachOf(explanation.table, size_limited);
  if (!explanation.missing_file && !explanation.table.missing) {
    LookCloser(explanation, rowids);
  } else if (!rowids.empty()) {
    throw CannotExplain(fmt::format("there is no table {} in {} yet, so it has no row with the rowid {}", table,
                                    common::Utf8(explanation.path), rowids.front()));
  }
  return explanation;
}

}  // namespace corvo::telemetry::host
