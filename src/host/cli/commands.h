#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/show/failure.h"

namespace corvo::telemetry::host {

// What the command line asks for, one function a command. Each writes its answer to standard output.

struct GenerateOptions {
  std::string data_dir;  ///< a plain name, also when it looks like a URI
  std::uint64_t seed = 1;
  double scale = 1;
  std::uint32_t days = 0;  ///< 0: as far back as each table's retention asks for
  std::string now;         ///< day, empty for today
  bool force = false;      ///< replaces the catalogue's databases
  bool json = false;
};

/// `generate`: writes databases that give a pass something to do, all of them or none.
///
/// @throws CommandFailure (`kUsage`) when the directory cannot be made, holds databases already, or holds something
/// that is no ordinary file under the name of one; (`kPassFailed`) when the databases cannot be written. Then nothing
/// that was begun is left, and what was to be replaced is as it was.
ExitCode GenerateCommand(const GenerateOptions& options);

struct RunOptions {
  std::string data_dir;  ///< empty: the environment's, else the platform's
  std::string plugin;    ///< empty: the module that belongs to the program
  int passes = 1;
  std::vector<std::string> databases;  ///< the only ones to clean, as the catalogue spells them; empty: all
  bool keep_going = false;             ///< each database in a pass of its own, so that no failure stops the others
  int wait_s = 0;                      ///< longest wait for the end of another run of the same directory
  bool trust_directory = false;        ///< also when others than this user may write there
  bool json = false;
  bool quiet = false;     ///< nothing but failures on standard error, and no table
  std::string log_level;  ///< empty: the default
  std::string log_file;   ///< empty: standard error

  // Bounds for files that anybody may have written; 0 is without bound, and does not wait for a lock.
  int time_limit_s = 600;     ///< of one statement
  int memory_limit_mb = 512;  ///< that SQLite may hold, in units of 1,000,000 bytes
  int busy_timeout_s = 5;     ///< of one wait for a lock
};

/// `run`: lets the module clean the databases of a directory and shows what changed.
///
/// @return `kDone`, or `kPassFailed` when the module's record says so.
/// @throws CommandFailure when a pass cannot begin.
ExitCode RunCommand(const RunOptions& options);

/// `contracts`: shows the catalogue, as a table or as JSON.
ExitCode ContractsCommand(bool json);

}  // namespace corvo::telemetry::host
