#include "host/pass/directory_run.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "common/text.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/file_problem.h"
#include "host/facts/look.h"
#include "host/pass/pass_runner.h"
#include "host/platform/platform.h"
#include "host/show/progress.h"
#include "storage/result_code.h"
#include "storage/storage_options.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

std::string FileName(const DatabaseReport& database) { return common::Utf8(database.path.filename()); }

std::vector<DatabaseReport> LookAtAll(const DirectoryRun& run, const CatalogueView& catalogue) {
  const CompactionPlaces places{run.room.empty() ? run.directory : run.room, SqliteTemporaryDirectory()};
  std::vector<DatabaseReport> reports;
  for (const DatabaseView& database : DatabasesOf(run, catalogue)) {
    if (run.show_progress) {
      ShowStep(database.database, "looking");
    }
    reports.push_back(LookAtDatabase(database, catalogue.Of(database.database), run.directory, places));
  }
  EndProgress();
  return reports;
}

constexpr const char* kNotReached = "not reached before the interruption";

/// Runs passes and keeps what they did in the reports of the databases.
class Passes {
 public:
  Passes(shared::plugin::IDynamicPluginModule& module, const DirectoryRun& run, RunReport& report)
      : module_(module), run_(run), report_(report) {}

  void RunAll() {
    for (int pass = 0; pass < run_.passes && !stopped_; ++pass) {
      run_.keep_going ? RunOneByOne() : RunTogether();
    }
  }

 private:
  using Databases = std::vector<DatabaseReport*>;

  [[nodiscard]] Databases Cleanable() const {
    Databases databases;
    for (DatabaseReport& database : report_.databases) {
      if (!database.problem) {
        databases.push_back(&database);
      }
    }
    return databases;
  }

  void RunTogether() { RunOver(Cleanable(), ""); }

  void RunOneByOne() {
    for (DatabaseReport* database : Cleanable()) {
      if (shared::StatementsInterrupted()) {
        database->problem = Problem{Problem::Kind::kInterrupted, kNotReached, {}};
      } else {
        RunOver({database}, database->name);
      }
    }
  }

  void RunOver(const Databases& databases, const std::string& name) {
    if (databases.empty()) {
      return;
    }
    shared::StorageOptions options = shared::GetStorageOptions();
    options.databases.emplace();
    for (const DatabaseReport* database : databases) {
      options.databases->insert(FileName(*database));
    }
    const shared::StorageOptionsScope narrowed(options);
    PassResult result = RunPass(module_, run_.show_progress ? databases.size() : 0);
    result.outcome.database = name;
    for (DatabaseReport* database : databases) {
      Keep(result, *database);
    }
    stopped_ = stopped_ || (result.outcome.result.Failed() && !run_.keep_going) || shared::StatementsInterrupted();
    report_.passes.push_back(std::move(result.outcome));
  }

  void Keep(const PassResult& result, DatabaseReport& database) const {
    const auto found = result.visits.find(FileName(database));
    const Visit visit = found == result.visits.end() ? Visit() : found->second;
    for (TableReport& table : database.tables) {
      if (const auto deleted = visit.tables.find(table.table); deleted != visit.tables.end()) {
        table.deleted.Add(deleted->second);
      }
      if (const auto seconds = visit.seconds.find(table.table); seconds != visit.seconds.end()) {
        table.seconds += seconds->second;
      }
    }
    database.compaction_seconds += visit.compaction_seconds;
    if (!visit.compacted || visit.failure) {
      database.problem = WhyNotCleaned(result.outcome, visit, database.path);
    } else if (!visit.left_out) {
      ++database.compactions;
      database.not_compacted.reset();
    } else if (database.compactions == 0) {
      database.not_compacted = WhyNotCompacted(*visit.left_out);
    }
  }

  [[nodiscard]] LeftOutCompaction WhyNotCompacted(const shared::LeftOutCompaction& left_out) const {
    if (left_out.reason == shared::LeftOutCompaction::Reason::kTakesTooLong) {
      const double seconds = run_.stall.SecondsFor(left_out.bytes);
      return {run_.stall.Reason(left_out.bytes), left_out.free_percent,
              seconds > 0 ? std::optional(seconds) : std::nullopt};
    }
    // Not rounded up: it is less than what was asked for.
    constexpr double kTenths = 10;
    return {fmt::format("{:.1f} % free", std::floor(left_out.free_percent * kTenths) / kTenths), left_out.free_percent};
  }

  /// A lock is told in the words of the look; the statement that met it stands in the record.
  static Problem WhyItFailed(const FailedStatement& failure) {
    common::Error record = failure.result;
    if (!shared::IsBusy(record)) {
      return {Problem::Kind::kFailed, fmt::format("{} in: {}", record.what, failure.sql), record};
    }
    record.what += " in: " + failure.sql;
    return ProblemOf(record, failure.database, Access::kReadAndWrite);
  }

  /// The module passes a database over without a word that it cannot open any more.
  static Problem WhyPassedOver(const std::filesystem::path& file) {
    constexpr const char* kPassedOver = "the module did not clean it";
    std::optional<Problem> found = LookFromOutside(file);
    if (!found) {
      return {Problem::Kind::kNotReached, kPassedOver, {}};
    }
    found->reason = fmt::format("{}: {}", kPassedOver, found->reason);
    return *std::move(found);
  }

  static Problem WhyNotCleaned(const PassOutcome& pass, const Visit& visit, const std::filesystem::path& file) {
    using Kind = Problem::Kind;
    const common::Error& record = visit.failure ? visit.failure->result : pass.result;
    if (shared::IsInterrupted(record) && shared::StatementsInterrupted()) {
      return {Kind::kInterrupted, visit.failure ? "interrupted" : kNotReached, record};
    }
    if (visit.failure) {
      return WhyItFailed(*visit.failure);
    }
    if (!pass.result.Failed()) {
      return WhyPassedOver(file);
    }
    return pass.database.empty() ? Problem{Kind::kNotReached, "the pass ended before it", record}
                                 : Problem{Kind::kFailed, "its pass failed: " + record.what, record};
  }

  shared::plugin::IDynamicPluginModule& module_;
  const DirectoryRun& run_;
  RunReport& report_;
  bool stopped_ = false;
};

}  // namespace

std::vector<DatabaseView> DatabasesOf(const DirectoryRun& run, const CatalogueView& catalogue) {
  std::vector<DatabaseView> databases;
  std::copy_if(catalogue.databases.begin(), catalogue.databases.end(), std::back_inserter(databases),
               [&run](const DatabaseView& database) {
                 const bool wanted = run.only.empty() ||
                                     std::find(run.only.begin(), run.only.end(), database.database) != run.only.end();
                 const std::filesystem::path file = DatabaseFile(database, run.directory);
                 return wanted && HasFile(file) && !IsEmpty(file);
               });
  return databases;
}

bool WasOpened(const DatabaseReport& database) {
  return !database.problem || database.problem->kind == Problem::Kind::kFailed ||
         database.problem->kind == Problem::Kind::kNotReached;
}

RunReport Run(shared::plugin::IDynamicPluginModule& module, const DirectoryRun& run) {
  RunReport report{.directory = run.directory, .directory_source = run.source, .databases = {}, .passes = {}};
  const CatalogueView catalogue = ReadCatalogue();
  report.narrowed = !run.only.empty();
  report.databases = LookAtAll(run, catalogue);
  Passes(module, run, report).RunAll();
  for (DatabaseReport& database : report.databases) {
    if (WasOpened(database)) {
      CountAfterwards(database);
    }
  }
  return report;
}

}  // namespace corvo::telemetry::host
