#pragma once

#include <plog/Logger.h>
#include <plog/Record.h>

#include "common/error.h"
#include "common/logger.h"

// For code that writes to the log: this header needs plog, so it is not installed.

// plog keeps the instance in a static member that every Windows library would get its own copy of. This one lives in
// commons, so plog's own functions and macros reach it too.
template <>
CORVO_COMMONS_API plog::Logger<PLOG_DEFAULT_INSTANCE_ID>*
    plog::util::Singleton<plog::Logger<PLOG_DEFAULT_INSTANCE_ID>>::m_instance;

namespace corvo::telemetry::common {

/// True when a logger exists and admits records of this severity.
[[nodiscard]] inline bool LogAdmits(plog::Severity severity) noexcept {
  const Logger* logger = DefaultLogger();
  return logger != nullptr && logger->checkSeverity(severity);
}

/// Streams a record as its JSON text.
inline plog::Record& operator<<(plog::Record& record, const Error& error) { return record << ErrorText(error); }

}  // namespace corvo::telemetry::common

/// Writes one log record, for example `CORVO_LOG(plog::info, "DataCleanup::ReadSource") << "Started";`
///
/// The tag is a fixed text, the file name stays empty. Nothing right of the macro is evaluated unless a logger exists
/// and admits the severity.
#define CORVO_LOG(severity, tag)                          \
  if (!::corvo::telemetry::common::LogAdmits(severity)) { \
  } else /* NOLINT(readability-else-after-return) */      \
    *::corvo::telemetry::common::DefaultLogger() +=       \
        ::plog::Record((severity), (tag), __LINE__, "", nullptr, PLOG_DEFAULT_INSTANCE_ID).ref()
