#include "host/pass/logging.h"

#include <fmt/core.h>
#include <plog/Appenders/IAppender.h>
#include <plog/Converters/UTF8Converter.h>
#include <plog/Formatters/TxtFormatter.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>

#include "common/log.h"
#include "common/text.h"
#include "host/pass/log_file.h"
#include "host/show/failure.h"
#include "host/show/standard_error.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;
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

/// Severity and text: what a person at the terminal needs.
Text ShortForm(const plog::Record& record) {
  plog::util::nostringstream line;
  line << plog::severityToString(record.getSeverity()) << PLOG_NSTR(" ") << record.getMessage() << PLOG_NSTR("\n");
  return line.str();
}

/// Where the log goes: how a record reads there, and what writes its line and gives the `errno` of a failure.
struct Target {
  Text (*format)(const plog::Record&) = nullptr;
  std::function<int(const std::string&)> write = {};
};

/// The record as it is written, in UTF-8. The names and messages in it can be a file's own, whoever logs them.
std::string LineOf(const Text& formatted) {
  std::string line = plog::UTF8Converter::convert(formatted);
  line.pop_back();  // the line feed of the formatter
  return Printable(line) + "\n";
}

/// Shares standard error with the line of progress.
int WriteToStandardError(const std::string& line) {
  ClearProgress();
  try {
    // Not by the standard library's own functions: they cut characters in two on a console of Windows.
    fmt::print(stderr, "{}", line);
    return 0;
  } catch (const std::system_error& failure) {
    return failure.code().value() != 0 ? failure.code().value() : EIO;
  }
}

/// What the logger, which keeps its appenders for good, is given once: passes records on to where the log goes now.
class Outlet : public plog::IAppender {
 public:
  void Connect(Target target, bool spares) {
    const std::lock_guard lock(mutex_);
    target_ = std::move(target);
    spares_ = spares;
    spared_.clear();
  }

  void Disconnect() { Connect({}, false); }

  void Spare(const Text& failure) {
    const std::lock_guard lock(mutex_);
    spared_.insert(failure);
  }

  /// The `errno` of the first record that was lost; 0 while none was.
  [[nodiscard]] int Failure() {
    const std::lock_guard lock(mutex_);
    return failure_;
  }

  void write(const plog::Record& record) override {
    const std::lock_guard lock(mutex_);
    if (target_.write && !(spares_ && IsSpared(record.getMessage()))) {
      const int failure = target_.write(LineOf(target_.format(record)));
      failure_ = failure_ != 0 ? failure_ : failure;
    }
  }

 private:
  // The module's log statements end with the record of the failure they tell of.
  [[nodiscard]] bool IsSpared(const Text& message) const {
    return std::any_of(spared_.begin(), spared_.end(),
                       [&message](const Text& failure) { return message.ends_with(failure); });
  }

  std::mutex mutex_;
  Target target_;
  bool spares_ = false;
  int failure_ = 0;
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
const Level& ChosenLevel(const std::string& name, const fs::path& file) {
  const char* fallback = file.empty() ? kDefaultLogLevel : kDefaultLogFileLevel;
  return FindLevel(name.empty() ? fallback : name);
}

Target TargetOf(const fs::path& file) {
  if (file.empty()) {
    return {&ShortForm, &WriteToStandardError};
  }
  try {
    const auto log = std::make_shared<LogFile>(file);
    return {&plog::TxtFormatter::format, [log](const std::string& line) { return log->Write(line); }};
  } catch (const std::system_error& failure) {
    throw CommandFailure(kUsage, fmt::format("--log-file {}: cannot be written: {}; name a file where you may write",
                                             common::Utf8(file), failure.code().message()));
  }
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

LogScope::LogScope(const std::string& level, const fs::path& file) : former_(TheLogger().getMaxSeverity()) {
  const Level& chosen = ChosenLevel(level, file);
  TheOutlet().Connect(TargetOf(file), chosen.spares);
  TheLogger().setMaxSeverity(chosen.severity);
}

LogScope::~LogScope() {
  TheLogger().setMaxSeverity(former_);
  TheOutlet().Disconnect();
}

bool LogLost() {
  errno = TheOutlet().Failure();
  return errno != 0;
}

void SpareInLog(const common::Error& failure) {
  // Written as the log writes it, so that both read alike in every encoding.
  plog::Record record(plog::error, "", 0, "", nullptr, PLOG_DEFAULT_INSTANCE_ID);
  record << failure;
  TheOutlet().Spare(record.getMessage());
}

}  // namespace corvo::telemetry::host
