#include <fcntl.h>
#include <fmt/chrono.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
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

constexpr int kMostAttempts = 100;
constexpr std::string_view kSignature = "process ";

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() {
    if (number_ >= 0) {
      close(number_);
    }
  }

  [[nodiscard]] int Number() const { return number_; }

 private:
  int number_;
};

[[noreturn]] void Fail(const fs::path& file, const std::string& reason) {
  throw std::runtime_error(fmt::format("cannot lock {}: {}", common::Utf8(file), reason));
}

[[noreturn]] void FailWith(const fs::path& file, int error) { Fail(file, std::generic_category().message(error)); }

struct stat StatusOf(const fs::path& name, const Descriptor& file) {
  struct stat status {};
  if (fstat(file.Number(), &status) != 0) {
    FailWith(name, errno);
  }
  return status;
}

// Of this user, or the administrator, from whom nothing needs to be feared.
bool IsOurs(const struct stat& status) { return status.st_uid == geteuid() || status.st_uid == 0; }

/// Whose run it is when its file can be neither locked nor read, for people.
std::string RunOfAnother(const fs::path& name, uid_t user) {
  return fmt::format("a run of another user (uid {}), unless it was killed: then remove {}", user, common::Utf8(name));
}

// Only what a run of this program can have made is locked.
void Judge(const fs::path& name, const struct stat& status) {
  if (!S_ISREG(status.st_mode)) {
    Fail(name, "it is no regular file; remove it");
  }
  if (status.st_nlink > 1) {
    Fail(name, "it is a hard link to a file that has other names; remove it");
  }
}

// Neither follows a link nor waits for the other end of a pipe nor becomes the owner of a terminal. A file that another
// user keeps to himself is not opened; then `holder` says whose it is.
Descriptor Open(const Descriptor& directory, const fs::path& name, std::string& holder) {
  constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  Descriptor file(openat(directory.Number(), InstanceLock::kFileName, kFlags, S_IRUSR | S_IWUSR));
  if (file.Number() >= 0) {
    Judge(name, StatusOf(name, file));
    return file;
  }
  const int error = errno;
  struct stat status {};
  if (error == ELOOP) {
    Fail(name, "it is a symbolic link; remove it");
  }
  if (error != EACCES || fstatat(directory.Number(), InstanceLock::kFileName, &status, AT_SYMLINK_NOFOLLOW) != 0 ||
      status.st_uid == geteuid()) {
    FailWith(name, error);
  }
  Judge(name, status);
  holder = RunOfAnother(name, status.st_uid);
  return file;
}

bool IsInPlace(const Descriptor& directory, const Descriptor& file) {
  struct stat opened {};
  struct stat named {};
  return fstat(file.Number(), &opened) == 0 &&
         fstatat(directory.Number(), InstanceLock::kFileName, &named, AT_SYMLINK_NOFOLLOW) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// A lock holds without its signature: on a full disk there is none.
void Sign(const Descriptor& file) {
  const std::string text =
      fmt::format("{}{}, since {:%F %T} UTC\n", kSignature, getpid(), fmt::gmtime(std::time(nullptr)));
  static_cast<void>(ftruncate(file.Number(), 0) == 0 && pwrite(file.Number(), text.data(), text.size(), 0) > 0);
}

/// What a living process has signed with; empty when none has: the signature of a killed run stands until the next one
/// has signed. Of what another user's file says, the number alone is told.
std::string Signer(const Descriptor& file, const struct stat& status) {
  std::array<char, 100> content{};
  const ssize_t size = pread(file.Number(), content.data(), content.size() - 1, 0);
  const std::string_view text(content.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
  if (!text.starts_with(kSignature)) {
    return {};
  }
  const long process = std::strtol(content.data() + kSignature.size(), nullptr, 10);
  if (process <= 0 || (kill(static_cast<pid_t>(process), 0) != 0 && errno != EPERM)) {
    return {};
  }
  return IsOurs(status) ? std::string(text.substr(0, text.find('\n')))
                        : fmt::format("{}{} of another user (uid {})", kSignature, process, status.st_uid);
}

}  // namespace

class InstanceLock::File {
 public:
  File(Descriptor directory, Descriptor file) : directory_(std::move(directory)), file_(std::move(file)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  // Removed while locked: whoever opened it before finds its name gone or another's, and begins anew.
  ~File() {
    if (IsInPlace(directory_, file_)) {
      unlinkat(directory_.Number(), kFileName, 0);
    }
  }

 private:
  Descriptor directory_;
  Descriptor file_;
};

std::optional<InstanceLock> InstanceLock::TryTake(const fs::path& directory, std::string& holder) {
  const fs::path name = directory / kFileName;
  Descriptor folder(open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (folder.Number() < 0) {
    FailWith(name, errno);
  }
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    Descriptor file = Open(folder, name, holder);
    if (file.Number() < 0) {
      return std::nullopt;
    }
    const bool locked = flock(file.Number(), LOCK_EX | LOCK_NB) == 0;
    if (!locked && errno != EWOULDBLOCK) {
      FailWith(name, errno);
    }
    if (!IsInPlace(folder, file)) {
      continue;  // It was removed by its holder's end after it was opened here: a lock on it keeps nobody out.
    }
    const struct stat status = StatusOf(name, file);
    if (!locked) {
      const std::string signer = Signer(file, status);
      holder = signer.empty() ? "another process" : signer;
      return std::nullopt;
    }
    // The file of another user's run that was killed is taken over without a word written to it.
    if (IsOurs(status)) {
      Sign(file);
    }
    return InstanceLock(std::make_shared<File>(std::move(folder), std::move(file)));
  }
  Fail(name, "it is replaced again and again");
}

std::string InstanceLock::WhoHolds(const fs::path& directory) {
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const fs::path name = directory / kFileName;
  const Descriptor file(open(name.c_str(), kFlags));
  struct stat status {};
  const bool found =
      file.Number() >= 0 ? fstat(file.Number(), &status) == 0 : errno == EACCES && lstat(name.c_str(), &status) == 0;
  if (!found || !S_ISREG(status.st_mode)) {
    return {};
  }
  return file.Number() >= 0 ? Signer(file, status) : RunOfAnother(name, status.st_uid);
}

}  // namespace corvo::telemetry::host
