#pragma once

#include <plog/Record.h>

#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace corvo::test {

/// One captured log record.
struct LogLine {
  plog::Severity severity;
  std::string tag;
  std::string text;

  bool operator==(const LogLine&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const LogLine& line);

/// Captures the log records written while the object lives, and gives the logger its former severity back afterwards:
/// silence, when this object made it. One at a time.
class LogCapture {
 public:
  /// Admits records up to `max_severity`.
  explicit LogCapture(plog::Severity max_severity = plog::verbose);
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;
  ~LogCapture();

  /// The records so far, in order.
  [[nodiscard]] std::vector<LogLine> Lines() const;

  /// The texts of the records of one severity so far, in order.
  [[nodiscard]] std::vector<std::string> Texts(plog::Severity severity) const;

  /// Calls `action` with every record from now on, before it is kept; what it throws leaves the log statement.
  void OnRecord(std::function<void(const plog::Record&)> action);

 private:
  plog::Severity former_severity_;
};

}  // namespace corvo::test
