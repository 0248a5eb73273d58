#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace corvo::telemetry::host {

/// Looks at the words of a command line before they are parsed. Afterwards each word is a command, an option that its
/// command has, the one value of such an option, or a word that the command takes by its place; no value is empty or
/// looks like an option, and no option that takes one value is there twice.
///
/// The parser alone would tell of a missing command before it told of a misspelled one, and would take the next option
/// for a missing value.
///
/// @param words without the program's name.
/// @throws CommandFailure (`kUsage`) that names the first word that is wrong and what was probably meant.
void CheckWords(const CLI::App& app, const std::vector<std::string>& words);

/// The names of the app's commands, with ", " between them.
[[nodiscard]] std::string CommandNames(const CLI::App& app);

}  // namespace corvo::telemetry::host
