#include <aclapi.h>
#include <fmt/core.h>
#include <windows.h>

#include <array>
#include <iterator>
#include <memory>
#include <system_error>

#include "common/text.h"
#include "host/platform/trust.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

// With these a folder can be replaced. Making new entries in it is no such right: everybody may do that in C:\.
constexpr DWORD kReplacing = FILE_DELETE_CHILD | DELETE | WRITE_DAC | WRITE_OWNER | GENERIC_ALL;
constexpr DWORD kWriting = kReplacing | FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY | GENERIC_WRITE;

struct Group {
  WELL_KNOWN_SID_TYPE type;
  const char* name;
};
constexpr std::array kEverybody = {
    Group{WinWorldSid, "everybody"},
    Group{WinAnonymousSid, "everybody"},
    Group{WinBuiltinUsersSid, "all users"},
    Group{WinAuthenticatedUserSid, "all authenticated users"},
    Group{WinInteractiveSid, "all interactive users"},
    Group{WinBuiltinGuestsSid, "guests"},
};

std::string Unanswered(const fs::path& path, DWORD error) {
  return fmt::format("{} cannot be judged: {}", common::Utf8(path),
                     std::system_category().message(static_cast<int>(error)));
}

/// The group among those to which everybody belongs that the entry gives one of the rights; null when it gives none.
const char* GroupWith(DWORD rights, ACE_HEADER& entry) {
  if (entry.AceType != ACCESS_ALLOWED_ACE_TYPE || (entry.AceFlags & INHERIT_ONLY_ACE) != 0) {
    return nullptr;
  }
  auto& allowed = reinterpret_cast<ACCESS_ALLOWED_ACE&>(entry);
  for (const Group& group : kEverybody) {
    if ((allowed.Mask & rights) != 0 && IsWellKnownSid(&allowed.SidStart, group.type) != 0) {
      return group.name;
    }
  }
  return nullptr;
}

// Entries that deny are not weighed against those that allow: at worst a folder is named that is safe.
std::string JudgeFolder(const fs::path& folder, DWORD rights) {
  ACL* list = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  const DWORD error = GetNamedSecurityInfoW(folder.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                            &list, nullptr, &descriptor);
  const std::unique_ptr<void, decltype(&LocalFree)> owner(descriptor, &LocalFree);
  if (error != ERROR_SUCCESS) {
    return Unanswered(folder, error);
  }
  if (list == nullptr) {
    return common::Utf8(folder) + " may be written by everybody";  // No list at all bars nobody.
  }
  for (DWORD index = 0; index < list->AceCount; ++index) {
    void* entry = nullptr;
    const char* group =
        GetAce(list, index, &entry) != 0 ? GroupWith(rights, *static_cast<ACE_HEADER*>(entry)) : nullptr;
    if (group != nullptr) {
      return fmt::format("{} may be written by {}", common::Utf8(folder), group);
    }
  }
  return {};
}

// The system answers with a prefix that paths of the standard library do not know.
fs::path WithoutPrefix(std::wstring path) {
  constexpr std::wstring_view kPrefix = LR"(\\?\)";
  constexpr std::wstring_view kNetwork = LR"(\\?\UNC\)";
  if (path.starts_with(kNetwork)) {
    return LR"(\\)" + path.substr(kNetwork.size());
  }
  return path.starts_with(kPrefix) ? path.substr(kPrefix.size()) : path;
}

/// The directory's own path, every link on the way followed; empty when the system does not tell.
fs::path RealPath(const fs::path& directory) {
  constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE handle =
      CreateFileW(directory.c_str(), 0, kShared, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    return {};
  }
  std::wstring path(32'768, L'\0');
  const DWORD length = GetFinalPathNameByHandleW(handle, path.data(), static_cast<DWORD>(path.size()), 0);
  const DWORD error = GetLastError();
  CloseHandle(handle);
  SetLastError(error);
  path.resize(length < path.size() ? length : 0);
  return WithoutPrefix(path);
}

}  // namespace

bool IsPrivileged() {
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == 0) {
    return true;  // Careful where the answer is unknown.
  }
  TOKEN_ELEVATION elevation{};
  DWORD size = 0;
  const bool known = GetTokenInformation(token, TokenElevation, &elevation, sizeof elevation, &size) != 0;
  CloseHandle(token);
  return !known || elevation.TokenIsElevated != 0;
}

std::string WhoElseMayWrite(const fs::path& directory) {
  const fs::path path = RealPath(directory);
  if (path.empty()) {
    return Unanswered(directory, GetLastError());
  }
  fs::path walked;
  for (auto part = path.begin(); part != path.end(); ++part) {
    walked /= *part;
    const bool is_directory_itself = std::next(part) == path.end();
    // The name of the volume alone means the current directory there.
    const bool is_folder = walked.has_root_directory();
    std::string reason = is_folder ? JudgeFolder(walked, is_directory_itself ? kWriting : kReplacing) : "";
    if (!reason.empty()) {
      return reason;
    }
  }
  return {};
}

}  // namespace corvo::telemetry::host
