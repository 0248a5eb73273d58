#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/host_document.h"

namespace corvo::test {

/// How a run of the host program ended, and what it wrote.
struct HostRun {
  int exit_code;
  std::string out;
  std::string err;

  /// Standard output as one JSON document that fits its schema; throws when it is anything else.
  [[nodiscard]] nlohmann::json Json() const { return ParseHostDocument(out); }
};

/// Runs the host program and waits for its end.
///
/// @param environment NAME=value, in addition to the environment of the test.
HostRun RunHost(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {});

/// Runs the host program through another one, such as a shell: its words come first. None is the host program itself.
/// Not on Windows, where the words must be none.
HostRun RunHostThrough(const std::vector<std::string>& through, const std::vector<std::string>& arguments);

/// Runs the host program on a terminal: `out` is everything that appeared there, `err` is empty.
HostRun RunHostOnTerminal(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {});

/// Runs the host program with a standard output that takes nothing.
HostRun RunHostOnFullDisk(const std::vector<std::string>& arguments);

/// Runs the host program with standard streams that take nothing.
HostRun RunHostMute(const std::vector<std::string>& arguments);

}  // namespace corvo::test
