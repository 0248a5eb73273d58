#include "host/facts/run_report.h"

#include <algorithm>

namespace corvo::telemetry::host {
namespace {

common::Error RecordOf(const DatabaseReport& database) {
  common::Error record = database.problem->record;
  if (!record.Failed()) {
    record.category = common::EC_Custom;
    record.code = 1;
    record.type = "corvo-telemetry-host";
    record.what = database.name + " was not cleaned: " + database.problem->reason;
  }
  return record;
}

}  // namespace

void Deleted::Add(const Deleted& other) {
  expired += other.expired;
  row_limit += other.row_limit;
  size_limit += other.size_limit;
}

std::optional<std::int64_t> TableReport::AddedByOthers() const {
  if (!rows_before || !rows_after) {
    return std::nullopt;
  }
  return *rows_after - (*rows_before - deleted.Sum());
}

bool TableReport::LostMost() const { return rows_before && deleted.Sum() > *rows_before / 2; }

Deleted DatabaseReport::DeletedRows() const {
  Deleted sum;
  for (const TableReport& table : tables) {
    sum.Add(table.deleted);
  }
  return sum;
}

common::Error RunReport::Result() const {
  const auto failed =
      std::find_if(passes.begin(), passes.end(), [](const PassOutcome& pass) { return pass.result.Failed(); });
  if (failed != passes.end()) {
    return failed->result;
  }
  const auto left = std::find_if(databases.begin(), databases.end(),
                                 [](const DatabaseReport& each) { return each.problem.has_value(); });
  return left == databases.end() ? common::Error() : RecordOf(*left);
}

double RunReport::Seconds() const {
  double sum = 0;
  for (const PassOutcome& pass : passes) {
    sum += pass.seconds;
  }
  return sum;
}

std::size_t RunReport::Cleaned() const {
  return static_cast<std::size_t>(
      std::count_if(databases.begin(), databases.end(), [](const DatabaseReport& each) { return !each.problem; }));
}

std::int64_t RunReport::RowsDeleted() const {
  std::int64_t sum = 0;
  for (const DatabaseReport& database : databases) {
    sum += database.DeletedRows().Sum();
  }
  return sum;
}

}  // namespace corvo::telemetry::host
