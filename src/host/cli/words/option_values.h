#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvo::telemetry::host {

// Options whose values are read exactly: what is no value of the kind, or out of range, is refused and never rounded,
// wrapped or cut. The variables must outlive the parsing; a value they hold before is the default.

/// What an option is called, takes and means, for its help.
struct OptionText {
  const char* name;  ///< with its dashes
  const char* type;  ///< what to put in, in capitals
  std::string description;
};

/// An option that takes any text.
CLI::Option& AddText(CLI::App& command, const OptionText& text, std::string& value);

/// An option that takes one of the choices. A default is shown.
CLI::Option& AddChoice(CLI::App& command, const OptionText& text, std::string& value,
                       const std::vector<std::string>& choices);

/// An option that may be there several times and takes the name of a database of the catalogue each time, in any case
/// and with or without its file's extension.
CLI::Option& AddDatabases(CLI::App& command, const OptionText& text, std::vector<std::string>& values);

/// A word that names a table of the catalogue by its place, in any case; the command needs it.
CLI::Option& AddTable(CLI::App& command, const OptionText& text, std::string& value);

/// An option that takes a number within a range, which is added to the description. A default that lies in the range is
/// shown.
///
/// @tparam Number int, std::uint32_t, std::uint64_t or double.
template <class Number>
CLI::Option& AddNumber(CLI::App& command, const OptionText& text, Number& value, Number lowest, Number highest);

/// As above, for a number that may be left out.
CLI::Option& AddNumber(CLI::App& command, const OptionText& text, std::optional<double>& value, double lowest,
                       double highest);

/// An option that may be there several times and takes any whole number of 64 bits each time.
CLI::Option& AddNumbers(CLI::App& command, const OptionText& text, std::vector<std::int64_t>& values);

}  // namespace corvo::telemetry::host
