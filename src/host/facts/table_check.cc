#include "host/facts/table_check.h"

#include <fmt/core.h>

#include "host/facts/query.h"

namespace corvo::telemetry::host {
namespace {

using shared::TelemetryStorage;

/// Type, WITHOUT ROWID, a column "time", and a column "rowid" that is not the row's: a primary key of its own index.
using Facts = shared::DynamicArray<shared::Column>;

bool Is(const Facts& facts, int column) { return *facts[column].GetColumnValue() == '1'; }

/// What the rules of a contract would misread in its table; empty when nothing. The table is there.
std::string MisreadIn(const Facts& facts, const ContractView& contract) {
  const std::string type = facts[0].GetColumnValue();
  const bool by_age = contract.retention_days != 0;
  const bool by_order = contract.max_rows != 0 || contract.max_size_mb != 0;
  if ((by_age || by_order) && type != "table") {
    return fmt::format("{} is a {}", contract.table, type == "view" ? "view" : type + " table");
  }
  if (by_age && !Is(facts, 2)) {
    return contract.table + " has no column time";
  }
  if (by_order && Is(facts, 1)) {
    return contract.table + " has no rowids";
  }
  return by_order && Is(facts, 3) ? contract.table + " has an ordinary column called rowid" : "";
}

}  // namespace

common::Error CheckTable(TelemetryStorage& storage, const ContractView& contract, TableCheck& check) {
  const std::string table = "'" + contract.table + "'";
  shared::Rows rows;
  common::Error error = RunStatement(
      storage,
      fmt::format("SELECT type, wr, EXISTS (SELECT 1 FROM pragma_table_xinfo({0}) WHERE lower(name) = 'time'), "
                  "EXISTS (SELECT 1 FROM pragma_table_xinfo({0}) WHERE lower(name) = 'rowid' AND (pk = 0 OR EXISTS "
                  "(SELECT 1 FROM pragma_index_list({0}) WHERE origin = 'pk'))) "
                  "FROM pragma_table_list({0}) WHERE schema = 'main'",
                  table),
      &rows);
  check.missing = !error.Failed() && rows.count == 0;
  if (!error.Failed() && rows.count > 0) {
    check.has_time = Is(rows[0], 2);
    check.has_rowids = std::string(rows[0][0].GetColumnValue()) == "table" && !Is(rows[0], 1);
    check.misread = MisreadIn(rows[0], contract);
  }
  return error;
}

}  // namespace corvo::telemetry::host
