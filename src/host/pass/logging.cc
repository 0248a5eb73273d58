#include "host/pass/logging.h"

#include <fmt/core.h>
#include <plog/Appenders/ConsoleAppender.h>
#include <plog/Appenders/RollingFileAppender.h>
#include <plog/Formatters/TxtFormatter.h>

#include <algorithm>
#include <fstream>

#include "common/log.h"
#include "host/pass/progress.h"
#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kLogFileBytes = 5'000'000;
constexpr int kLogFiles = 3;

/// Severity and text: what a person at the terminal needs.
class ShortFormatter {
 public:
  static plog::util::nstring header() { return {}; }

  static plog::util::nstring format(const plog::Record& record) {
    plog::util::nostringstream line;
    line << plog::severityToString(record.getSeverity()) << PLOG_NSTR(" ") << record.getMessage() << PLOG_NSTR("\n");
    return line.str();
  }
};

bool IsMissingTable(const plog::Record& record) {
  return plog::util::nstring(record.getMessage()).find(PLOG_NSTR("no such table:")) != plog::util::nstring::npos;
}

/// Shares standard error with the progress line.
class StandardErrorAppender : public plog::ConsoleAppender<ShortFormatter> {
 public:
  explicit StandardErrorAppender(bool quiet)
      : plog::ConsoleAppender<ShortFormatter>(plog::streamStdErr), quiet_(quiet) {}

  void write(const plog::Record& record) override {
    if (quiet_ && IsMissingTable(record)) {
      return;
    }
    ClearProgress();
    plog::ConsoleAppender<ShortFormatter>::write(record);
  }

 private:
  bool quiet_;
};

plog::Severity ParseLevel(const std::string& level) {
  const auto found = std::find(LogLevels().begin(), LogLevels().end(), level);
  return static_cast<plog::Severity>(found - LogLevels().begin());
}

plog::IAppender& FileAppender(const std::string& file) {
  // The appender itself would stay silent about a file that it cannot open.
  if (!std::ofstream(file, std::ios::app)) {
    throw CommandFailure(kUsage,
                         fmt::format("--log-file: cannot write {}; name a file in a directory that exists", file));
  }
  static plog::RollingFileAppender<plog::TxtFormatter> appender(file.c_str(), kLogFileBytes, kLogFiles);
  return appender;
}

}  // namespace

const std::vector<std::string>& LogLevels() {
  static const std::vector<std::string> levels = {"none", "fatal", "error", "warning", "info", "debug", "verbose"};
  return levels;
}

void StartLogging(const std::string& level, const std::string& file) {
  static StandardErrorAppender standard_error(level.empty());
  common::InitDefaultLogger(ParseLevel(level.empty() ? kDefaultLogLevel : level),
                            file.empty() ? &standard_error : &FileAppender(file));
}

}  // namespace corvo::telemetry::host
