#include "windows/pe_file_windows.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace corvo::test {

PeFile::PeFile(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  content_.assign(std::istreambuf_iterator<char>(stream), {});
  if (content_.size() < sizeof(IMAGE_DOS_HEADER) || Headers().Signature != IMAGE_NT_SIGNATURE ||
      Headers().OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR64_MAGIC) {
    throw std::runtime_error(file + " is no 64-bit program or library");
  }
}

std::size_t PeFile::HeadersOffset() const { return static_cast<std::size_t>(At<IMAGE_DOS_HEADER>(0)->e_lfanew); }

std::vector<IMAGE_SECTION_HEADER> PeFile::Sections() const {
  const std::size_t first =
      HeadersOffset() + offsetof(IMAGE_NT_HEADERS64, OptionalHeader) + Headers().FileHeader.SizeOfOptionalHeader;
  const auto* sections = At<IMAGE_SECTION_HEADER>(first);
  return {sections, sections + Headers().FileHeader.NumberOfSections};
}

template <class T>
const T* PeFile::AtAddress(DWORD address) const {
  for (const IMAGE_SECTION_HEADER& section : Sections()) {
    if (address >= section.VirtualAddress && address < section.VirtualAddress + section.SizeOfRawData) {
      return At<T>(address - section.VirtualAddress + section.PointerToRawData);
    }
  }
  throw std::runtime_error("an address outside all sections");
}

std::vector<ExportedName> PeFile::Exports() const {
  const IMAGE_DATA_DIRECTORY& where = Headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
  const auto* directory = AtAddress<IMAGE_EXPORT_DIRECTORY>(where.VirtualAddress);
  const auto* names = AtAddress<DWORD>(directory->AddressOfNames);
  const auto* ordinals = AtAddress<WORD>(directory->AddressOfNameOrdinals);
  const auto* functions = AtAddress<DWORD>(directory->AddressOfFunctions);
  std::vector<ExportedName> all;
  for (DWORD index = 0; index < directory->NumberOfNames; ++index) {
    all.push_back({AtAddress<char>(names[index]), functions[ordinals[index]]});
  }
  return all;
}

std::string VersionText(const std::string& file, const std::string& name) {
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeA(file.c_str(), &ignored);
  std::vector<char> resource(size);
  void* text = nullptr;
  UINT length = 0;
  // US English, UTF-16.
  const std::string entry = "\\StringFileInfo\\040904B0\\" + name;
  if (size == 0 || GetFileVersionInfoA(file.c_str(), 0, size, resource.data()) == 0 ||
      VerQueryValueA(resource.data(), entry.c_str(), &text, &length) == 0) {
    return {};
  }
  return static_cast<const char*>(text);
}

}  // namespace corvo::test
