#include <ctime>
#include <memory>

#include "host/cli/commands.h"
#include "host/cli/words/common_options.h"
#include "host/cli/words/option_values.h"
#include "host/facts/record/verification.h"
#include "host/platform/platform.h"
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
    "  NONE TOO OLD   no row is older than its table's limit allowed when the run began\n"
    "  WITHIN LIMITS  no table has more rows than a run leaves: its row limit less 10 percent\n"
    "  NOTHING LOST   no row is gone that no rule named\n"
    "ok: it is so; BROKEN: it is not; ?: it cannot be told; -: there is no such limit. NEW ROWS came in since the run\n"
    "and count for no limit. Not meant for while a run is at work. Ends with code 3 when a promise is broken.\n";

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
  const Interruptions interruptions;
  shared::StorageOptions storage = ReadOnlyOptionsOf(options.bounds, directory.path);
  storage.check_soundness = true;
  const shared::StorageOptionsScope reading(storage);
  const Verification verification = Verify(directory.path, directory.origin, options.databases, std::time(nullptr));
  RequireNoInterruption();
  Print(json ? VerifyDocument(verification) : VerifyText(verification, UsesColour(stdout)));
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
  command.footer(std::string(kFooter) + kExitCodes);
  return [options](bool json) { return Show(*options, json); };
}

}  // namespace corvo::telemetry::host
