#include "package/elf_file_posix.h"

#include <cstdio>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace corvo::test {
namespace {

// The output of a command; a command that fails fails the test.
std::string OutputOf(const std::string& command) {
  FILE* const pipe = popen(command.c_str(), "r");
  std::string output;
  for (int c = pipe == nullptr ? EOF : std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
    output.push_back(static_cast<char>(c));
  }
  if (pipe == nullptr || pclose(pipe) != 0) {
    throw std::runtime_error(command + " failed:\n" + output);
  }
  return output;
}

std::string Quoted(const std::string& file) { return "'" + file + "'"; }

}  // namespace

std::vector<ExportedSymbol> ExportedSymbols(const std::string& file) {
  std::istringstream lines(OutputOf("nm --dynamic --defined-only --format=posix " + Quoted(file)));
  std::vector<ExportedSymbol> symbols;
  for (std::string line; std::getline(lines, line);) {
    ExportedSymbol symbol;
    std::istringstream(line) >> symbol.name >> symbol.type >> symbol.address;
    symbols.push_back(symbol);
  }
  return symbols;
}

std::vector<std::string> ExportedNames(const std::string& file) {
  std::istringstream lines(OutputOf("nm --dynamic --defined-only --demangle --format=just-symbols " + Quoted(file)));
  std::vector<std::string> names;
  for (std::string line; std::getline(lines, line);) {
    names.push_back(line);
  }
  return names;
}

std::set<std::string> ExportedFunctions(const std::string& file, const std::string& prefix) {
  std::set<std::string> functions;
  for (const std::string& name : ExportedNames(file)) {
    if (name.starts_with(prefix)) {
      functions.insert(name.substr(prefix.size(), name.find_first_of("([") - prefix.size()));
    }
  }
  return functions;
}

std::string DynamicSection(const std::string& file) { return OutputOf("LC_ALL=C readelf -W -d " + Quoted(file)); }
std::string ProgramHeaders(const std::string& file) { return OutputOf("LC_ALL=C readelf -W -l " + Quoted(file)); }
std::string BindEverything(const std::string& file) { return OutputOf("LC_ALL=C ldd -r " + Quoted(file) + " 2>&1"); }

}  // namespace corvo::test
