#pragma once

#include <filesystem>
#include <string>

namespace corvo::test {

/// A new empty folder, gone with its content when the object is destroyed.
class TempDir {
 public:
  TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  ~TempDir();

  [[nodiscard]] const std::filesystem::path& Path() const { return path_; }

  /// The path of an entry of the folder, as narrow text.
  [[nodiscard]] std::string operator/(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

}  // namespace corvo::test
