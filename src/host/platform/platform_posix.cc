#include <fcntl.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <locale>
#include <stdexcept>
#include <string_view>

#include "host/platform/platform.h"

namespace corvo::telemetry::host {
namespace {

constexpr int kUsualWidth = 80;

std::atomic<bool> colour_is_off = false;

bool IsDumb() {
  const char* const terminal = std::getenv("TERM");
  return terminal != nullptr && std::string_view(terminal) == "dumb";
}

bool TakesTemporaryFiles(const char* directory) {
  struct stat status {};
  return directory != nullptr && stat(directory, &status) == 0 && S_ISDIR(status.st_mode) &&
         access(directory, W_OK | X_OK) == 0;
}

// The lowest free number is what open() gives, so that going up from 0 fills each hole with its own. Open for reading:
// a stream that swallowed its output would make a lost report look like a written one.
void FillClosedStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDONLY) < 0 && open("/", O_RDONLY | O_DIRECTORY) < 0) {
      std::abort();  // Without a place for messages the first database would become it.
    }
  }
}

}  // namespace

std::filesystem::path ProgramDirectory() { return std::filesystem::read_symlink("/proc/self/exe").parent_path(); }

std::filesystem::path SqliteTemporaryDirectory() {
  const char* const own = std::getenv("SQLITE_TMPDIR");
  const char* const common = std::getenv("TMPDIR");
  for (const char* directory : {own, common, "/var/tmp", "/usr/tmp", "/tmp", "."}) {
    if (TakesTemporaryFiles(directory)) {
      return directory;
    }
  }
  return {};
}

void PrepareProcess() {
  FillClosedStreams();
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
}

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

// A pipe would make the opening wait for its reader, and a terminal would become the one that can interrupt.
std::FILE* OpenToAppend(const std::filesystem::path& file) {
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  constexpr mode_t kForAll = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  const int opened = open(file.c_str(), kFlags, kForAll);
  if (opened < 0) {
    return nullptr;
  }
  struct stat status {};
  const bool known = fstat(opened, &status) == 0;
  const bool fits = known && (S_ISREG(status.st_mode) || S_ISCHR(status.st_mode));
  std::FILE* const stream = fits && fcntl(opened, F_SETFL, O_APPEND) == 0 ? fdopen(opened, "a") : nullptr;
  if (stream == nullptr) {
    const int reason = known && !fits ? ENXIO : errno;
    close(opened);
    errno = reason;
  }
  return stream;
}

bool IsTerminalOrNull(const std::filesystem::path& device) {
  struct stat status {};
  struct stat null {};
  if (stat(device.c_str(), &status) != 0 || !S_ISCHR(status.st_mode)) {
    return false;
  }
  if (stat("/dev/null", &null) == 0 && S_ISCHR(null.st_mode) && null.st_rdev == status.st_rdev) {
    return true;
  }
  const int opened = open(device.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  const bool terminal = opened >= 0 && isatty(opened) != 0;
  if (opened >= 0) {
    close(opened);
  }
  return terminal;
}

int TerminalWidth(std::FILE* stream) {
  winsize size{};
  return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualWidth;
}

bool UsesColour(std::FILE* stream) {
  const char* const no_colour = std::getenv("NO_COLOR");
  return !colour_is_off && IsTerminal(stream) && (no_colour == nullptr || *no_colour == '\0') && !IsDumb();
}

void NeverUseColour() noexcept { colour_is_off = true; }

// In the order in which the C library asks for the character set.
bool ShowsBlocks(std::FILE* stream) {
  if (IsTerminal(stream) && IsDumb()) {
    return false;
  }
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    if (const char* const value = std::getenv(name); value != nullptr && *value != '\0') {
      const std::string_view locale(value);
      return locale.find("UTF-8") != std::string_view::npos || locale.find("utf8") != std::string_view::npos;
    }
  }
  return false;
}

std::string MissingLocaleHint() {
  try {
    static_cast<void>(std::locale("en_US"));
    return {};
  } catch (const std::runtime_error&) {
    return "the locale en_US is missing and a pass needs it; as root: localedef -i en_US -f ISO-8859-1 en_US "
           "(package locales)";
  }
}

}  // namespace corvo::telemetry::host
