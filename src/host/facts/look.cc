#include "host/facts/look.h"

#include <fmt/core.h>

#include "host/facts/file_problem.h"
#include "host/facts/query.h"
#include "host/facts/table_check.h"
#include "host/platform/access.h"
#include "storage/database_name.h"
#include "storage/result_code.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;
using shared::TelemetryStorage;

/// Of the pages in use.
constexpr const char* kContentBytes =
    "SELECT (page_count - freelist_count) * page_size FROM pragma_page_count, pragma_freelist_count, pragma_page_size";

/// A lock for writing, for a moment: whoever gets it may write, and nobody else does. The storage library looks through
/// the file beforehand, as before every statement that could write.
common::Error TryToWrite(TelemetryStorage& storage) {
  common::Error error = RunStatement(storage, "BEGIN IMMEDIATE");
  return error.Failed() ? error : RunStatement(storage, "ROLLBACK");
}

common::Error LookAtTable(TelemetryStorage& storage, const ContractView& contract, TableReport& report) {
  TableCheck check;
  common::Error error = CheckTable(storage, contract, check);
  report.missing = check.missing;
  report.problem = check.misread;
  if (error.Failed() || report.missing) {
    return error;
  }
  std::int64_t rows = 0;
  error = AskNumber(storage, fmt::format("SELECT COUNT(*) FROM \"{}\"", contract.table), rows);
  if (!error.Failed()) {
    report.rows_before = rows;
  }
  return error;
}

std::string SizeText(std::uintmax_t bytes) {
  constexpr std::uintmax_t kMegabyte = 1'000'000;
  return bytes < kMegabyte ? fmt::format("{} bytes", bytes)
                           : fmt::format("{:.1f} MB", static_cast<double>(bytes) / static_cast<double>(kMegabyte));
}

/// Compaction writes what the database holds to a temporary file, and the pages that it replaces to a journal. What the
/// deletions will have freed by then is not known yet, so this asks for the most that it can take.
std::optional<Problem> LackOfRoom(TelemetryStorage& storage, const CompactionPlaces& places) {
  std::int64_t bytes = 0;
  const common::Error error = AskNumber(storage, kContentBytes, bytes);
  if (error.Failed()) {
    return std::nullopt;
  }
  for (const fs::path& place : {places.data, places.temporary}) {
    std::error_code unknown;
    const fs::space_info space = fs::space(place, unknown);
    if (!unknown && space.available < static_cast<std::uintmax_t>(bytes)) {
      return Problem{
          Problem::Kind::kNoRoom,
          fmt::format("no room to compact it: up to {} are needed in {}, {} are free",
                      SizeText(static_cast<std::uintmax_t>(bytes)), place.string(), SizeText(space.available)),
          {},
          place == places.data ? Problem::Cause::kNoRoomBeside : Problem::Cause::kOther};
    }
  }
  return std::nullopt;
}

/// SQLite opens a file that must not be written for reading, and finds out at the first change that it cannot be made.
std::optional<Problem> LackOfPermission(const fs::path& file) {
  if (!MayReadAndWrite(file)) {
    return NoPermission(file);
  }
  if (!MayWriteIn(RealPath(file).parent_path())) {
    return Problem{Problem::Kind::kCannotOpen, "permission denied: nothing may be written in its folder", {}};
  }
  return std::nullopt;
}

/// The first thing in a sound database that keeps it from being cleaned.
std::optional<Problem> LookInside(TelemetryStorage& storage, const std::vector<ContractView>& contracts,
                                  DatabaseReport& report) {
  std::optional<Problem> problem;
  for (std::size_t index = 0; index < contracts.size(); ++index) {
    TableReport& table = report.tables[index];
    if (const common::Error error = LookAtTable(storage, contracts[index], table); error.Failed()) {
      table.problem = error.what;
      return ProblemOf(error, report.path, Access::kReadAndWrite);
    }
    if (!table.problem.empty() && !problem) {
      problem = Problem{Problem::Kind::kUnfit, table.problem, {}};
    }
  }
  return problem;
}

