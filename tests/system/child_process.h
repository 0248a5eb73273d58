#pragma once

#include <cstdint>
#include <map>
#include <memory>
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

  /// Waits for the end: the exit code, negative when the child was killed.
  int Wait();

  /// Number of files, pipes and other things of the system that the child has open.
  [[nodiscard]] std::int64_t OpenFiles() const;

  /// Memory of the child that is in RAM now, in bytes.
  [[nodiscard]] std::int64_t ResidentBytes() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace corvo::test
