#include "host/pass/logging.h"

#include <fmt/core.h>
#include <plog/Appenders/ConsoleAppender.h>
#include <plog/Appenders/RollingFileAppender.h>
#include <plog/Formatters/TxtFormatter.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
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

struct Level {
  const char* name;
  plog::Severity severity;
  bool spares;  ///< leaves out the failures that every pass forgives
};

constexpr std::array kLevels = {Level{"none", plog::none, false},       Level{"fatal", plog::fatal, false},
                                Level{"brief", plog::error, true},      Level{"error", plog::error, false},
                                Level{"warning", plog::warning, false}, Level{"info", plog::info, false},
                                Level{"debug", plog::debug, false},     Level{"verbose", plog::verbose, false}};

/// UTF-8 as the formatter made it. plog's own converter begins every file with a byte-order mark, which tools that read
/// line by line take for a part of the first line.
class PlainUtf8Converter : public plog::UTF8Converter {
 public:
  static std::string header(const Text& text) { return convert(text); }
};

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
  void Connect(std::unique_ptr<plog::IAppender> target, bool spares) {
    const std::lock_guard lock(mutex_);
    target_ = std::move(target);
    spares_ = spares;
    spared_.clear();
  }

  void Spare(const Text& failure) {
    const std::lock_guard lock(mutex_);
    spared_.insert(failure);
  }

  void write(const plog::Record& record) override {
    const std::lock_guard lock(mutex_);
    if (target_ != nullptr && !(spares_ && IsSpared(record.getMessage()))) {
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
  bool spares_ = false;
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

const Level& FindLevel(const std::string& name) {
  const auto* const found =
      std::find_if(kLevels.begin(), kLevels.end(), [&name](const Level& level) { return level.name == name; });
  if (found == kLevels.end()) {
    throw CommandFailure(kUsage, fmt::format("--log-level: there is no level {}", name));
  }
  return *found;
}

// A person wants to read only of what went wrong; a file is read when somebody looks for a reason.
const Level& ChosenLevel(const std::string& name, const std::string& file) {
  const char* fallback = file.empty() ? kDefaultLogLevel : kDefaultLogFileLevel;
  return FindLevel(name.empty() ? fallback : name);
}

std::unique_ptr<plog::IAppender> FileAppender(const std::string& file) {
  // The appender itself would stay silent about a file that it cannot open.
  if (!std::ofstream(file, std::ios::app)) {
    throw CommandFailure(kUsage,
                         fmt::format("--log-file: cannot write {}; name a file in a directory that exists", file));
  }
  using Appender = plog::RollingFileAppender<plog::TxtFormatter, plog::NativeEOLConverter<PlainUtf8Converter>>;
  return std::make_unique<Appender>(file.c_str(), kLogFileBytes, kLogFiles);
}

}  // namespace

const std::vector<std::string>& LogLevels() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> all;
    std::transform(kLevels.begin(), kLevels.end(), std::back_inserter(all),
                   [](const Level& level) { return level.name; });
    return all;
  }();
  return names;
}

LogScope::LogScope(const std::string& level, const std::string& file) : former_(TheLogger().getMaxSeverity()) {
  const Level& chosen = ChosenLevel(level, file);
  TheOutlet().Connect(file.empty() ? std::make_unique<StandardErrorAppender>() : FileAppender(file), chosen.spares);
  TheLogger().setMaxSeverity(chosen.severity);
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
