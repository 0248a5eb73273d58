#include "host/samples/staging.h"

#include <fmt/core.h>

#include <algorithm>
#include <random>
#include <system_error>
#include <utility>

#include "common/text.h"
#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const char* doing, const fs::path& directory, const std::string& reason) {
  throw CommandFailure(kUsage, fmt::format("cannot {} the directory {}: {}", doing, common::Utf8(directory), reason));
}

// Nobody can have the place of a folder whose name nobody knows before.
std::string RandomName() {
  std::random_device random;
  return fmt::format(".generate-{:08x}{:08x}", random(), random());
}

}  // namespace

Staging::Staging(fs::path directory) : directory_(std::move(directory)) {
  try {
    MakeDirectory();
    MakeFolder();
  } catch (...) {
    RemoveMadeDirectories();
    throw;
  }
}

Staging::~Staging() {
  try {
    std::error_code ignored;
    if (kept_ || MoveBack()) {
      fs::remove_all(folder_, ignored);
    }
    if (!kept_) {
      RemoveMadeDirectories();
    }
  } catch (const std::exception&) {
    return;  // Without memory even for a path, the folder stays, and in it what was to be put back.
  }
}

fs::path Staging::NewFile(const std::string& name) const { return folder_ / "new" / name; }

void Staging::MoveAside(const std::string& name) {
  if (fs::exists(fs::symlink_status(directory_ / name))) {
    Move(directory_ / name, folder_ / "old" / name);
  }
}

void Staging::Place(const std::string& name) {
  if (fs::exists(fs::symlink_status(directory_ / name))) {
    throw fs::filesystem_error("cannot move a new file here", directory_ / name,
                               std::make_error_code(std::errc::file_exists));
  }
  Move(NewFile(name), directory_ / name);
}

void Staging::MakeDirectory() {
  // A drive's name alone is no directory, and needs not be made.
  fs::path reached = directory_.root_path();
  for (const fs::path& part : directory_.relative_path()) {
    reached /= part;
    std::error_code error;
    if (fs::is_directory(reached, error)) {
      continue;
    }
    if (fs::exists(fs::symlink_status(reached, error))) {
      Fail("make", directory_, common::Utf8(reached) + " is in the way");
    }
    if (!fs::create_directory(reached, error)) {
      Fail("make", directory_, error.message());
    }
    made_.push_back(reached);
  }
}

void Staging::MakeFolder() {
  const fs::path folder = directory_ / RandomName();
  std::error_code error;
  if (!fs::create_directory(folder, error)) {
    Fail("write to", directory_, error.message());
  }
  made_.push_back(folder);
  folder_ = folder;
  for (const char* part : {"new", "old"}) {
    fs::create_directory(folder_ / part);
    made_.push_back(folder_ / part);
  }
}

void Staging::Move(const fs::path& from, const fs::path& to) {
  moves_.emplace_back(from, to);
  try {
    fs::rename(from, to);
  } catch (...) {
    moves_.pop_back();
    throw;
  }
}

bool Staging::MoveBack() const {
  bool all = true;
  std::for_each(moves_.rbegin(), moves_.rend(), [&all](const auto& move) {
    std::error_code error;
    const bool taken = fs::exists(fs::symlink_status(move.first, error));
    if (!taken) {
      fs::rename(move.second, move.first, error);
    }
    all = all && !taken && !error;
  });
  return all;
}

// Only those that are empty again: what others have put there meanwhile is theirs.
void Staging::RemoveMadeDirectories() const {
  std::for_each(made_.rbegin(), made_.rend(), [](const fs::path& directory) {
    std::error_code ignored;
    fs::remove(directory, ignored);
  });
}

}  // namespace corvo::telemetry::host
