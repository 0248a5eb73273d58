#include "host/facts/look.h"

#include <fmt/core.h>

#include <cstdlib>

#include "common/text.h"
#include "host/platform/access.h"
#include "storage/database_name.h"
#include "storage/result_code.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;
using shared::TelemetryStorage;

std::int64_t SizeWithLog(const fs::path& file) {
  fs::path log = file;
  log += "-wal";
  std::int64_t bytes = 0;
  for (const fs::path& part : {file, log}) {
    std::error_code missing;
    const std::uintmax_t size = fs::file_size(part, missing);
    bytes += missing ? 0 : static_cast<std::int64_t>(size);
  }
  return bytes;
}

/// Runs one statement. The command belongs to the storage, and lives as long as it does.
common::Error Run(TelemetryStorage& storage, const std::string& sql, shared::Rows* rows = nullptr) {
  auto* command = new shared::SqlCommand(sql.c_str());
  common::Error error = storage.Execute(command, false);
  if (rows != nullptr && !error.Failed()) {
    *rows = command->GetResults();
  }
  return error;
}

/// One number.
common::Error Ask(TelemetryStorage& storage, const std::string& sql, std::int64_t& number) {
  shared::Rows rows;
  common::Error error = Run(storage, sql, &rows);
  if (!error.Failed() && rows.count == 1) {
    number = std::strtoll(rows[0][0].GetColumnValue(), nullptr, 10);
  }
  return error;
}

/// A lock for writing, for a moment: whoever gets it may write, and nobody else does. The storage library looks through
/// the file beforehand, as before every statement that could write.
common::Error TryToWrite(TelemetryStorage& storage) {
  common::Error error = Run(storage, "BEGIN IMMEDIATE");
  return error.Failed() ? error : Run(storage, "ROLLBACK");
}

/// What the storage library says of a file without what everybody knows by then: "not a regular file" of the database,
/// "HealthLog.db-wal: not a regular file" of a file beside it.
std::string ReasonNotToOpen(const common::Error& error, const fs::path& file) {
  std::string reason = error.what;
  for (const std::string& known : {std::string("unable to open database file: "), common::Utf8(file.parent_path() / ""),
                                   common::Utf8(file.filename()) + ": "}) {
    if (reason.starts_with(known)) {
      reason.erase(0, known.size());
    }
  }
  return reason;
}

/// Where the file itself is, and with it its journals; its name may be a link.
fs::path RealPath(const fs::path& file) {
  std::error_code unknown;
  const fs::path real = fs::canonical(file, unknown);
  return unknown ? file : real;
}

/// SQLite's interfaces of the platforms take paths of 512 bytes (mxPathname, https://www.sqlite.org/c3ref/vfs.html),
/// and those of the side files are longer.
bool IsTooLong(const fs::path& file) {
  constexpr std::size_t kLongest = 512;
  return common::Utf8(file).size() + std::string("-journal").size() >= kLongest;
}

Problem ProblemOf(const common::Error& error, const fs::path& file) {
  using Kind = Problem::Kind;
  if (shared::IsBusy(error)) {
    return {Kind::kBusy, "another program holds it locked", error};
  }
  if (shared::IsInterrupted(error)) {
    return shared::StatementsInterrupted()
               ? Problem{Kind::kInterrupted, "interrupted", error}
               : Problem{Kind::kUnfit, "looking at it took longer than the time limit", error};
  }
  if (shared::IsDamaged(error)) {
    return {Kind::kUnfit, "damaged: " + error.what, error};
  }
  if ((shared::IsCannotOpen(error) || shared::IsReadOnly(error)) && !MayReadAndWrite(file)) {
    return {Kind::kCannotOpen, "permission denied", error};
  }
  if (shared::IsCannotOpen(error) && IsTooLong(RealPath(file))) {
    return {Kind::kPathTooLong, "its path is too long for SQLite", error};
  }
  return shared::IsCannotOpen(error) || shared::IsReadOnly(error)
             ? Problem{Kind::kCannotOpen, ReasonNotToOpen(error, file), error}
             : Problem{Kind::kUnfit, error.what, error};
}

/// What the rules of a contract would misread in its table; empty when nothing. The table is there.
std::string MisreadIn(const shared::DynamicArray<shared::Column>& facts, const ContractView& contract) {
  const auto is = [&facts](int column) { return *facts[column].GetColumnValue() == '1'; };
  const std::string type = facts[0].GetColumnValue();
  const bool by_age = contract.retention_days != 0;
  const bool by_order = contract.max_rows != 0 || contract.max_size_mb != 0;
  if ((by_age || by_order) && type != "table") {
    return fmt::format("{} is a {}", contract.table, type == "view" ? "view" : type + " table");
  }
  if (by_age && !is(2)) {
    return contract.table + " has no column time";
  }
  if (by_order && is(1)) {
    return contract.table + " has no rowids";
  }
  return by_order && is(3) ? contract.table + " has an ordinary column called rowid" : "";
}

