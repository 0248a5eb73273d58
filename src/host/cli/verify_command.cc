#include <fmt/core.h>

#include <ctime>
#include <memory>

#include "common/text.h"
#include "host/cli/commands.h"
#include "host/cli/words/common_options.h"
#include "host/cli/words/help_text.h"
#include "host/cli/words/option_values.h"
#include "host/facts/record/verification.h"
#include "host/platform/instance_lock.h"
#include "host/platform/platform.h"
#include "host/show/standard_error.h"
#include "host/show/standard_output.h"
#include "host/show/verify/verify_json.h"
#include "host/show/verify/verify_text.h"

namespace corvo::telemetry::host {
namespace {

constexpr const char* kFooter =
    "What a run promises of each database:\n"
    "  CLEANED        every statement of the run succeeded\n"
    "  SOUND          the file is not damaged\n"
    "  NO FREE PAGES  what was deleted has been given back\n"
    "  NONE TOO OLD   no row was older than its table allows when the run began\n"
    "  WITHIN LIMITS  no table has more rows than its row limit less 10 percent\n"
    "  NOTHING LOST   no row is gone that no rule named\n"
    "ok: it is so; BROKEN: it is not; not yet: it is not, and no run is on record; ?: it cannot be told; -: nothing is "
    "promised, as there is no such limit or compaction was left out. NEW ROWS came in since the run "
    "and count for no limit. While a run is at work, what it has not finished can look broken; standard error then "
    "names the run. Ends with code 3 when a promise is broken, or, "
    "before the first run, when rows are beyond a limit.\n";

struct VerifyOptions {
  std::string data_dir;
  std::vector<std::string> databases;
  Bounds bounds;
};

ExitCode ExitCodeOf(const Verification& verification) {
  if (verification.AnythingBroken()) {
    return kFindings;
  }
  return verification.IsComplete() ? kDone : kPassFailed;
}

ExitCode Show(const VerifyOptions& options, bool json) {
  const DataDirectory directory = RequireDataDirectory(options.data_dir);
  const std::string run_at_work = InstanceLock::WhoHolds(directory.path);
  const Interruptions interruptions;
  shared::StorageOptions storage = ReadOnlyOptionsOf(options.bounds, directory.path);
  storage.check_soundness = true;
  const shared::StorageOptionsScope reading(storage);
  const Verification verification = Verify(directory.path, directory.origin, options.databases, std::time(nullptr));
  RequireNoInterruption();
  Print(json ? VerifyDocument(verification) : VerifyText(verification, OutputWidth(), UsesColour(stdout)));
  if (!run_at_work.empty()) {
    Tell(
        fmt::format("a run is at work in {}: {}; what it has not finished can look broken, so verify again when it "
                    "has ended",
                    common::Utf8(directory.path), run_at_work));
  }
  return ExitCodeOf(verification);
}

}  // namespace

Action AddVerify(CLI::App& app) {
  CLI::App& command = *app.add_subcommand("verify", "Check that the last run did what it promises, and nothing else");
  const auto options = std::make_shared<VerifyOptions>();
  AddDataDirectory(command, options->data_dir);
  AddDatabases(command, {"--database", "NAME", "Look at this database alone; several times for several"},
               options->databases);
  AddBounds(command, options->bounds);
  SetHelp(command,
          {{"verify --data-dir try", "whether what the last run promised holds"},
           {"verify --data-dir try --database HealthLog", "of one database"}},
          kFooter);
  return [options](bool json) { return Show(*options, json); };
}

}  // namespace corvo::telemetry::host
