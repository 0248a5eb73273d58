#include "host/cli/output_place.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <system_error>

#include "common/text.h"
#include "host/cli/words/wrong_usage.h"
#include "host/facts/catalogue_view.h"
#include "host/facts/look.h"
#include "host/pass/log_file.h"
#include "host/platform/platform.h"
#include "host/show/failure.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kTaken = "the name belongs to a database or to this program; name another file";

bool HoldsDatabase(const fs::path& file) {
  constexpr std::string_view kMagic = "SQLite format 3";
  std::array<char, kMagic.size()> first{};
  std::ifstream(file, std::ios::binary).read(first.data(), first.size());
  return std::string_view(first.data(), first.size()) == kMagic;
}

bool IsOfDatabase(std::string_view name) {
  constexpr std::array<std::string_view, 4> kEnds = {".db", ".db-journal", ".db-wal", ".db-shm"};
  return std::any_of(kEnds.begin(), kEnds.end(), [name](std::string_view end) { return name.ends_with(end); });
}

/// Whether the name is that of a database, of a file beside one of the catalogue, or of a file of this program's own.
/// On Windows names differ by more than their case.
bool IsTaken(const std::string& name) {
  const CatalogueView catalogue = ReadCatalogue();
  const std::string lower = LowerCase(name);
  return lower.starts_with(".corvo-telemetry-host") ||
         IsOfDatabase(lower.substr(0, lower.find_last_not_of(". ") + 1)) ||
         std::any_of(catalogue.databases.begin(), catalogue.databases.end(), [&lower](const DatabaseView& database) {
           return lower.starts_with(LowerCase(common::Utf8(DatabaseFile(database, ""))));
         });
}

/// Whether a file of the data directory that has a taken name has this one, too: what is added to one is added to both.
bool IsOtherNameOfTaken(const fs::path& place, const fs::path& data_directory) {
  std::error_code unknown;
  if (fs::hard_link_count(place, unknown) < 2 || unknown) {
    return false;
  }
  const fs::directory_iterator files(data_directory, unknown);
  return std::any_of(begin(files), end(files), [&place](const fs::directory_entry& file) {
    std::error_code gone;
    return IsTaken(common::Utf8(file.path().filename())) && fs::equivalent(file.path(), place, gone);
  });
}

/// A place that an option names.
class Place {
 public:
  Place(const char* option, fs::path path) : option_(option), path_(std::move(path)) {}

  /// Made absolute, which a name may be already.
  static Place Of(const char* option, const std::string& file) {
    std::error_code error;
    fs::path path = fs::absolute(file, error);
    if (error) {
      Place(option, file).Refuse("there is no current directory; name the file from the root on");
    }
    return {option, std::move(path)};
  }

  [[nodiscard]] const fs::path& Path() const { return path_; }

  [[noreturn]] void Refuse(const std::string& reason) const {
    throw CommandFailure(kUsage, fmt::format("{} {}: {}", option_, common::Utf8(path_), reason));
  }

  void RequireFileName() const {
    if (!path_.has_filename()) {
      Refuse("it is a directory; name a file in it");
    }
  }

  void RequireFolder() const {
    std::error_code error;
    const fs::file_status status = fs::status(path_.parent_path(), error);
    if (status.type() == fs::file_type::not_found) {
      Refuse("its directory does not exist");
    }
    if (!fs::is_directory(status)) {
      Refuse(error ? "its directory cannot be looked at: " + error.message() : "its directory is none");
    }
  }

  void RequireOrdinaryFileOrNothing() const {
    std::error_code error;
    switch (fs::symlink_status(path_, error).type()) {
      case fs::file_type::not_found:
        return;
      case fs::file_type::regular:
        if (HoldsDatabase(path_)) {
          Refuse("it is a database; name another file");
        }
        return;
      case fs::file_type::directory:
        Refuse("it is a directory; name a file in it");
      case fs::file_type::symlink:
        Refuse("it is a link, and nothing is written through one; name the file itself");
      case fs::file_type::none:
        Refuse(error.message());
      default:
        Refuse("it is no ordinary file");
    }
  }

  void RequireFreeNameIn(const fs::path& data_directory) const {
    std::error_code unknown;
    if (fs::equivalent(path_.parent_path(), data_directory, unknown) && IsTaken(common::Utf8(path_.filename()))) {
      Refuse(kTaken);
    }
  }

 private:
  const char* option_;
  fs::path path_;
};

}  // namespace

fs::path RequirePagePlace(const std::string& file, const fs::path& data_directory) {
  if (file == "-") {
    Place("--html", file).Refuse("a page is not written to standard output; name a file");
  }
  const Place place = Place::Of("--html", file);
  place.RequireFileName();
  place.RequireFolder();
  place.RequireOrdinaryFileOrNothing();
  place.RequireFreeNameIn(data_directory);
  return place.Path();
}

fs::path RequireLogPlace(const std::string& file, const fs::path& data_directory) {
  constexpr const char* kOption = "--log-file";
  if (file == "-") {
    Place(kOption, file).Refuse("without this option the log goes to standard error; name a file");
  }
  const Place place = Place::Of(kOption, file);
  place.RequireFileName();
  place.RequireFolder();
  if (std::error_code error;
      fs::is_character_file(fs::symlink_status(place.Path(), error)) && IsTerminalOrNull(place.Path())) {
    return place.Path();
  }
  for (const fs::path& name : LogFileNames(place.Path())) {
    const Place part(kOption, name);
    part.RequireOrdinaryFileOrNothing();
    part.RequireFreeNameIn(data_directory);
  }
  if (IsOtherNameOfTaken(place.Path(), data_directory)) {
    place.Refuse(kTaken);
  }
  return place.Path();
}

}  // namespace corvo::telemetry::host