/// Type, WITHOUT ROWID, a column "time", and a column "rowid" that is not the row's: a primary key of its own index.
common::Error AskAboutTable(TelemetryStorage& storage, const ContractView& contract, TableReport& report) {
  const std::string table = "'" + contract.table + "'";
  shared::Rows rows;
  common::Error error =
      Run(storage,
          fmt::format("SELECT type, wr, EXISTS (SELECT 1 FROM pragma_table_xinfo({0}) WHERE lower(name) = 'time'), "
                      "EXISTS (SELECT 1 FROM pragma_table_xinfo({0}) WHERE lower(name) = 'rowid' AND (pk = 0 OR EXISTS "
                      "(SELECT 1 FROM pragma_index_list({0}) WHERE origin = 'pk'))) "
                      "FROM pragma_table_list({0}) WHERE schema = 'main'",
                      table),
          &rows);
  report.missing = !error.Failed() && rows.count == 0;
  if (!error.Failed() && rows.count > 0) {
    report.problem = MisreadIn(rows[0], contract);
  }
  return error;
}

common::Error LookAtTable(TelemetryStorage& storage, const ContractView& contract, TableReport& report) {
  common::Error error = AskAboutTable(storage, contract, report);
  if (error.Failed() || report.missing) {
    return error;
  }
  std::int64_t rows = 0;
  error = Ask(storage, fmt::format("SELECT COUNT(*) FROM \"{}\"", contract.table), rows);
  if (!error.Failed()) {
    report.rows_before = rows;
  }
  return error;
}

std::string Megabytes(std::uintmax_t bytes) { return fmt::format("{:.1f} MB", static_cast<double>(bytes) / 1e6); }

/// Compaction writes what the database holds to a temporary file, and the pages that it replaces to a journal. What the
/// deletions will have freed by then is not known yet, so this asks for the most that it can take.
std::optional<Problem> LackOfRoom(TelemetryStorage& storage, const CompactionPlaces& places) {
  std::int64_t bytes = 0;
  const common::Error error = Ask(storage,
                                  "SELECT (page_count - freelist_count) * page_size "
                                  "FROM pragma_page_count, pragma_freelist_count, pragma_page_size",
                                  bytes);
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
                      Megabytes(static_cast<std::uintmax_t>(bytes)), place.string(), Megabytes(space.available)),
          {}};
    }
  }
  return std::nullopt;
}

/// SQLite opens a file that must not be written for reading, and finds out at the first change that it cannot be made.
std::optional<Problem> LackOfPermission(const fs::path& file) {
  if (!MayReadAndWrite(file)) {
    return Problem{Problem::Kind::kCannotOpen, "permission denied", {}};
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
      return ProblemOf(error, report.path);
    }
    if (!table.problem.empty() && !problem) {
      problem = Problem{Problem::Kind::kUnfit, table.problem, {}};
    }
  }
  return problem;
}

}  // namespace

DatabaseReport LookAtDatabase(const DatabaseView& database, const std::vector<ContractView>& contracts,
                              const CompactionPlaces& places) {
  DatabaseReport report{.name = database.database, .path = DatabaseFile(database, places.data), .tables = {}};
  report.bytes_before = report.bytes_after = SizeWithLog(report.path);
  for (const ContractView& contract : contracts) {
    report.tables.push_back({.table = contract.table});
  }
  TelemetryStorage storage(report.path.string().c_str(), "");
  common::Error error = storage.GetLastError();
  if (!error.Failed()) {
    report.problem = LackOfPermission(report.path);
  }
  if (!error.Failed() && !report.problem) {
    error = TryToWrite(storage);
  }
  if (error.Failed()) {
    report.problem = ProblemOf(error, report.path);
  }
  if (report.problem) {
    return report;
  }
  report.problem = LookInside(storage, contracts, report);
  if (!report.problem) {
    report.problem = LackOfRoom(storage, places);
  }
  return report;
}

fs::path DatabaseFile(const DatabaseView& database, const fs::path& directory) {
  return directory / shared::AddDatabaseExtension(database.database);
}

bool HasFile(const fs::path& file) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  return status.type() != fs::file_type::not_found;
}

void CountAfterwards(DatabaseReport& database) {
  database.bytes_after = SizeWithLog(database.path);
  TelemetryStorage storage(database.path.string().c_str(), "");
  if (storage.GetLastError().Failed()) {
    return;
  }
  for (TableReport& table : database.tables) {
    std::int64_t rows = 0;
    const common::Error error = Ask(storage, fmt::format("SELECT COUNT(*) FROM \"{}\"", table.table), rows);
    if (!error.Failed()) {
      table.rows_after = rows;
    } else if (!shared::IsMissingTable(error)) {
      return;
    }
  }
}

}  // namespace corvo::telemetry::host
