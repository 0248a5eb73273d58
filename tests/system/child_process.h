#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvo::test {

/// A program that a test runs beside itself and talks to line by line, over its standard input and output. It is killed
/// and reaped when the object is destroyed.
class ChildProcess {
 public:
  /// Starts `command` (program by its path, then arguments) with the test's environment and these additions.
  explicit ChildProcess(const std::vector<std::string>& command,
                        const std::map<std::string, std::string>& environment = {});
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  ~ChildProcess();

  /// Writes one line; a child that is gone does not read it, which is no error.
  void Send(const std::string& line);

  /// Closes the child's standard input, so that it reads an end of file.
  void EndInput();

  /// Waits for the next line; none when the child has closed its output or died.
  [[nodiscard]] std::optional<std::string> ReadLine();

  /// Ends the child at once: it can neither catch nor delay this.
  void Kill();

  /// Waits for the end: the exit code, or the negative number of the signal that ended the child.
  int Wait();

  [[nodiscard]] pid_t Id() const { return id_; }

 private:
  pid_t id_ = -1;
  int input_ = -1;
  int output_ = -1;
  std::string unread_;
  std::optional<int> result_;
};

}  // namespace corvo::test
