#include <fmt/chrono.h>
#include <windows.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "common/text.h"
#include "host/platform/instance_lock.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

constexpr int kMostAttempts = 10;
constexpr DWORD kPauseMilliseconds = 10;
constexpr std::string_view kSignature = "process ";

class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {}
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
  Handle& operator=(Handle&&) = delete;
  ~Handle() {
    if (IsOpen()) {
      CloseHandle(handle_);
    }
  }

  [[nodiscard]] HANDLE Get() const { return handle_; }
  [[nodiscard]] bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

 private:
  HANDLE handle_;
};

[[noreturn]] void Fail(const fs::path& file, const std::string& reason) {
  throw std::runtime_error(fmt::format("cannot lock {}: {}", common::Utf8(file), reason));
}

[[noreturn]] void FailWith(const fs::path& file, DWORD error) {
  Fail(file, std::system_category().message(static_cast<int>(error)));
}

// The lock is the right to write the file, which the system gives to one at a time. Others may read who has it. A link
// is opened itself, not what it leads to.
Handle Open(const fs::path& name) {
  return Handle(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

void Judge(const fs::path& name, const Handle& file) {
  BY_HANDLE_FILE_INFORMATION status{};
  if (GetFileInformationByHandle(file.Get(), &status) == 0) {
    FailWith(name, GetLastError());
  }
  if ((status.dwFileAttributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY)) != 0) {
    Fail(name, "it is no regular file; remove it");
  }
  if (status.nNumberOfLinks > 1) {
    Fail(name, "it is a hard link to a file that has other names; remove it");
  }
}

// A lock holds without its signature: on a full disk there is none.
void Sign(const Handle& file) {
  const std::string text =
      fmt::format("{}{}, since {:%F %T} UTC\n", kSignature, GetCurrentProcessId(), fmt::gmtime(std::time(nullptr)));
  DWORD written = 0;
  if (SetEndOfFile(file.Get()) != 0) {
    WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  }
}

// Empty when there is no signature, be it of a run that was killed.
std::string Signature(const fs::path& name) {
  const Handle file(CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                nullptr, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  std::array<char, 100> content{};
  DWORD size = 0;
  const bool read = file.IsOpen() && ReadFile(file.Get(), content.data(), content.size(), &size, nullptr) != 0;
  const std::string_view text(content.data(), read ? size : 0);
  return text.starts_with(kSignature) ? std::string(text.substr(0, text.find('\n'))) : std::string();
}

}  // namespace

class InstanceLock::File {
 public:
  explicit File(Handle file) : file_(std::move(file)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  // The name goes with the handle: nobody else can open the file for writing in between.
  ~File() {
    FILE_DISPOSITION_INFO removed{TRUE};
    SetFileInformationByHandle(file_.Get(), FileDispositionInfo, &removed, sizeof removed);
  }

 private:
  Handle file_;
};

std::optional<InstanceLock> InstanceLock::TryTake(const fs::path& directory, std::string& holder) {
  const fs::path name = directory / kFileName;
  DWORD error = ERROR_SUCCESS;
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    Handle file = Open(name);
    if (file.IsOpen()) {
      Judge(name, file);
      Sign(file);
      return InstanceLock(std::make_shared<File>(std::move(file)));
    }
    error = GetLastError();
    if (error == ERROR_SHARING_VIOLATION) {
      const std::string signature = Signature(name);
      holder = signature.empty() ? "another process" : signature;
      return std::nullopt;
    }
    if (error != ERROR_ACCESS_DENIED) {
      break;
    }
    Sleep(kPauseMilliseconds);  // So it is also while the file is being removed and somebody still reads it.
  }
  FailWith(name, error);
}

std::string InstanceLock::WhoHolds(const fs::path& directory) {
  const std::string signature = Signature(directory / kFileName);
  const unsigned long number = signature.empty() ? 0 : std::strtoul(signature.c_str() + kSignature.size(), nullptr, 10);
  if (number == 0) {
    return {};
  }
  HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, number);
  if (process == nullptr) {
    return GetLastError() == ERROR_ACCESS_DENIED ? signature : std::string();
  }
  const Handle closed_at_the_end(process);
  return WaitForSingleObject(process, 0) == WAIT_TIMEOUT ? signature : std::string();
}

}  // namespace corvo::telemetry::host
