#include "host/pass/plan.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <system_error>

#include "common/text.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/file_problem.h"
#include "host/facts/look.h"
#include "host/pass/copy_folder.h"
#include "host/pass/kept_options.h"
#include "host/platform/platform.h"
#include "host/show/failure.h"
#include "host/show/progress.h"
#include "host/show/units.h"
#include "storage/result_code.h"
#include "storage/storage_options.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

/// A database of the directory that is to be planned for.
struct Original {
  DatabaseView view;
  fs::path file;
  std::int64_t bytes = 0;
  std::optional<Problem> problem = {};  ///< why there is no copy of it
};

std::vector<Original> FindOriginals(const DirectoryRun& run, const CatalogueView& catalogue) {
  std::vector<Original> originals;
  for (const DatabaseView& database : DatabasesOf(run, catalogue)) {
    const fs::path file = DatabaseFile(database, run.directory);
    originals.push_back({database, file, SizeWithLog(file)});
  }
  return originals;
}

/// Each copy, and twice the largest: what is compacted is written once more, and what that replaces to a journal.
void RequireRoom(const std::vector<Original>& originals, const fs::path& place) {
  std::int64_t needed = 0;
  std::int64_t largest = 0;
  for (const Original& original : originals) {
    needed += original.bytes;
    largest = std::max(largest, original.bytes);
  }
  needed += 2 * largest;
  std::error_code unknown;
  const fs::space_info space = fs::space(place, unknown);
  if (!unknown && space.available < static_cast<std::uintmax_t>(needed)) {
    throw CommandFailure(
        kPassFailed,
        fmt::format("no room to plan: copies of the databases need up to {} in {}, {} are free; free some space, or "
                    "name another place with the environment variable SQLITE_TMPDIR",
                    HumanBytes(needed), common::Utf8(place), HumanBytes(static_cast<std::int64_t>(space.available))));
  }
}

/// Size and time of last change of a database and its side files; what is not there is nothing.
using FileStates = std::array<std::pair<std::uintmax_t, fs::file_time_type>, 3>;
constexpr std::array kFilesOfADatabase = {"", "-journal", "-wal"};

fs::path WithSuffix(const fs::path& file, const char* suffix) {
  fs::path named = file;
  named += suffix;
  return named;
}

FileStates StatesOf(const fs::path& file) {
  FileStates states;
  for (std::size_t index = 0; index < kFilesOfADatabase.size(); ++index) {
    const fs::path part = WithSuffix(file, kFilesOfADatabase.at(index));
    std::error_code missing;
    states.at(index) = {fs::file_size(part, missing), fs::last_write_time(part, missing)};
  }
  return states;
}

/// A program that died in the middle of a transaction has left a journal, which only who may write can undo. So this is
/// left to the copy, made file by file while nobody changes any of them.
common::Error CopyFiles(const fs::path& from, const fs::path& to, const common::Error& failure) {
  const FileStates before = StatesOf(from);
  for (const char* suffix : kFilesOfADatabase) {
    const fs::path part = WithSuffix(from, suffix);
    const fs::path copy = WithSuffix(to, suffix);
    std::error_code error;
    if (fs::is_regular_file(fs::symlink_status(part, error))) {
      fs::copy_file(part, copy, fs::copy_options::overwrite_existing, error);
      fs::permissions(copy, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::add, error);
    }
    if (error && error != std::errc::no_such_file_or_directory) {
      return failure;
    }
  }
  return StatesOf(from) == before ? common::Error() : failure;
}

/// The size of a file counts for the size limit, and it can be longer than its pages. With a log, it is not yet what it
/// will be.
void Stretch(const fs::path& copy, const fs::path& original) {
  std::error_code gone;
  const std::uintmax_t bytes = fs::file_size(original, gone);
  const bool has_log = !gone && SizeWithLog(original) != static_cast<std::int64_t>(bytes);
  if (!gone && !has_log && fs::file_size(copy) < bytes) {
    fs::resize_file(copy, bytes);
  }
}

common::Error Copy(const fs::path& from, const fs::path& to) {
  common::Error error;
  {
    shared::TelemetryStorage storage(from.string().c_str(), "");
    error = storage.CopyTo(common::Utf8(to).c_str());
  }
  if (shared::IsReadOnly(error) || shared::IsCannotOpen(error)) {
    return CopyFiles(RealPath(from), to, error);
  }
  if (!error.Failed()) {
    Stretch(to, RealPath(from));
  }
  return error;
}

