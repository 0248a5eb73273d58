#include "host/facts/rows/row_ages.h"

#include <fmt/core.h>

#include <algorithm>
#include <string>

#include "common/timestamp.h"
#include "contracts/rules.h"
#include "host/facts/query.h"
#include "host/facts/reading.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

using shared::TelemetryStorage;

constexpr std::int64_t kMostClasses = 40;
constexpr std::int64_t kTenYears = 3'652;

// What the statement gives in place of a class.
constexpr std::int64_t kUndated = -2;
constexpr std::int64_t kFuture = -1;

std::int64_t RoundedUp(std::int64_t dividend, std::int64_t divisor) { return (dividend + divisor - 1) / divisor; }

/// A text that begins with a letter, such as 'now', is the moment of the reading, if any.
std::string CountByClass(const std::string& table, const AgeScale& scale, std::int64_t now) {
  return fmt::format(
      "SELECT CASE WHEN moment IS NULL THEN {0} WHEN moment > {2} + {3} THEN {1} "
      "ELSE MIN(MAX({2} - moment, 0) / {4}, {5}) END AS class, COUNT(*) "
      "FROM (SELECT CASE WHEN time GLOB '[A-Za-z]*' THEN NULL ELSE CAST(strftime('%s', time) AS INTEGER) END "
      "AS moment FROM \"{6}\") GROUP BY class",
      kUndated, kFuture, now, common::kSecondsPerDay, scale.days * common::kSecondsPerDay, scale.classes, table);
}

void Put(RowAges& ages, std::int64_t group, std::int64_t rows) {
  if (group == kUndated) {
    ages.undated = rows;
  } else if (group == kFuture) {
    ages.future = rows;
  } else if (group < ages.scale.classes) {
    ages.rows.at(static_cast<std::size_t>(group)) = rows;
  } else {
    ages.older = rows;
  }
}

std::optional<RowAges> Count(TelemetryStorage& storage, const TableState& table, std::int64_t now) {
  RowAges ages{.scale = ScaleOf(table, now), .rows = {}};
  ages.rows.resize(static_cast<std::size_t>(ages.scale.classes));
  shared::Rows rows;
  if (RunStatement(storage, CountByClass(table.contract.table, ages.scale, now), &rows).Failed()) {
    return std::nullopt;
  }
  for (const auto& row : rows) {
    Put(ages, NumberIn(row[0]), NumberIn(row[1]));
  }
  return ages;
}

bool CanBeCounted(const TableState& table) { return !table.missing && table.problem.empty() && table.rows > 0; }

}  // namespace

AgeScale ScaleOf(const TableState& table, std::int64_t now) {
  const std::int64_t oldest =
      std::max<std::int64_t>((now - table.oldest.value_or(now)) / common::kSecondsPerDay + 1, 1);
  const std::int64_t kept = RoundedUp(KeptSeconds(table.contract, now).value_or(0), common::kSecondsPerDay);
  const std::int64_t least = kept == 0 ? 7 : RoundedUp(kept * 9, 8);
  const std::int64_t most = kept == 0 ? kTenYears : kept * 2;
  const std::int64_t reach = std::max(least, std::min(oldest, most));
  const std::int64_t days = RoundedUp(reach, kMostClasses);
  return {.days = days, .classes = RoundedUp(reach, days)};
}

std::optional<std::int64_t> KeptSeconds(const ContractView& contract, std::int64_t now) {
  const std::int64_t cutoff = contracts::Cutoff(now, contract.retention_days);
  return contract.retention_days == 0 || !contracts::BrokenDownUtc(cutoff) ? std::nullopt : std::optional(now - cutoff);
}

std::vector<std::optional<RowAges>> ReadRowAges(const DatabaseState& database, std::int64_t now) {
  std::vector<std::optional<RowAges>> ages(database.tables.size());
  if (database.missing || database.problem) {
    return ages;
  }
  const shared::StorageOptionsScope reading(ReadingOptions(database.path));
  TelemetryStorage storage(database.path.string().c_str(), "");
  if (RunStatement(storage, "BEGIN").Failed()) {
    return ages;
  }
  std::transform(database.tables.begin(), database.tables.end(), ages.begin(), [&](const TableState& table) {
    return CanBeCounted(table) ? Count(storage, table, now) : std::nullopt;
  });
  static_cast<void>(RunStatement(storage, "ROLLBACK"));
  return ages;
}

}  // namespace corvo::telemetry::host
