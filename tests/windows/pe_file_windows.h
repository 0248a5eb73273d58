#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace corvo::test {

/// One name that a library exports.
struct ExportedName {
  std::string name;
  DWORD address;  ///< relative to the library's beginning
};

/// A program or library as the loader reads it.
class PeFile {
 public:
  /// Throws std::runtime_error when the file is no 64-bit program or library.
  explicit PeFile(const std::string& file);

  [[nodiscard]] WORD Characteristics() const { return Headers().OptionalHeader.DllCharacteristics; }
  [[nodiscard]] std::vector<IMAGE_SECTION_HEADER> Sections() const;
  [[nodiscard]] std::vector<ExportedName> Exports() const;

 private:
  template <class T>
  const T* At(std::size_t offset) const {
    return reinterpret_cast<const T*>(content_.data() + offset);
  }
  /// What lies at an address relative to the library's beginning.
  template <class T>
  const T* AtAddress(DWORD address) const;
  [[nodiscard]] std::size_t HeadersOffset() const;
  [[nodiscard]] const IMAGE_NT_HEADERS64& Headers() const { return *At<IMAGE_NT_HEADERS64>(HeadersOffset()); }

  std::vector<char> content_;
};

/// A text of the file's version resource, for example "FileVersion"; empty when it has none.
[[nodiscard]] std::string VersionText(const std::string& file, const std::string& name);

}  // namespace corvo::test
