#include <fmt/core.h>
#include <fmt/format.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/cli/loss_limit.h"
#include "host/cli/output_place.h"
#include "host/cli/words/common_options.h"
#include "host/cli/words/help_text.h"
#include "host/cli/words/option_values.h"
#include "host/cli/words/wrong_usage.h"
#include "host/facts/record/history.h"
#include "host/pass/directory_run.h"
#include "host/pass/loaded_module.h"
#include "host/pass/logging.h"
#include "host/pass/plan.h"
#include "host/platform/instance_lock.h"
#include "host/platform/platform.h"
#include "host/platform/trust.h"
#include "host/show/run/run_json.h"
#include "host/show/run/run_text.h"
#include "host/show/standard_error.h"
#include "host/show/standard_output.h"
#include "host/show/units.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

struct RunOptions {
  std::string data_dir;  ///< empty: the environment's, else the platform's
  std::string plugin;    ///< empty: the module that belongs to the program
  int passes = 1;
  std::vector<std::string> databases;  ///< the only ones to clean, as the catalogue spells them; empty: all
  bool keep_going = false;             ///< each database in a pass of its own, so that no failure stops the others
  bool dry_run = false;                ///< on copies
  double compact_when_free = 0;        ///< in percent; 0: always
  std::optional<double> max_stall;     ///< of a compaction, in seconds
  bool exit_code = false;              ///< a plan that would delete something is a finding
  std::optional<double> max_loss;      ///< in percent of a table's rows
  bool force = false;                  ///< whatever the loss
  int wait_s = 0;                      ///< longest wait for the end of another run of the same directory
  bool trust_directory = false;        ///< also when others than this user may write there
  bool quiet = false;                  ///< failures and warnings alone, on standard error, and no table
  std::string log_level;               ///< empty: the default
  std::string log_file;                ///< empty: standard error
  Bounds bounds;
};

