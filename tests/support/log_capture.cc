#include "support/log_capture.h"

#include <plog/Util.h>

#include "common/log.h"

namespace corvo::test {
namespace {

std::string Narrow(const plog::util::nchar* text) {
#ifdef _WIN32
  return plog::util::toNarrow(text, plog::codePage::kActive);
#else
  return text;
#endif
}

class Appender : public plog::IAppender {
 public:
  void write(const plog::Record& record) override {
    const std::lock_guard lock(mutex);
    if (action) {
      action(record);
    }
    lines.push_back({record.getSeverity(), record.getFunc(), Narrow(record.getMessage())});
  }

  std::mutex mutex;
  std::vector<LogLine> lines;
  std::function<void(const plog::Record&)> action;
};

// The logger keeps its appenders for good, so there is one for all captures.
Appender& TheAppender() {
  static Appender appender;
  return appender;
}

plog::Severity SeverityNow() {
  const auto* logger = telemetry::common::DefaultLogger();
  return logger != nullptr ? logger->getMaxSeverity() : plog::none;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const LogLine& line) {
  return stream << plog::severityToString(line.severity) << " [" << line.tag << "] " << line.text;
}

LogCapture::LogCapture(plog::Severity max_severity) : former_severity_(SeverityNow()) {
  static auto& logger = telemetry::common::InitDefaultLogger(max_severity, &TheAppender());
  logger.setMaxSeverity(max_severity);
}

LogCapture::~LogCapture() {
  telemetry::common::DefaultLogger()->setMaxSeverity(former_severity_);
  const std::lock_guard lock(TheAppender().mutex);
  TheAppender().lines.clear();
  TheAppender().action = nullptr;
}

std::vector<LogLine> LogCapture::Lines() const {
  const std::lock_guard lock(TheAppender().mutex);
  return TheAppender().lines;
}

std::vector<std::string> LogCapture::Texts(plog::Severity severity) const {
  std::vector<std::string> texts;
  for (const LogLine& line : Lines()) {
    if (line.severity == severity) {
      texts.push_back(line.text);
    }
  }
  return texts;
}

void LogCapture::OnRecord(std::function<void(const plog::Record&)> action) {
  const std::lock_guard lock(TheAppender().mutex);
  TheAppender().action = std::move(action);
}

}  // namespace corvo::test
