#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace corvo::telemetry::host {

/// New files that come into a directory all together or not at all, in place of old ones or of none.
///
/// They are written to a folder of their own within the directory, so that taking their places is a mere renaming. What
/// has happened until `Keep` is undone by the destructor: new files and directories are removed, old files are back.
/// Should an old file's place be taken meanwhile, it stays in the folder, which then stays, too.
class Staging {
 public:
  /// Makes the directory with its missing parents, and the folder.
  ///
  /// @param directory absolute.
  /// @throws CommandFailure (`kUsage`) when one of them cannot be made.
  explicit Staging(std::filesystem::path directory);
  Staging(const Staging&) = delete;
  Staging& operator=(const Staging&) = delete;
  ~Staging();

  /// Where to write the new file of this name.
  [[nodiscard]] std::filesystem::path NewFile(const std::string& name) const;

  /// Takes the directory's entry of this name out of the way, if there is one.
  ///
  /// @throws std::filesystem::filesystem_error, as `Place` does.
  void MoveAside(const std::string& name);

  /// Moves the new file of this name to its place, where nothing may be.
  void Place(const std::string& name);

  /// Makes it final: the old files go.
  void Keep() noexcept { kept_ = true; }

 private:
  void MakeDirectory();
  void MakeFolder();
  void Move(const std::filesystem::path& from, const std::filesystem::path& to);
  [[nodiscard]] bool MoveBack() const;
  void RemoveMadeDirectories() const;

  std::filesystem::path directory_;
  std::filesystem::path folder_;
  std::vector<std::filesystem::path> made_;  // outermost first
  std::vector<std::pair<std::filesystem::path, std::filesystem::path>> moves_;
  bool kept_ = false;
};

}  // namespace corvo::telemetry::host
