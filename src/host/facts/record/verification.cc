#include "host/facts/record/verification.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "host/facts/look.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

std::optional<LastRun> LastRunOf(const std::string& database, const std::vector<RunRecord>& history) {
  std::optional<LastRun> last;
  for (const RunRecord& run : history) {
    for (const DatabaseRecord& record : run.databases) {
      if (record.name == database) {
        last = LastRun{run.start, record, run.compaction_optional};
      }
    }
  }
  return last;
}

void JudgeLastRun(DatabaseCheck& check) {
  if (!check.run) {
    return;
  }
  const std::string& reason = check.run->database.problem;
  check.outcomes.Set(Promise::kCleaned, reason.empty() ? Outcome::kKept : Outcome::kBroken);
  if (!reason.empty()) {
    check.breaches.push_back({.promise = Promise::kCleaned, .reason = reason});
  }
}

/// The file has gone since, with the rows that the run left in it.
void JudgeMissingFile(DatabaseCheck& check) {
  std::int64_t rows = 0;
  for (const TableRecord& table : check.run->database.tables) {
    rows += table.rows_after.value_or(0);
  }
  if (rows > 0) {
    check.outcomes.Set(Promise::kNothingLost, Outcome::kBroken);
    check.breaches.push_back({.promise = Promise::kNothingLost, .number = rows, .allowed = rows, .all_gone = true});
  }
}

DatabaseCheck CheckDatabase(const DatabaseView& view, std::optional<LastRun> run, const CatalogueView& catalogue,
                            const fs::path& directory, std::int64_t now) {
  DatabaseCheck check{.name = view.database, .path = DatabaseFile(view, directory), .run = std::move(run)};
  if (!HasFile(check.path)) {
    JudgeMissingFile(check);
    return check;
  }
  for (const Promise promise : kPromises) {
    check.outcomes.Set(promise, Outcome::kUnknown);
  }
  JudgeLastRun(check);
  CheckContent(check, catalogue.Of(view.database), now);
  return check;
}

}  // namespace

bool Verification::AnythingBroken() const {
  return std::any_of(databases.begin(), databases.end(),
                     [](const DatabaseCheck& each) { return !each.breaches.empty(); });
}

bool Verification::IsComplete() const {
  return history_problem.empty() && std::none_of(databases.begin(), databases.end(),
                                                 [](const DatabaseCheck& each) { return each.problem.has_value(); });
}

Verification Verify(const fs::path& directory, const std::string& source, const std::vector<std::string>& only,
                    std::int64_t now) {
  Verification verification{.directory = directory, .directory_source = source, .now = now};
  std::vector<RunRecord> history;
  try {
    history = ReadHistory(directory);
  } catch (const std::runtime_error& failure) {
    verification.history_problem = failure.what();
  }
  const CatalogueView catalogue = ReadCatalogue();
  for (const DatabaseView& view : catalogue.databases) {
    const bool wanted = only.empty() || std::find(only.begin(), only.end(), view.database) != only.end();
    std::optional<LastRun> run = LastRunOf(view.database, history);
    const std::filesystem::path file = DatabaseFile(view, directory);
    if (!wanted || (!run && (!HasFile(file) || IsEmpty(file)))) {
      continue;
    }
    verification.databases.push_back(CheckDatabase(view, std::move(run), catalogue, directory, now));
  }
  return verification;
}

}  // namespace corvo::telemetry::host
