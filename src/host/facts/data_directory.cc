#include "host/facts/data_directory.h"

#include <fmt/core.h>

#include <cstdlib>
#include <system_error>

#include "common/text.h"
#include "storage/storage_options.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kVariable = "CORVO_TELEMETRY_DATA_DIR";

/// A directory as it was named, and who named it.
struct Named {
  fs::path path;
  std::string origin;
};

Named NameDirectory(const std::string& option) {
  if (!option.empty()) {
    return {option, "--data-dir"};
  }
  const char* chosen = std::getenv(kVariable);
  if (chosen != nullptr && *chosen != '\0') {
    return {chosen, kVariable};
  }
  return {shared::GetDataDirectory(), "default"};
}

// Asking for the directory's own entry "." needs the right to enter it, as every file in it does.
std::error_code Enter(const fs::path& directory) {
  std::error_code error;
  static_cast<void>(fs::status(directory / ".", error));
  return error;
}

// The outermost directory on the way that cannot be entered; the way's end when each can.
fs::path FirstClosed(const fs::path& directory) {
  fs::path reached;
  for (const fs::path& part : directory) {
    reached /= part;
    if (Enter(reached) == std::errc::permission_denied) {
      return reached;
    }
  }
  return directory;
}

// What is wrong, and what to do about it.
std::string Explain(const fs::path& directory, const std::error_code& error) {
  constexpr const char* kNameAnother = "name the directory that holds the .db files with --data-dir";
  if (error == std::errc::permission_denied) {
    return fmt::format("cannot be read: permission denied at {}; run as a user who may list and enter it",
                       common::Utf8(FirstClosed(directory)));
  }
  if (error == std::errc::too_many_symbolic_link_levels) {
    return fmt::format("cannot be reached: its symbolic links form a loop; {}", kNameAnother);
  }
  if (error == std::errc::filename_too_long) {
    return fmt::format("cannot exist: its name is too long; {}", kNameAnother);
  }
  if (error == std::errc::no_such_file_or_directory) {
    return fmt::format("does not exist; {}", kNameAnother);
  }
  if (error == std::errc::not_a_directory) {
    return fmt::format("is not a directory, or a part of its path is none; {}", kNameAnother);
  }
  return fmt::format("cannot be read: {}; {}", error.message(), kNameAnother);
}

// Directories only answer to both: to be listed, and to be entered.
std::error_code Look(const fs::path& directory) {
  std::error_code error;
  const fs::file_status status = fs::status(directory, error);
  if (status.type() == fs::file_type::not_found) {
    return error ? error : std::make_error_code(std::errc::no_such_file_or_directory);
  }
  if (error) {
    return error;
  }
  if (!fs::is_directory(status)) {
    return std::make_error_code(std::errc::not_a_directory);
  }
  static_cast<void>(fs::directory_iterator(directory, error));
  return error ? error : Enter(directory);
}

std::string Problem(const DataDirectory& directory, const std::error_code& error) {
  const std::string who = directory.origin == "--data-dir" ? "" : fmt::format(" ({})", directory.origin);
  return fmt::format("the data directory {}{} {}", common::Utf8(directory.path), who, Explain(directory.path, error));
}

}  // namespace

DataDirectory ResolveDataDirectory(const std::string& option) {
  const Named named = NameDirectory(option);
  std::error_code error;
  DataDirectory directory{.path = fs::absolute(named.path, error), .origin = named.origin, .problem = ""};
  if (error) {
    directory.path = named.path;  // relative to a current directory that is gone
  } else {
    error = Look(directory.path);
  }
  if (error) {
    directory.problem = Problem(directory, error);
  }
  return directory;
}

}  // namespace corvo::telemetry::host
