#pragma once

#include <plog/Logger.h>
#include <plog/Record.h>

#include "common/commons_export.h"
#include "common/error.h"

// plog keeps the instance in a static member that every Windows library would get its own copy of. This one lives in
// commons, so plog's own functions and macros reach it too.
template <>
CORVO_COMMONS_API plog::Logger<PLOG_DEFAULT_INSTANCE_ID>*
    plog::util::Singleton<plog::Logger<PLOG_DEFAULT_INSTANCE_ID>>::m_instance;

namespace corvo::telemetry::common {

/// The type of the process's one logger: plog's default instance.
using Logger = plog::Logger<PLOG_DEFAULT_INSTANCE_ID>;

/// The process's logger, or null while no host has initialised one. The libraries and the module only ever read it.
[[nodiscard]] CORVO_COMMONS_API Logger* DefaultLogger() noexcept;

/// Creates the process's logger on the first call and adds `appender` to it on every call.
///
/// For hosts; call it before the first run. The instance lives in this library on every platform, so that the host, the
/// libraries and the module write to the same one. A host may as well initialise it with plog's own functions, on
/// Windows in a source that includes this header.
///
/// @param max_severity records above it are not written (fatal 1 to verbose 6); only the first call sets it.
/// @param appender owned by the caller, must outlive every log statement; null adds none.
CORVO_COMMONS_API Logger& InitDefaultLogger(plog::Severity max_severity, plog::IAppender* appender);

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