void AddWhatToClean(CLI::App& command, RunOptions& options) {
  AddDataDirectory(command, options.data_dir);
  AddDatabases(command, {"--database", "NAME", "Take this database alone; several times for several"},
               options.databases);
  AddText(command, {"--plugin", "FILE", "Module to load; the one that belongs to this program when not given"},
          options.plugin);
  AddNumber(command, {"--passes", "NUMBER", "Number of passes, one after the other in this process"}, options.passes, 1,
            1'000'000);
  command.add_flag("--keep-going", options.keep_going,
                   "Take each database on its own: when one fails, the others still get their turn");
  AddNumber(command, {"--compact-when-free", "PERCENT", "Compact only where at least this share of the file is free"},
            options.compact_when_free, 0.0, 100.0);
  AddNumber(command,
            {"--max-stall", "SECONDS", "Leave out a compaction that would take longer; 0: each one; not given: none"},
            options.max_stall, 0.0, 86'400.0);
  command.add_flag("--exit-code", options.exit_code,
                   "Of a plan: end with code 3 when something would be deleted, 0 when nothing would");
}

void AddCaution(CLI::App& command, RunOptions& options) {
  command.add_flag("--dry-run", options.dry_run, "Only show what the run would do, as plan does");
  AddNumber(
      command,
      {"--max-loss", "PERCENT", "Plan first, and delete nothing if a table would lose more of its rows than that"},
      options.max_loss, 0.0, 100.0);
  command.add_flag("--force", options.force, "Clean, whatever --max-loss says");
  command.add_flag("--trust-directory", options.trust_directory,
                   "Clean as a privileged user where others may write, too");
  AddNumber(command, {"--wait", "SECONDS", "Longest wait for the end of another run of the same directory"},
            options.wait_s, 0, 86'400);
}

void AddWhatToTell(CLI::App& command, RunOptions& options) {
  command.add_flag("--quiet", options.quiet, "Tell only of failures and warnings, on standard error");
  AddChoice(command,
            {"--log-level", "LEVEL", fmt::format("Most talkative records to log: {}", fmt::join(LogLevels(), ", "))},
            options.log_level, LogLevels());
  AddText(command, {"--log-file", "FILE", "File to log to instead of standard error"}, options.log_file);
}

/// What `run` and `plan` have in common.
std::string Notes() {
  return fmt::format(
      "With several passes the counts are those before the first and after the last; a pass that fails is the last. "
      "Sizes are those of the files with their write-ahead logs. The log level is {} when none is given: errors "
      "without the missing tables that every pass forgives; for a file it is {}.\n",
      kDefaultLogLevel, kDefaultLogFileLevel);
}

constexpr const char* kCompactionNote =
    "Compaction writes a database anew without what is free in it, and keeps others from writing meanwhile. Where "
    "--compact-when-free or --max-stall leave it out, the file stays as large as it is. What was trimmed for its size "
    "limit is always compacted. The first run with --max-stall compacts a sample of 8 MB to see how long it takes.\n";

constexpr const char* kExitCodeNote =
    "With --exit-code: 3 when something would be deleted, 0 when nothing would; 1 when a database cannot be planned "
    "for, such as a damaged or a locked one, whatever the others would lose.\n";

constexpr const char* kPlanNote =
    "Each database is copied, and the copies are cleaned. They lie in a folder of their own in SQLite's directory for "
    "temporary files (the environment variable SQLITE_TMPDIR, else the system's) and are removed at the end. Those of "
    "a plan that was killed are removed by the next one.\n";

void WarnOfMissingLocale() {
  if (const std::string hint = MissingLocaleHint(); !hint.empty()) {
    Tell(hint);
  }
}

/// Who may write to the directory can have a privileged user delete from any file.
void RequireTrust(const fs::path& directory, bool trusted) {
  const std::string others = trusted || !IsPrivileged() ? "" : WhoElseMayWrite(directory);
  if (!others.empty()) {
    throw CommandFailure(kNoDataDirectory,
                         fmt::format("the data directory is not safe for a privileged user: {}; see to it that nobody "
                                     "else owns or may write it, or say --trust-directory",
                                     others));
  }
}

InstanceLock TakeLock(const fs::path& directory, int wait_s) {
  std::string holder;
  try {
    auto lock = InstanceLock::Wait(directory, std::chrono::seconds(wait_s), &shared::StatementsInterrupted, holder);
    if (lock) {
      return *std::move(lock);
    }
  } catch (const std::runtime_error& failure) {
    throw CommandFailure(kNoDataDirectory,
                         fmt::format("no run can begin in {}: {}", common::Utf8(directory), failure.what()));
  }
  if (const int signal = InterruptionScope::Signal(); signal != 0) {
    throw CommandFailure(InterruptedBy(signal), "interrupted while another run was waited for: " + holder);
  }
  const std::string what_to_do = wait_s == 0 ? "wait for its end with --wait SECONDS"
                                             : fmt::format("it did not end within {}", Counted(wait_s, "second"));
  throw CommandFailure(kAnotherRun,
                       fmt::format("another run cleans {}: {}; {}", common::Utf8(directory), holder, what_to_do));
}

bool AllIsWell(const RunReport& report) {
  return !report.Result().Failed() && report.Cleaned() == report.databases.size();
}

ExitCode ExitCodeOf(const RunReport& report, const RunOptions& options) {
  if (report.signal != 0) {
    return InterruptedBy(report.signal);
  }
  if (!AllIsWell(report)) {
    return kPassFailed;
  }
  return options.dry_run && options.exit_code && report.RowsDeleted() > 0 ? kFindings : kDone;
}

/// Another run may need it; it is not worth failing for.
void Remember(RunRecord record, const fs::path& directory) {
  try {
    record.end = std::time(nullptr);
    AddToHistory(directory, record);
  } catch (const std::runtime_error& failure) {
    Tell(fmt::format("this run is missing from the history: {}", failure.what()));
  }
}

/// One use of the module on a directory.
class Work {
 public:
  Work(const RunOptions& options, const DataDirectory& directory)
      : options_(options),
        log_(options.log_level,
             options.log_file.empty() ? fs::path() : RequireLogPlace(options.log_file, directory.path)),
        module_(options.plugin.empty() ? DefaultModulePath() : fs::path(options.plugin)),
        run_{.directory = directory.path,
             .source = directory.origin,
             .only = options.databases,
             .passes = options.passes,
             .keep_going = options.keep_going,
             .show_progress = IsTerminal(stderr) && !options.quiet} {
    WarnOfMissingLocale();
  }

  RunReport Foresee() {
    const shared::StorageOptionsScope storage(MakeStorageOptions());
    return Signed(Plan(module_.Module(), run_));
  }

  RunReport CleanUp() {
    const InstanceLock lock = TakeLock(run_.directory, options_.wait_s);
    if (options_.max_loss && !options_.force) {
      const RunReport plan = Foresee();
      RequireNoInterruption();
      RequireLittleLoss(plan, *options_.max_loss);
    }
    const shared::StorageOptionsScope storage(MakeStorageOptions());
    const std::int64_t start = std::time(nullptr);
    RunReport report = Signed(Run(module_.Module(), run_));
    if (!report.databases.empty()) {
      RunRecord record = RecordOf(report);
      record.start = start;
      record.compaction_rate = run_.stall.tried;
      record.compaction_optional = options_.compact_when_free > 0 || options_.max_stall;
      Remember(std::move(record), report.directory);
    }
    return report;
  }

 private:
  shared::StorageOptions MakeStorageOptions() {
    shared::StorageOptions storage = StorageOptionsOf(options_.bounds, run_.directory);
    storage.compact_when_free = options_.compact_when_free;
    if (options_.max_stall) {
      FindStallLimitOnce(*options_.max_stall);
      storage.compaction_limit = run_.stall.Bytes();
    }
    return storage;
  }

  void FindStallLimitOnce(double seconds) {
    const bool nothing_to_do = DatabasesOf(run_, ReadCatalogue()).empty();
    if (run_.stall.seconds == 0 && !nothing_to_do) {
      run_.stall = FindStallLimit(seconds, run_.directory);
      RequireNoInterruption();
    }
  }

  static RunReport Signed(RunReport report) {
    report.signal = InterruptionScope::Signal();
    return report;
  }

  const RunOptions& options_;
  const LogScope log_;
  LoadedModule module_;
  const Interruptions interruptions_;
  DirectoryRun run_;
};

ExitCode Clean(const RunOptions& options, bool json) {
  if (options.exit_code && !options.dry_run) {
    WrongUsage("--exit-code tells of a plan: use plan, or --dry-run with it");
  }
  if (options.dry_run && options.max_loss) {
    WrongUsage("--max-loss plans before it cleans, and --dry-run does not clean");
  }
  const DataDirectory directory = RequireDataDirectory(options.data_dir);
  if (!options.dry_run) {
    RequireTrust(directory.path, options.trust_directory);
  }
  Work work(options, directory);
  const RunReport report = options.dry_run ? work.Foresee() : work.CleanUp();
  const ExitCode code = ExitCodeOf(report, options);
  if (json) {
    Print(RunDocument(report));
  } else if (!options.quiet) {
    Print(RunText(report, UsesColour(stdout), IsTerminal(stdout) ? TerminalWidth(stdout) : 0));
  } else if (report.signal != 0 || !AllIsWell(report)) {
    for (const std::string& line : Failures(report)) {
      Tell(line);
    }
  }
  return code;
}

Action AddTo(CLI::App& command, const std::shared_ptr<RunOptions>& options) {
  AddWhatToTell(command, *options);
  AddBounds(command, options->bounds);
  return [options](bool json) { return Clean(*options, json); };
}

}  // namespace

Action AddRun(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("run", "Clean the databases of a directory and show what changed");
  const auto options = std::make_shared<RunOptions>();
  AddWhatToClean(command, *options);
  AddCaution(command, *options);
  SetHelp(command,
          {{"run --data-dir try", "clean all databases"},
           {"run --data-dir try --database HealthLog --json", "one of them, for a program"},
           {"run --data-dir try --max-loss 50", "nothing at all, if a table would lose more than half of its rows"},
           {"run --data-dir try --compact-when-free 20", "without writing all of a file anew for little"},
           {"run --data-dir try --keep-going --quiet", "for a nightly job: tells of failures only"}},
          Notes() + kCompactionNote + kExitCodeNote);
  return AddTo(command, options);
}

Action AddPlan(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("plan", "Show what a run would do now, and change nothing");
  const auto options = std::make_shared<RunOptions>();
  options->dry_run = true;
  AddWhatToClean(command, *options);
  SetHelp(command,
          {{"plan --data-dir try", "what a run would delete now"},
           {"plan --data-dir try --database HealthLog", "from one database"},
           {"plan --data-dir try --exit-code --quiet", "for scripts: exit code 3 when something would go"}},
          kPlanNote + Notes() + kCompactionNote + kExitCodeNote);
  return AddTo(command, options);
}

}  // namespace corvo::telemetry::host
