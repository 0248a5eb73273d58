#include "architecture/include_rules.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>

namespace corvo::test {
namespace {

using Lines = std::vector<std::string>;

// What each layer may include besides itself.
const std::map<std::string, std::set<std::string>>& AllowedLayers() {
  static const std::map<std::string, std::set<std::string>> layers = {
      {"proto", {}},
      {"data_contracts", {"proto"}},
      {"common", {}},
      {"framework", {"common"}},
      {"storage", {"proto", "common"}},
      {"contracts", {"proto", "data_contracts", "common", "storage"}},
      {"cleanup", {"proto", "common", "framework", "storage", "contracts"}},
      {"plugin", {"proto", "common", "framework", "storage", "contracts", "cleanup"}},
      {"host", {"proto", "common", "framework", "storage", "contracts"}},
  };
  return layers;
}

// What each floor of the host may include besides itself.
const std::map<std::string, std::set<std::string>>& AllowedFloors() {
  static const std::map<std::string, std::set<std::string>> floors = {
      {"platform", {}},
      {"facts", {"platform"}},
      {"show", {"platform", "facts"}},
      {"pass", {"platform", "facts", "show"}},
      {"samples", {"platform", "facts", "show"}},
      {"cli", {"platform", "facts", "show", "pass", "samples"}},
      {"main.cc", {"platform", "cli"}},
  };
  return floors;
}

bool Matches(const std::string& text, const char* pattern) { return std::regex_search(text, std::regex(pattern)); }

std::string LayerOfFile(const std::string& path) {
  std::smatch match;
  return std::regex_search(path, match, std::regex("^(?:src/)?([^/]+)/")) ? match[1].str() : path;
}

std::string LayerOfHeader(const std::string& header) {
  return header.starts_with("corvo/telemetry/contract/") ? "proto" : header.substr(0, header.find('/'));
}

// The part of a path behind "host/": the floor's name.
std::string FloorOf(const std::string& path) {
  std::smatch match;
  return std::regex_search(path, match, std::regex("^(?:src/)?host/([^/]+)")) ? match[1].str() : "";
}

// The lines of the file that match the pattern, without those whose first group the predicate lets pass.
template <class Predicate>
Lines Offences(const SourceFile& file, const char* pattern, Predicate&& passes) {
  const std::regex expression(pattern);
  Lines offences;
  std::istringstream lines(file.text);
  for (std::string line; std::getline(lines, line);) {
    std::smatch match;
    if (std::regex_search(line, match, expression) && !passes(match[1].str())) {
      offences.push_back(file.path + ": " + line);
    }
  }
  return offences;
}

std::string Read(const std::filesystem::path& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

std::vector<SourceFile> ProductSources(const std::filesystem::path& project) {
  std::vector<SourceFile> files;
  for (const char* folder : {"proto", "src"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(project / folder)) {
      const std::string path = entry.path().lexically_relative(project).generic_string();
      if (Matches(path, "\\.(cc|h|proto)$")) {
        files.push_back({path, Read(entry.path())});
      }
    }
  }
  return files;
}

Lines WrongWayIncludes(const SourceFile& file) {
  const std::string layer = LayerOfFile(file.path);
  const auto allowed = AllowedLayers().find(layer);
  if (allowed == AllowedLayers().end()) {
    return {file.path + ": the folder " + layer + " has no place among the layers"};
  }
  return Offences(file, "^\\s*(?:#\\s*include|import)\\s*\"([^\"]+)\"", [&](const std::string& header) {
    const std::string target = LayerOfHeader(header);
    return target == layer || allowed->second.contains(target) || header.starts_with("google/protobuf/");
  });
}

Lines WrongWayFloors(const SourceFile& file) {
  const std::string floor = FloorOf(file.path);
  if (floor.empty()) {
    return {};
  }
  const auto allowed = AllowedFloors().find(floor);
  if (allowed == AllowedFloors().end()) {
    return {file.path + ": " + floor + " has no place among the floors of the host"};
  }
  return Offences(file, "^\\s*#\\s*include\\s*\"(host/[^\"]+)\"", [&](const std::string& header) {
    const std::string target = FloorOf(header);
    return target == floor || allowed->second.contains(target);
  });
}

Lines StraySqliteIncludes(const SourceFile& file) {
  // The generator of sample databases writes files of its own: the storage library never creates one.
  if (Matches(file.path, "^src/storage/.+\\.cc$") || file.path == "src/host/samples/database_writer.cc") {
    return {};
  }
  return Offences(file, "#\\s*include\\s*[<\"](sqlite3[^>\"]*)", [](const std::string&) { return false; });
}

Lines StrayConnectionIncludes(const SourceFile& file) {
  if (Matches(file.path, "^src/storage/(connection/|[^/]+\\.cc$)")) {
    return {};
  }
  return Offences(file, "#\\s*include\\s*\"(storage/connection/[^\"]*)", [](const std::string&) { return false; });
}

Lines StrayPlatformCode(const SourceFile& file) {
  if (Matches(file.path, "_(posix|windows)\\.cc$")) {
    return {};
  }
  const auto never = [](const std::string&) { return false; };
  Lines offences = Offences(
      file, "#\\s*include\\s*[<\"]((windows|unistd|dlfcn|fcntl|pthread|poll|pwd|io|direct|process)\\.h|sys/)", never);
  const Lines conditions = Offences(file, "^\\s*#\\s*(?:el)?if.*(_WIN32|__linux__|__unix__|__APPLE__|__MINGW)", never);
  offences.insert(offences.end(), conditions.begin(), conditions.end());
  return offences;
}

}  // namespace corvo::test
