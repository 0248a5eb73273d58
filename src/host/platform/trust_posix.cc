#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <system_error>

#include "common/text.h"
#include "host/platform/trust.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

// Above what the system follows itself, so that a loop is told in its words.
constexpr int kMostLinks = 64;

bool IsOurs(const struct stat& status) { return status.st_uid == geteuid() || status.st_uid == 0; }

// In a sticky folder only the owner of an entry may replace it, and each entry of the way is looked at itself.
std::string JudgeFolder(const std::string& name, const struct stat& status, bool is_directory_itself) {
  if (!is_directory_itself && (status.st_mode & S_ISVTX) != 0) {
    return {};
  }
  if ((status.st_mode & S_IWOTH) != 0) {
    return name + " may be written by everybody";
  }
  return (status.st_mode & S_IWGRP) != 0 ? name + " may be written by its group" : "";
}

std::string Judge(const fs::path& path, bool is_directory_itself, int links);

// A link in a sticky folder leads where its owner wants, so its owner matters as a folder's does; its mode means
// nothing.
std::string JudgeEntry(const fs::path& path, bool is_directory_itself, int links) {
  const std::string name = common::Utf8(path);
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) {
    return fmt::format("{} cannot be judged: {}", name, std::generic_category().message(errno));
  }
  if (!IsOurs(status)) {
    return fmt::format("{} belongs to another user (uid {})", name, status.st_uid);
  }
  if (!S_ISLNK(status.st_mode)) {
    return JudgeFolder(name, status, is_directory_itself);
  }
  if (links == 0) {
    return fmt::format("{} cannot be judged: {}", name, std::generic_category().message(ELOOP));
  }
  std::error_code error;
  const fs::path target = fs::read_symlink(path, error);
  return error ? fmt::format("{} cannot be judged: {}", name, error.message())
               : Judge(path.parent_path() / target, is_directory_itself, links - 1);
}

// Walks down the path as the system does, each link where it stands.
std::string Judge(const fs::path& path, bool is_directory_itself, int links) {
  fs::path walked;
  for (auto part = path.begin(); part != path.end(); ++part) {
    walked /= *part;
    const bool is_last = std::next(part) == path.end();
    if (std::string reason = JudgeEntry(walked, is_last && is_directory_itself, links); !reason.empty()) {
      return reason;
    }
  }
  return {};
}

}  // namespace

bool IsPrivileged() { return geteuid() == 0; }

std::string WhoElseMayWrite(const fs::path& directory) {
  std::error_code error;
  const fs::path path = fs::absolute(directory, error);
  return error ? fmt::format("{} cannot be judged: {}", common::Utf8(directory), error.message())
               : Judge(path, true, kMostLinks);
}

}  // namespace corvo::telemetry::host
