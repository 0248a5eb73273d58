#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <random>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "common/text.h"
#include "host/platform/durable_file.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { Close(); }

  [[nodiscard]] int Number() const { return number_; }

  /// Some file systems tell only now that there was no room.
  bool Close() {
    const int number = std::exchange(number_, -1);
    return number < 0 || close(number) == 0;
  }

 private:
  int number_;
};

[[noreturn]] void Fail(const fs::path& file, const std::string& reason) {
  throw std::runtime_error(fmt::format("{}: {}", common::Utf8(file), reason));
}

[[noreturn]] void FailWith(const fs::path& file, int error) { Fail(file, std::generic_category().message(error)); }

[[noreturn]] void FailAsAnothers(const fs::path& file, uid_t user) {
  Fail(file, fmt::format("it belongs to another user (uid {}); remove it", user));
}

[[noreturn]] void FailToOpen(const fs::path& file, int error) {
  struct stat status {};
  if (error == ELOOP) {
    Fail(file, "it is a symbolic link; remove it");
  }
  if (error == EACCES && lstat(file.c_str(), &status) == 0 && status.st_uid != geteuid()) {
    FailAsAnothers(file, status.st_uid);
  }
  FailWith(file, error);
}

void Judge(const fs::path& name, const struct stat& status) {
  if (S_ISLNK(status.st_mode)) {
    Fail(name, "it is a symbolic link; remove it");
  }
  if (!S_ISREG(status.st_mode)) {
    Fail(name, "it is no regular file; remove it");
  }
  if (status.st_nlink > 1) {
    Fail(name, "it is a hard link to a file that has other names; remove it");
  }
  if (status.st_uid != geteuid() && status.st_uid != 0) {
    FailAsAnothers(name, status.st_uid);
  }
}

/// @return how much was read before the end of the file.
std::size_t ReadAt(const fs::path& name, const Descriptor& file, off_t offset, std::string& content) {
  std::size_t got = 0;
  while (got < content.size()) {
    const ssize_t part =
        pread(file.Number(), content.data() + got, content.size() - got, offset + static_cast<off_t>(got));
    if (part == 0) {
      break;
    }
    if (part < 0 && errno != EINTR) {
      FailWith(name, errno);
    }
    got += part > 0 ? static_cast<std::size_t>(part) : 0;
  }
  return got;
}

bool WriteAll(const Descriptor& file, const std::string& content) {
  for (std::size_t done = 0; done < content.size();) {
    const ssize_t part = write(file.Number(), content.data() + done, content.size() - done);
    if (part < 0 && errno != EINTR) {
      return false;
    }
    done += part > 0 ? static_cast<std::size_t>(part) : 0;
  }
  return fsync(file.Number()) == 0;
}

void JudgeWhatIsReplaced(const Descriptor& folder, const fs::path& file) {
  struct stat status {};
  if (fstatat(folder.Number(), file.filename().c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    Judge(file, status);
  } else if (errno != ENOENT) {
    FailWith(file, errno);
  }
}

std::string RandomName(const fs::path& file) {
  std::random_device random;
  return fmt::format("{}.{:08x}{:08x}", file.filename().string(), random(), random());
}

}  // namespace

// Neither follows a link nor waits for the other end of a pipe nor becomes the owner of a terminal.
std::optional<std::string> ReadOwnFile(const fs::path& file, std::size_t most_bytes) {
  const Descriptor opened(open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (opened.Number() < 0 && errno == ENOENT) {
    return std::nullopt;
  }
  if (opened.Number() < 0) {
    FailToOpen(file, errno);
  }
  struct stat status {};
  if (fstat(opened.Number(), &status) != 0) {
    FailWith(file, errno);
  }
  Judge(file, status);
  const auto most = static_cast<off_t>(most_bytes);
  std::string content(static_cast<std::size_t>(std::min(status.st_size, most)), '\0');
  content.resize(ReadAt(file, opened, std::max<off_t>(status.st_size - most, 0), content));
  return content;
}

void ReplaceOwnFile(const fs::path& file, const std::string& content) {
  const fs::path directory = file.has_parent_path() ? file.parent_path() : fs::path(".");
  const Descriptor folder(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.Number() < 0) {
    FailWith(file, errno);
  }
  JudgeWhatIsReplaced(folder, file);
  const std::string name = RandomName(file);
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  Descriptor fresh(openat(folder.Number(), name.c_str(), kFlags, S_IRUSR | S_IWUSR));
  if (fresh.Number() < 0) {
    FailWith(file, errno);
  }
  const bool replaced = WriteAll(fresh, content) && fresh.Close() &&
                        renameat(folder.Number(), name.c_str(), folder.Number(), file.filename().c_str()) == 0;
  if (!replaced) {
    const int error = errno;
    unlinkat(folder.Number(), name.c_str(), 0);
    FailWith(file, error);
  }
  if (fsync(folder.Number()) != 0) {
    FailWith(file, errno);
  }
}

bool AppendToOwnFile(const fs::path& file, const std::string& text) {
  constexpr int kFlags = O_WRONLY | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  Descriptor opened(open(file.c_str(), kFlags));
  struct stat status {};
  constexpr mode_t kModeOfOthers = S_IRWXG | S_IRWXO;
  if (opened.Number() < 0 || fstat(opened.Number(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_nlink > 1 ||
      status.st_uid != geteuid() || (status.st_mode & kModeOfOthers) != 0) {
    return false;
  }
  if (!WriteAll(opened, text)) {
    const int error = errno;
    static_cast<void>(ftruncate(opened.Number(), status.st_size) == 0);
    FailWith(file, error);
  }
  if (!opened.Close()) {
    FailWith(file, errno);
  }
  return true;
}

}  // namespace corvo::telemetry::host
