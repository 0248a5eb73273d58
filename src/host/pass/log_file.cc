#include "host/pass/log_file.h"

#include <fmt/core.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "host/platform/platform.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostBytes = 5'000'000;
constexpr int kFormerParts = 2;

}  // namespace

std::vector<fs::path> LogFileNames(const fs::path& file) {
  std::vector<fs::path> names = {file};
  for (int part = 1; part <= kFormerParts; ++part) {
    fs::path name = file.stem();
    name += fmt::format(".{}", part);
    name += file.extension();
    names.push_back(file.parent_path() / name);
  }
  return names;
}

LogFile::LogFile(fs::path file) : file_(std::move(file)) {
  if (const int failure = Open(); failure != 0) {
    throw std::system_error(failure, std::generic_category());
  }
  std::error_code unknown;
  grows_ = fs::is_regular_file(file_, unknown);
  bytes_ = grows_ ? static_cast<std::size_t>(fs::file_size(file_, unknown)) : 0;
}

int LogFile::Write(const std::string& line) {
  if (grows_ && bytes_ > kMostBytes) {
    MakeFormer();
  }
  if (stream_ == nullptr) {
    if (const int failure = Open(); failure != 0) {
      return failure;
    }
  }
  errno = 0;
  if (std::fwrite(line.data(), 1, line.size(), stream_.get()) != line.size()) {
    return errno != 0 ? errno : EIO;
  }
  bytes_ += line.size();
  return 0;
}

int LogFile::Open() {
  errno = 0;
  stream_.reset(OpenToAppend(file_));
  if (stream_ == nullptr) {
    return errno != 0 ? errno : EIO;
  }
  // Nothing stays behind in a buffer, where its loss would be noticed by nobody.
  static_cast<void>(std::setvbuf(stream_.get(), nullptr, _IONBF, 0));
  return 0;
}

// Where the folder does not allow it the file grows on, and the next attempt comes after as many bytes.
void LogFile::MakeFormer() {
  stream_.reset();
  const std::vector<fs::path> names = LogFileNames(file_);
  for (std::size_t part = names.size() - 1; part > 0; --part) {
    std::error_code ignored;
    fs::rename(names[part - 1], names[part], ignored);
  }
  bytes_ = 0;
}

}  // namespace corvo::telemetry::host
