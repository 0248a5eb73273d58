#pragma once

#include <set>
#include <string>
#include <vector>

namespace corvo::test {

/// One symbol that a shared library offers to others.
struct ExportedSymbol {
  std::string name;  ///< as the linker knows it
  char type;         ///< as nm writes it: T code, D data, W weak, u unique in the process …
  std::string address;
};

[[nodiscard]] std::vector<ExportedSymbol> ExportedSymbols(const std::string& file);

/// The names of the exported symbols as a C++ reader knows them.
[[nodiscard]] std::vector<std::string> ExportedNames(const std::string& file);

/// The functions of a namespace that the file exports, without the prefix and without their arguments, each name once.
[[nodiscard]] std::set<std::string> ExportedFunctions(const std::string& file, const std::string& prefix);

/// What `readelf` says about the dynamic section and the program headers.
[[nodiscard]] std::string DynamicSection(const std::string& file);
[[nodiscard]] std::string ProgramHeaders(const std::string& file);

/// What the loader has to say when it binds every symbol of the file, outside any program.
[[nodiscard]] std::string BindEverything(const std::string& file);

}  // namespace corvo::test
