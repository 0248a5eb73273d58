#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <string>

#include "host/show/failure.h"

namespace corvo::telemetry::host {

// What the command line offers, one file a command. Each adds its command to the app, with options and help, and gives
// what runs it once the command line has been parsed. A command writes its answer to standard output and fails with a
// `CommandFailure`.

/// @param json whether the answer is one JSON document instead of a text.
using Action = std::function<ExitCode(bool json)>;

/// `generate`: writes databases that give a pass something to do, and goes on writing to them when asked to.
[[nodiscard]] Action AddGenerate(CLI::App& app);

/// `run`: lets the module clean the databases of a directory and shows what changed.
[[nodiscard]] Action AddRun(CLI::App& app);

/// `plan`: shows what `run` would do now, and changes nothing.
[[nodiscard]] Action AddPlan(CLI::App& app);

/// `verify`: holds the databases against what their last run has promised.
[[nodiscard]] Action AddVerify(CLI::App& app);

/// `history`: shows the last runs of a directory.
[[nodiscard]] Action AddHistory(CLI::App& app);

/// `explain`: shows what the limits of one table are and do, or what becomes of one of its rows.
[[nodiscard]] Action AddExplain(CLI::App& app);

/// `report`: writes one self-contained page on the directory, a plan or the last run.
[[nodiscard]] Action AddReport(CLI::App& app);

/// `print`: shows rows of a table.
[[nodiscard]] Action AddPrint(CLI::App& app);

/// `contracts`: shows the catalogue, or what is doubtful in it.
[[nodiscard]] Action AddContracts(CLI::App& app);

/// `status`: shows how databases and tables stand against their limits, and changes nothing.
[[nodiscard]] Action AddStatus(CLI::App& app);

inline constexpr const char* kJsonText = "Write one JSON document to standard output, whatever happens";
inline constexpr const char* kNoColorText = "Use no colour; nor is any used with the environment variable NO_COLOR";

struct GenerateOptions {
  std::string data_dir;  ///< a plain name, also when it looks like a URI
  std::uint64_t seed = 1;
  double scale = 1;
  std::uint32_t days = 0;  ///< 0: as far back as each table's retention asks for
  std::string now;         ///< day, empty for today
  bool force = false;      ///< replaces the catalogue's databases
  int live_s = 0;          ///< how long to add rows afterwards; 0: not at all
  int rate = 50;           ///< rows to add a second, over all tables
  bool json = false;
};

/// Writes databases that give a pass something to do, all of them or none. Then adds rows to them when that is asked
/// for; to those that are there, if there are any and they are not to be replaced. Gives the exit code of the signal
/// that ends it early, and `kPassFailed` when a database could not be added to.
///
/// @throws CommandFailure (`kUsage`) when the directory cannot be made, holds databases already, or holds something
/// that is no ordinary file under the name of one; (`kPassFailed`) when the databases cannot be written. Then nothing
/// that was begun is left, and what was to be replaced is as it was.
ExitCode GenerateCommand(const GenerateOptions& options);

}  // namespace corvo::telemetry::host