/// A table that was there is no table that was cleaned, whatever the pass forgives.
void Complain(DatabaseReport& database, const std::string& reason) {
  if (!database.problem) {
    database.problem = Problem{Problem::Kind::kFailed, reason, {}};
  }
}

}  // namespace

std::optional<Problem> LookFromOutside(const fs::path& file) {
  const TelemetryStorage storage(file.string().c_str(), "");
  const common::Error error = storage.GetLastError();
  return error.Failed() ? ProblemOf(error, file, Access::kReadAndWrite) : LackOfPermission(file);
}

DatabaseReport LookAtDatabase(const DatabaseView& database, const std::vector<ContractView>& contracts,
                              const fs::path& directory, const CompactionPlaces& places) {
  DatabaseReport report{.name = database.database, .path = DatabaseFile(database, directory), .tables = {}};
  report.bytes_before = report.bytes_after = SizeWithLog(report.path);
  for (const ContractView& contract : contracts) {
    report.tables.push_back({.table = contract.table});
  }
  report.problem = LookFromOutside(report.path);
  if (report.problem) {
    return report;
  }
  TelemetryStorage storage(report.path.string().c_str(), "");
  if (const common::Error error = TryToWrite(storage); error.Failed()) {
    report.problem = ProblemOf(error, report.path, Access::kReadAndWrite);
    return report;
  }
  report.problem = LookInside(storage, contracts, report);
  if (!report.problem) {
    report.problem = LackOfRoom(storage, places);
  }
  return report;
}

std::int64_t FileBytes(const fs::path& file) {
  std::error_code missing;
  const std::uintmax_t size = fs::file_size(file, missing);
  return missing ? 0 : static_cast<std::int64_t>(size);
}

std::int64_t SizeWithLog(const fs::path& file) {
  fs::path log = file;
  log += "-wal";
  return FileBytes(file) + FileBytes(log);
}

fs::path DatabaseFile(const DatabaseView& database, const fs::path& directory) {
  return directory / shared::AddDatabaseExtension(database.database);
}

bool HasFile(const fs::path& file) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(file, error);
  return status.type() != fs::file_type::not_found;
}

bool IsEmpty(const fs::path& file) {
  std::error_code unknown;
  return fs::is_regular_file(file, unknown) && FileBytes(file) <= 1;
}

void CountAfterwards(DatabaseReport& database) {
  database.bytes_after = SizeWithLog(database.path);
  TelemetryStorage storage(database.path.string().c_str(), "");
  // One view for a count and its last row, whatever collectors write meanwhile.
  if (storage.GetLastError().Failed() || RunStatement(storage, "BEGIN").Failed()) {
    return;
  }
  std::int64_t bytes = 0;
  if (database.compactions > 0 && !AskNumber(storage, kContentBytes, bytes).Failed()) {
    database.compacted_bytes = bytes * database.compactions;
  }
  for (TableReport& table : database.tables) {
    std::int64_t rows = 0;
    const common::Error error = AskNumber(storage, fmt::format("SELECT COUNT(*) FROM \"{}\"", table.table), rows);
    if (!error.Failed()) {
      table.rows_after = rows;
      table.last_rowid = AskNumberOrNone(storage, fmt::format("SELECT MAX(rowid) FROM \"{}\"", table.table));
    } else if (!shared::IsMissingTable(error)) {
      return;
    } else if (table.rows_before) {
      table.rows_after = 0;
      Complain(database, fmt::format("another program took {} away during the run", table.table));
    }
  }
}

void FindOldest(DatabaseReport& database) {
  TelemetryStorage storage(database.path.string().c_str(), "");
  for (TableReport& table : database.tables) {
    if (table.rows_after.value_or(0) > 0) {
      table.oldest_left =
          AskNumberOrNone(storage, fmt::format("SELECT strftime('%s', MIN(datetime(time))) FROM \"{}\"", table.table));
    }
  }
}

}  // namespace corvo::telemetry::host
