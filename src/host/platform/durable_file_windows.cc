#include <fmt/core.h>
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "common/text.h"
#include "host/platform/durable_file.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

constexpr int kMostAttempts = 10;
constexpr DWORD kPauseMilliseconds = 10;
constexpr DWORD kAllSharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  ~Handle() { Close(); }

  [[nodiscard]] HANDLE Get() const { return handle_; }
  [[nodiscard]] bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

  void Close() {
    if (const HANDLE handle = std::exchange(handle_, INVALID_HANDLE_VALUE); handle != INVALID_HANDLE_VALUE) {
      CloseHandle(handle);
    }
  }

 private:
  HANDLE handle_;
};

[[noreturn]] void Fail(const fs::path& file, const std::string& reason) {
  throw std::runtime_error(fmt::format("{}: {}", common::Utf8(file), reason));
}

[[noreturn]] void FailWith(const fs::path& file, DWORD error) {
  Fail(file, std::system_category().message(static_cast<int>(error)));
}

/// @return the size in bytes.
std::int64_t Judge(const fs::path& name, const Handle& file) {
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
  return static_cast<std::int64_t>(std::uint64_t{status.nFileSizeHigh} << 32U | status.nFileSizeLow);
}

/// A link is opened itself, not what it leads to. Who reads keeps nobody from putting a new file in its place.
Handle OpenToRead(const fs::path& name) {
  return Handle(CreateFileW(name.c_str(), GENERIC_READ, kAllSharing, nullptr, OPEN_EXISTING,
                            FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

bool IsMissing(DWORD error) { return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND; }

bool WriteAll(const Handle& file, const std::string& content) {
  DWORD written = 0;
  return WriteFile(file.Get(), content.data(), static_cast<DWORD>(content.size()), &written, nullptr) != 0 &&
         written == content.size() && FlushFileBuffers(file.Get()) != 0;
}

/// A program that looks at every new file can hold it for a moment.
bool Rename(const fs::path& from, const fs::path& to) {
  for (int attempt = 1; MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0;
       ++attempt) {
    const DWORD error = GetLastError();
    if (attempt == kMostAttempts || (error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION)) {
      SetLastError(error);
      return false;
    }
    Sleep(kPauseMilliseconds);
  }
  return true;
}

fs::path RandomName(const fs::path& file) {
  std::random_device random;
  fs::path name = file;
  name += fmt::format(".{:08x}{:08x}", random(), random());
  return name;
}

}  // namespace

std::optional<std::string> ReadOwnFile(const fs::path& file, std::size_t most_bytes) {
  const Handle opened = OpenToRead(file);
  if (!opened.IsOpen()) {
    const DWORD error = GetLastError();
    if (IsMissing(error)) {
      return std::nullopt;
    }
    FailWith(file, error);
  }
  const std::int64_t size = Judge(file, opened);
  const auto most = static_cast<std::int64_t>(most_bytes);
  LARGE_INTEGER start{};
  start.QuadPart = std::max<std::int64_t>(size - most, 0);
  std::string content(static_cast<std::size_t>(std::min(size, most)), '\0');
  DWORD got = 0;
  if (SetFilePointerEx(opened.Get(), start, nullptr, FILE_BEGIN) == 0 ||
      ReadFile(opened.Get(), content.data(), static_cast<DWORD>(content.size()), &got, nullptr) == 0) {
    FailWith(file, GetLastError());
  }
  content.resize(got);
  return content;
}

void ReplaceOwnFile(const fs::path& file, const std::string& content) {
  if (const Handle former = OpenToRead(file); former.IsOpen()) {
    static_cast<void>(Judge(file, former));
  } else if (const DWORD error = GetLastError(); !IsMissing(error)) {
    FailWith(file, error);
  }
  const fs::path name = RandomName(file);
  Handle fresh(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!fresh.IsOpen()) {
    FailWith(file, GetLastError());
  }
  bool replaced = WriteAll(fresh, content);
  DWORD error = GetLastError();
  fresh.Close();
  if (replaced) {
    replaced = Rename(name, file);
    error = GetLastError();
  }
  if (!replaced) {
    DeleteFileW(name.c_str());
    FailWith(file, error);
  }
}

bool AppendToOwnFile(const fs::path& file, const std::string& text) {
  const Handle opened(CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, kAllSharing, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!opened.IsOpen()) {
    return false;
  }
  LARGE_INTEGER end{};
  end.QuadPart = Judge(file, opened);
  const bool found = SetFilePointerEx(opened.Get(), end, nullptr, FILE_BEGIN) != 0;
  if (!found || !WriteAll(opened, text)) {
    const DWORD error = GetLastError();
    if (found && SetFilePointerEx(opened.Get(), end, nullptr, FILE_BEGIN) != 0) {
      SetEndOfFile(opened.Get());
    }
    FailWith(file, error);
  }
  return true;
}

}  // namespace corvo::telemetry::host
