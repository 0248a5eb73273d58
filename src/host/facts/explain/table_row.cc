#include "host/facts/explain/table_row.h"

#include <fmt/core.h>

#include "contracts/rules.h"
#include "host/facts/query.h"

namespace corvo::telemetry::host {
namespace {

using shared::TelemetryStorage;

/// The condition that the rule deletes by, on a row's `time`. It is NULL where SQLite reads no moment. A cutoff without
/// a text, before 1970 or after the year 9999, is one that no row is older than.
std::string Expired(const RowRequest& request) {
  return request.has_time && request.cutoff && contracts::BrokenDownUtc(*request.cutoff)
             ? fmt::format("datetime(time) < datetime({}, 'unixepoch')", *request.cutoff)
             : "0";
}

/// Its time as text, the moment that SQLite reads from it, whether it is expired. "now" and its like, the only texts
/// with a moment that begin with a letter, have none that stays.
std::string RowQuery(const RowRequest& request) {
  const std::string time = request.has_time ? "time" : "NULL";
  return fmt::format(
      "SELECT CASE typeof({0}) WHEN 'null' THEN 'NULL' WHEN 'blob' THEN 'x''' || hex(substr({0}, 1, 40)) || '''' "
      "ELSE substr({0}, 1, 100) END, "
      "CASE WHEN CAST({0} AS TEXT) GLOB '[A-Za-z]*' THEN NULL ELSE strftime('%s', datetime({0})) END, ({1}) IS TRUE "
      "FROM \"{2}\" WHERE rowid = {3}",
      time, Expired(request), request.table, request.rowid);
}

std::string NeighboursQuery(const RowRequest& request) {
  return fmt::format(
      "SELECT CAST(TOTAL(rowid < {0}) AS INTEGER), CAST(TOTAL(rowid > {0}) AS INTEGER) FROM \"{1}\" "
      "WHERE ({2}) IS NOT TRUE",
      request.rowid, request.table, Expired(request));
}

}  // namespace

// A column is the rowid itself, and keeps it, when it is an INTEGER PRIMARY KEY: the one kind of primary key that needs
// no index of its own (https://www.sqlite.org/lang_createtable.html#rowid).
common::Error AskWhetherRowidsMayChange(TelemetryStorage& storage, const std::string& table, bool& may) {
  std::int64_t answer = 0;
  common::Error error =
      AskNumber(storage,
                fmt::format("SELECT NOT EXISTS (SELECT 1 FROM pragma_table_xinfo('{0}') WHERE pk <> 0) OR EXISTS "
                            "(SELECT 1 FROM pragma_index_list('{0}') WHERE origin = 'pk')",
                            table),
                answer);
  may = answer != 0;
  return error;
}

common::Error FindRow(TelemetryStorage& storage, const RowRequest& request, std::optional<TableRow>& row) {
  shared::Rows rows;
  common::Error error = RunStatement(storage, RowQuery(request), &rows);
  if (error.Failed() || rows.count == 0) {
    return error;
  }
  TableRow found{.rowid = request.rowid,
                 .time = rows[0][0].GetColumnValue(),
                 .moment = NumberOrNone(rows[0][1]),
                 .place = {.expired = NumberIn(rows[0][2]) != 0}};
  shared::Rows counts;
  error = RunStatement(storage, NeighboursQuery(request), &counts);
  if (!error.Failed() && counts.count == 1) {
    found.place.older = NumberIn(counts[0][0]);
    found.place.newer = NumberIn(counts[0][1]);
    row = found;
  }
  return error;
}

}  // namespace corvo::telemetry::host
