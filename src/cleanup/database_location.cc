#include "cleanup/database_location.h"

#include "common/log.h"
#include "contracts/lookups.h"
#include "storage/database_name.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::cleanup {
namespace {

using google::protobuf::Message;

// The same text on every platform, whatever data directory is set; only on Windows is it a directory, elsewhere the
// begin of a file name. It serves bare names alone: the marker of an invalid path, and a file that the storage library
// gives no path for.
constexpr const char* kDataDirectory = "c:\\ProgramData\\Corvo\\Telemetry\\Data\\";

}  // namespace

std::string GetDatabaseFileName(const Message* message) {
  const std::string name = contracts::GetDatabaseName(message);
  return name.empty() ? "[INVALID FILE]" : shared::AddDatabaseExtension(name);
}

std::string GetDatabaseFullPathName(const Message* message) {
  std::string result = "[INVALID PATHNAME]";
  if (message == nullptr) {
    return result;
  }
  try {
    const std::string file = GetDatabaseFileName(message);
    shared::TelemetryStorage storage(file.c_str(), "");
    result = storage.GetDataBasePath();
    // A storage library may answer with the directory alone. Containment is enough: the name may stand anywhere.
    if (result.find(file) == std::string::npos) {
      result += file;
    }
  } catch (...) {
    CORVO_LOG(plog::error, "GetDatabaseFullPathName") << "GetDatabaseFullPathName : exception - UNKNOWN";
  }
  return result;
}

bool DatabaseFileExists(const char* path) {
  std::filesystem::path file(path);
  if (!file.has_parent_path()) {
    file = std::filesystem::path(std::string(kDataDirectory) + path);
  }
  return EntryExists(file);
}

}  // namespace corvo::telemetry::cleanup
