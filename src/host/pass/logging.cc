#include "host/pass/logging.h"

#include <fmt/core.h>
#include <plog/Appenders/ConsoleAppender.h>
#include <plog/Appenders/RollingFileAppender.h>
#include <plog/Formatters/TxtFormatter.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <mutex>
#include <set>

#include "common/log.h"
#include "host/show/failure.h"
#include "host/show/standard_error.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kLogFileBytes = 5'000'000;
constexpr int kLogFiles = 3;

using Text = plog::util::nstring;

/// Severity and text: what a person at the terminal needs.
class ShortFormatter {
 public:
  static Text header() { return {}; }

  static Text format(const plog::Record& record) {
    plog::util::nostringstream line;
    line << plog::severityToString(record.getSeverity()) << PLOG_NSTR(" ") << record.getMessage() << PLOG_NSTR("\n");
    return line.str();
  }
};

/// Shares standard error with the line of progress.
class StandardErrorAppender : public plog::ConsoleAppender<ShortFormatter> {
 public:
  StandardErrorAppender() : plog::ConsoleAppender<ShortFormatter>(plog::streamStdErr) {}

  void write(const plog::Record& record) override {
    ClearProgress();
    plog::ConsoleAppender<ShortFormatter>::write(record);
  }
};

/// What the logger, which keeps its appenders for good, is given once: passes records on to where the log goes now.
class Outlet : public plog::IAppender {
 public:
  void Connect(std::unique_ptr<plog::IAppender> target, bool quiet) {
    const std::lock_guard lock(mutex_);
    target_ = std::move(target);
    quiet_ = quiet;
    spared_.clear();
  }

  void Spare(const Text& failure) {
    const std::lock_guard lock(mutex_);
    spared_.insert(failure);
  }

  void write(const plog::Record& record) override {
    const std::lock_guard lock(mutex_);
    if (target_ != nullptr && !(quiet_ && IsSpared(record.getMessage()))) {
      target_->write(record);
    }
  }

 private:
  // The module's log statements end with the record of the failure they tell of.
  [[nodiscard]] bool IsSpared(const Text& message) const {
    return std::any_of(spared_.begin(), spared_.end(),
                       [&message](const Text& failure) { return message.ends_with(failure); });
  }

  std::mutex mutex_;
  std::unique_ptr<plog::IAppender> target_;
  bool quiet_ = false;
  std::set<Text> spared_;
};

Outlet& TheOutlet() {
  static Outlet outlet;
  return outlet;
}

common::Logger& TheLogger() {
  static common::Logger& logger = common::InitDefaultLogger(plog::none, &TheOutlet());
  return logger;
}

plog::Severity ParseLevel(const std::string& level) {
  const auto found = std::find(LogLevels().begin(), LogLevels().end(), level.empty() ? kDefaultLogLevel : level);
  return static_cast<plog::Severity>(found - LogLevels().begin());
}

std::unique_ptr<plog::IAppender> FileAppender(const std::string& file) {
  // The appender itself would stay silent about a file that it cannot open.
  if (!std::ofstream(file, std::ios::app)) {
    throw CommandFailure(kUsage,
                         fmt::format("--log-file: cannot write {}; name a file in a directory that exists", file));
  }
  return std::make_unique<plog::RollingFileAppender<plog::TxtFormatter>>(file.c_str(), kLogFileBytes, kLogFiles);
}

}  // namespace

const std::vector<std::string>& LogLevels() {
  static const std::vector<std::string> levels = {"none", "fatal", "error", "warning", "info", "debug", "verbose"};
  return levels;
}

LogScope::LogScope(const std::string& level, const std::string& file) : former_(TheLogger().getMaxSeverity()) {
  if (file.empty()) {
    TheOutlet().Connect(std::make_unique<StandardErrorAppender>(), level.empty());
  } else {
    TheOutlet().Connect(FileAppender(file), false);
  }
  TheLogger().setMaxSeverity(ParseLevel(level));
}

LogScope::~LogScope() {
  TheLogger().setMaxSeverity(former_);
  TheOutlet().Connect(nullptr, false);
}

void SpareInLog(const common::Error& failure) {
  // Written as the log writes it, so that both read alike in every encoding.
  plog::Record record(plog::error, "", 0, "", nullptr, PLOG_DEFAULT_INSTANCE_ID);
  record << failure;
  TheOutlet().Spare(record.getMessage());
}

}  // namespace corvo::telemetry::host
