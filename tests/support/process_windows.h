#pragma once

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

namespace corvo::test {

/// A handle of the system, closed at the end of the object's life.
class Handle {
 public:
  explicit Handle(HANDLE handle = nullptr) : handle_(handle) {}
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Handle() { Close(); }

  void Close() {
    if (handle_ != nullptr) {
      CloseHandle(std::exchange(handle_, nullptr));
    }
  }
  [[nodiscard]] HANDLE Get() const { return handle_; }

 private:
  HANDLE handle_;
};

[[nodiscard]] std::wstring Wide(const std::string& utf8);

/// The three standard streams of a new process: handles that can be inherited.
struct StandardStreams {
  HANDLE in;
  HANDLE out;
  HANDLE err;
};

/// Starts a program by its path, followed by its arguments, and hands out the process. Only the three streams are
/// inherited.
///
/// @param environment NAME=value, in addition to the environment of the test or in place of its entries.
[[nodiscard]] Handle StartProcess(const std::vector<std::string>& command, const std::vector<std::string>& environment,
                                  const StandardStreams& streams, DWORD* id = nullptr);

/// Waits for the end of a process and hands out its exit code.
[[nodiscard]] int WaitForExit(const Handle& process);

}  // namespace corvo::test