/// The run would meet the same failures, but for those of writing the copy.
Problem WhyNoCopy(const common::Error& error, const fs::path& file) {
  using Kind = Problem::Kind;
  if (shared::IsFull(error) || shared::IsIoError(error)) {
    return {shared::IsFull(error) ? Kind::kNoRoom : Kind::kUnfit, "it cannot be copied: " + error.what, error};
  }
  return ProblemOf(error, file, Access::kReadAndWrite);
}

void CopyAll(std::vector<Original>& originals, const fs::path& place, bool show_progress) {
  shared::StorageOptions options = shared::GetStorageOptions();
  options.read_only = true;
  options.check_soundness = false;
  const shared::StorageOptionsScope reading(options);
  for (Original& original : originals) {
    if (show_progress) {
      ShowStep(original.view.database, "copying");
    }
    original.problem = LookFromOutside(original.file);
    if (!original.problem) {
      if (const common::Error error = Copy(original.file, place / original.file.filename()); error.Failed()) {
        original.problem = WhyNoCopy(error, original.file);
      }
    }
    if (original.problem) {
      std::error_code ignored;
      fs::remove(place / original.file.filename(), ignored);
    }
  }
  EndProgress();
}

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

/// The report of a run on copies as that of a run on the databases themselves.
class OfOriginals {
 public:
  OfOriginals(fs::path copies, fs::path directory) : copies_(std::move(copies)), directory_(std::move(directory)) {}

  void Apply(RunReport& report) const {
    report.directory = directory_;
    for (DatabaseReport& database : report.databases) {
      database.path = directory_ / database.path.filename();
      if (database.problem) {
        Apply(database.problem->reason);
        Apply(database.problem->record);
      }
    }
    for (PassOutcome& pass : report.passes) {
      Apply(pass.result);
      if (pass.failure) {
        Apply(pass.failure->database);
        Apply(pass.failure->result);
      }
    }
  }

 private:
  void Apply(std::string& text) const { text = Replaced(text, common::Utf8(copies_), common::Utf8(directory_)); }
  void Apply(common::Error& record) const { Apply(record.what); }

  fs::path copies_;
  fs::path directory_;
};

DatabaseReport ReportWithoutCopy(const Original& original, const CatalogueView& catalogue) {
  DatabaseReport report{.name = original.view.database, .path = original.file, .tables = {}};
  for (const ContractView& contract : catalogue.Of(original.view.database)) {
    report.tables.push_back({.table = contract.table});
  }
  report.problem = original.problem;
  return report;
}

/// In catalogue order, those that could not be copied in their places.
void Complete(RunReport& report, const std::vector<Original>& originals, const CatalogueView& catalogue) {
  std::vector<DatabaseReport> all;
  for (const Original& original : originals) {
    const auto found =
        std::find_if(report.databases.begin(), report.databases.end(),
                     [&original](const DatabaseReport& each) { return each.name == original.view.database; });
    all.push_back(found != report.databases.end() ? std::move(*found) : ReportWithoutCopy(original, catalogue));
    all.back().bytes_before = original.bytes;
    if (!WasOpened(all.back())) {
      all.back().bytes_after = original.bytes;
    }
  }
  report.databases = std::move(all);
}

CopyFolder MakePlace(const fs::path& place) {
  try {
    return CopyFolder(place);
  } catch (const std::runtime_error& failure) {
    throw CommandFailure(kPassFailed, fmt::format("cannot plan: {}; name another place with the environment variable "
                                                  "SQLITE_TMPDIR",
                                                  failure.what()));
  }
}

}  // namespace

RunReport Plan(shared::plugin::IDynamicPluginModule& module, const DirectoryRun& run) {
  const CatalogueView catalogue = ReadCatalogue();
  std::vector<Original> originals = FindOriginals(run, catalogue);
  const fs::path temporary = SqliteTemporaryDirectory();
  RemoveAbandonedCopies(temporary);
  RequireRoom(originals, temporary);
  const CopyFolder place = MakePlace(temporary);
  CopyAll(originals, place.Path(), run.show_progress);

  shared::StorageOptions options = shared::GetStorageOptions();
  options.data_directory = place.Path().string();
  const shared::StorageOptionsScope copies(options);
  DirectoryRun inner = run;
  inner.directory = place.Path();
  inner.room = run.directory;
  const KeptOptions kept;
  RunReport report = Run(module, inner);
  for (DatabaseReport& database : report.databases) {
    FindOldest(database);
  }
  OfOriginals(place.Path(), run.directory).Apply(report);
  Complete(report, originals, catalogue);
  report.planned = true;
  return report;
}

}  // namespace corvo::telemetry::host
