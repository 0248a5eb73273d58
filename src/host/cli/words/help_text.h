#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace corvo::telemetry::host {

/// A command line that can be copied as it stands.
struct Example {
  const char* words;  ///< without the program's name
  std::string use;    ///< what it is good for
};

/// Gives a command, or the program, its help: what it does, examples, how it is called, what its words and options
/// mean, the footer, and the exit codes; no line is wider than 80 columns.
///
/// @param footer lines, each of any length; empty for none.
void SetHelp(CLI::App& command, const std::vector<Example>& examples, const std::string& footer);

}  // namespace corvo::telemetry::host
