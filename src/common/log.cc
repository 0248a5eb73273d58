#include "common/log.h"

#include <plog/Converters/UTF8Converter.h>
#include <plog/Init.h>

template <>
CORVO_COMMONS_API plog::Logger<PLOG_DEFAULT_INSTANCE_ID>*
    plog::util::Singleton<plog::Logger<PLOG_DEFAULT_INSTANCE_ID>>::m_instance = nullptr;

namespace corvo::telemetry::common {
namespace {

static_assert(PLOG_DEFAULT_INSTANCE_ID == 0);
static_assert(static_cast<int>(LogSeverity::kNone) == plog::none);
static_assert(static_cast<int>(LogSeverity::kVerbose) == plog::verbose);

/// Passes records on to a sink.
class SinkAppender : public plog::IAppender {
 public:
  explicit SinkAppender(LogSink& sink) : sink_(sink) {}

  void write(const plog::Record& record) override {
    const std::string text = plog::UTF8Converter::convert(record.getMessage());
    sink_.Write({static_cast<LogSeverity>(record.getSeverity()), record.getFunc(), text.c_str()});
  }

 private:
  LogSink& sink_;
};

}  // namespace

LogSink::LogSink() : appender_(std::make_unique<SinkAppender>(*this)) {}
LogSink::~LogSink() = default;

Logger* DefaultLogger() noexcept { return plog::get(); }

void InitDefaultLogger(LogSeverity max_severity, LogSink* sink) {
  InitDefaultLogger(static_cast<int>(max_severity), sink != nullptr ? sink->appender_.get() : nullptr);
}

Logger& InitDefaultLogger(int max_severity, plog::IAppender* appender) {
  Logger& logger = plog::init(static_cast<plog::Severity>(max_severity), nullptr);
  if (appender != nullptr && appender != &logger) {
    logger.addAppender(appender);
  }
  return logger;
}

}  // namespace corvo::telemetry::common
