#include "storage/file_access.h"

#include <sqlite3.h>

#include <system_error>
#include <utility>

#include "common/text.h"
#include "storage/failure.h"

namespace corvo::shared {
namespace {

using std::filesystem::file_type;
using telemetry::common::Error;

Error Refusal(int code, const std::filesystem::path& path, const std::string& reason) {
  return Failure(code, telemetry::common::Utf8(path) + ": " + reason);
}

// The side files of a database that SQLite opens on its own.
Error CheckSideFiles(const std::filesystem::path& file) {
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    std::filesystem::path side_file = file;
    side_file += suffix;
    const FileState state = LookAt(telemetry::common::Utf8(side_file).c_str());
    if (state.kind == FileState::Kind::kOther) {
      return Refusal(SQLITE_CANTOPEN, side_file, "not a regular file");
    }
    if (state.links > 1) {
      return Refusal(SQLITE_CANTOPEN, side_file, "a file with several links");
    }
  }
  return {};
}

}  // namespace

Error CheckDatabaseFile(const std::filesystem::path& path, std::filesystem::path& resolved) {
  std::error_code failure;
  const file_type kind = std::filesystem::status(path, failure).type();
  if (kind == file_type::not_found) {
    return Refusal(SQLITE_CANTOPEN, path, "no such file");
  }
  if (kind == file_type::none) {
    return Refusal(SQLITE_CANTOPEN, path, failure.message());
  }
  if (kind != file_type::regular) {
    const int code = kind == file_type::directory ? SQLITE_CANTOPEN_ISDIR : SQLITE_CANTOPEN;
    return Refusal(code, path, "not a regular file");
  }
  std::filesystem::path file = std::filesystem::canonical(path, failure);
  if (failure) {
    return Refusal(SQLITE_CANTOPEN, path, failure.message());
  }
  if (Error error = CheckSideFiles(file); error.Failed()) {
    return error;
  }
  resolved = std::move(file);
  return {};
}

}  // namespace corvo::shared
