#include "common/log.h"

#include <plog/Init.h>

template <>
CORVO_COMMONS_API plog::Logger<PLOG_DEFAULT_INSTANCE_ID>*
    plog::util::Singleton<plog::Logger<PLOG_DEFAULT_INSTANCE_ID>>::m_instance = nullptr;

namespace corvo::telemetry::common {

Logger* DefaultLogger() noexcept { return plog::get(); }

Logger& InitDefaultLogger(plog::Severity max_severity, plog::IAppender* appender) {
  Logger& logger = plog::init(max_severity, nullptr);
  if (appender != nullptr) {
    logger.addAppender(appender);
  }
  return logger;
}

}  // namespace corvo::telemetry::common
