#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace corvo::test {

/// One source file of the product.
struct SourceFile {
  std::string path;  ///< relative to the project, with slashes
  std::string text;
};

/// Every source file under proto/ and src/.
[[nodiscard]] std::vector<SourceFile> ProductSources(const std::filesystem::path& project);

// Each rule answers with the offending lines, as "path: line"; none when the file keeps the rule.

/// A layer includes itself and the layers below it. Project headers are spelled from src/ or proto/.
[[nodiscard]] std::vector<std::string> WrongWayIncludes(const SourceFile& file);

/// A floor of the host (src/host/<floor>/) includes itself and the floors below it. Files elsewhere keep the rule.
[[nodiscard]] std::vector<std::string> WrongWayFloors(const SourceFile& file);

/// SQLite is seen by the sources of src/storage and by the one file that makes sample databases.
[[nodiscard]] std::vector<std::string> StraySqliteIncludes(const SourceFile& file);

/// What a connection is made of is the storage's own: its sources see it, its headers and other layers do not.
[[nodiscard]] std::vector<std::string> StrayConnectionIncludes(const SourceFile& file);

/// The operating system is seen by platform files alone (name_posix.cc, name_windows.cc).
[[nodiscard]] std::vector<std::string> StrayPlatformCode(const SourceFile& file);

}  // namespace corvo::test
