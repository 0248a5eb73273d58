#include "host/cli/page_file.h"

#include <fmt/core.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <random>
#include <system_error>

#include "common/text.h"
#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

/// A file of a name that nobody can know beforehand; gone again with the object, unless it was moved.
class NewFile {
 public:
  explicit NewFile(const fs::path& folder) {
    std::random_device random;
    path_ = folder / fmt::format(".report-{:08x}{:08x}", random(), random());
    file_.reset(std::fopen(path_.string().c_str(), "wbx"));
    Require(file_ != nullptr);
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    file_.reset();
    std::error_code ignored;
    fs::remove(path_, ignored);
  }

  void Write(const std::string& text) {
    Require(std::fwrite(text.data(), 1, text.size(), file_.get()) == text.size());
    Require(std::fclose(file_.release()) == 0);
  }

  void MoveTo(const fs::path& place) const { fs::rename(path_, place); }

 private:
  struct Close {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
  };

  static void Require(bool success) {
    if (!success) {
      throw std::system_error(errno, std::generic_category());
    }
  }

  fs::path path_;
  std::unique_ptr<std::FILE, Close> file_;
};

}  // namespace

void WritePage(const fs::path& place, const std::string& page) {
  try {
    NewFile file(place.parent_path());
    file.Write(page);
    file.MoveTo(place);
  } catch (const std::system_error& failure) {
    throw CommandFailure(kPassFailed,
                         fmt::format("cannot write the page {}: {}", common::Utf8(place), failure.code().message()));
  }
}

}  // namespace corvo::telemetry::host
