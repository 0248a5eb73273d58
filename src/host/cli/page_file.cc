#include "host/cli/page_file.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <memory>
#include <random>
#include <string_view>
#include <system_error>

#include "common/text.h"
#include "host/cli/words/wrong_usage.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/look.h"
#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const fs::path& place, const std::string& reason) {
  throw CommandFailure(kUsage, fmt::format("--html {}: {}", common::Utf8(place), reason));
}

bool HoldsDatabase(const fs::path& file) {
  constexpr std::string_view kMagic = "SQLite format 3";
  std::array<char, kMagic.size()> first{};
  std::ifstream(file, std::ios::binary).read(first.data(), first.size());
  return std::string_view(first.data(), first.size()) == kMagic;
}

/// Whether the name is that of a database of the catalogue, of a file beside one, or of a file of this program's own.
/// On Windows names differ by more than their case.
bool IsTaken(const std::string& name) {
  const CatalogueView catalogue = ReadCatalogue();
  const std::string lower = LowerCase(name);
  return lower.starts_with(".corvo-telemetry-host") ||
         std::any_of(catalogue.databases.begin(), catalogue.databases.end(), [&lower](const DatabaseView& database) {
           return lower.starts_with(LowerCase(common::Utf8(DatabaseFile(database, ""))));
         });
}

void RequireFolder(const fs::path& place) {
  std::error_code error;
  const fs::file_status status = fs::status(place.parent_path(), error);
  if (status.type() == fs::file_type::not_found) {
    Refuse(place, "its directory does not exist");
  }
  if (!fs::is_directory(status)) {
    Refuse(place, error ? "its directory cannot be looked at: " + error.message() : "its directory is none");
  }
}

void RequireOrdinaryFileOrNothing(const fs::path& place) {
  std::error_code error;
  switch (fs::symlink_status(place, error).type()) {
    case fs::file_type::not_found:
      return;
    case fs::file_type::regular:
      if (HoldsDatabase(place)) {
        Refuse(place, "it is a database; name another file");
      }
      return;
    case fs::file_type::directory:
      Refuse(place, "it is a directory; name a file in it");
    case fs::file_type::symlink:
      Refuse(place, "it is a link, and nothing is written through one; name the file itself");
    case fs::file_type::none:
      Refuse(place, error.message());
    default:
      Refuse(place, "it is no ordinary file");
  }
}

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

fs::path RequirePagePlace(const std::string& file, const fs::path& data_directory) {
  if (file == "-") {
    Refuse(file, "a page is not written to standard output; name a file");
  }
  fs::path place = fs::absolute(file);
  if (!place.has_filename()) {
    Refuse(place, "it is a directory; name a file in it");
  }
  RequireFolder(place);
  RequireOrdinaryFileOrNothing(place);
  std::error_code unknown;
  if (fs::equivalent(place.parent_path(), data_directory, unknown) && IsTaken(common::Utf8(place.filename()))) {
    Refuse(place, "the name belongs to a database or to this program; name another file");
  }
  return place;
}

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
