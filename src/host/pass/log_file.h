#pragma once

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace corvo::telemetry::host {

/// The names that a log of this name has or takes: its own, and those that its former parts get, the newest first
/// (run.log, run.1.log, run.2.log).
[[nodiscard]] std::vector<std::filesystem::path> LogFileNames(const std::filesystem::path& file);

/// A file that lines are added to. When it has grown to 5 MB it becomes a former part, of which two are kept. A
/// terminal or the null device is written to as it is.
class LogFile {
 public:
  /// @throws std::system_error when the file cannot be opened.
  explicit LogFile(std::filesystem::path file);

  /// @return 0, or the `errno` of why the line was not written.
  [[nodiscard]] int Write(const std::string& line);

 private:
  struct Close {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
  };

  int Open();
  void MakeFormer();

  std::filesystem::path file_;
  bool grows_ = false;  ///< a device does not
  std::size_t bytes_ = 0;
  std::unique_ptr<std::FILE, Close> stream_;
};

}  // namespace corvo::telemetry::host
