#pragma once

#include <memory>

#include "common/commons_export.h"

// Names alone: a host that has no plog can use this header all the same.
namespace plog {
class IAppender;
template <int instanceId>
class Logger;
}  // namespace plog

namespace corvo::telemetry::common {

/// How grave a log record is. A logger writes the records up to its maximum; the numbers are plog's.
enum class LogSeverity { kNone = 0, kFatal = 1, kError = 2, kWarning = 3, kInfo = 4, kDebug = 5, kVerbose = 6 };

/// One log record. The texts live for the duration of the call only.
struct LogRecord {
  LogSeverity severity;
  const char* tag;   ///< the function that wrote it, for example DataCleanup::ReadSource
  const char* text;  ///< UTF-8, without a line end
};

/// Where a host without plog lets the log go.
class CORVO_COMMONS_API LogSink {
 public:
  LogSink();
  LogSink(const LogSink&) = delete;
  LogSink& operator=(const LogSink&) = delete;
  virtual ~LogSink();

  /// Called for every admitted record, on the thread that writes it and with no lock held.
  virtual void Write(const LogRecord& record) noexcept = 0;

 private:
  friend CORVO_COMMONS_API void InitDefaultLogger(LogSeverity max_severity, LogSink* sink);

  std::unique_ptr<plog::IAppender> appender_;  // what the logger knows of this sink
};

/// The type of the process's one logger: plog's default instance.
using Logger = plog::Logger<0>;

/// The process's logger, or null while no host has initialised one. The libraries and the module only ever read it.
[[nodiscard]] CORVO_COMMONS_API Logger* DefaultLogger() noexcept;

/// Creates the process's logger on the first call and adds `sink` to it on every call.
///
/// For hosts; call it before the first run. The instance lives in this library on every platform, so that the host, the
/// libraries and the module write to the same one.
///
/// @param max_severity records above it are not written; only the first call sets it.
/// @param sink owned by the caller, must outlive every log statement; null adds none.
CORVO_COMMONS_API void InitDefaultLogger(LogSeverity max_severity, LogSink* sink);

/// As above, for hosts that have plog and an appender of its kind.
///
/// A host that logs with plog itself hands over its own logger, `plog::get()`. Where that is the process's logger
/// already (everywhere but on Windows), it is not added to itself.
///
/// @param max_severity a `plog::Severity`.
CORVO_COMMONS_API Logger& InitDefaultLogger(int max_severity, plog::IAppender* appender);

}  // namespace corvo::telemetry::common
