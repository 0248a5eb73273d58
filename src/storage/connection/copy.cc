#include "storage/connection/copy.h"

#include <sqlite3.h>

#include <memory>

#include "storage/connection/failure.h"
#include "storage/telemetry_storage.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

constexpr int kPagesAtOnce = 2000;
constexpr int kPatience = 2;  // beginnings anew that others may cause

struct CloseHandle {
  void operator()(sqlite3* handle) const { sqlite3_close(handle); }
};
using Handle = std::unique_ptr<sqlite3, CloseHandle>;

/// By SQLite's own interface of the platform: ours lets a connection touch its own database alone, and makes none.
Error Create(const std::string& file, Handle& target) {
  constexpr int kFlags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_EXCLUSIVE | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOFOLLOW;
  sqlite3* handle = nullptr;
  const int code = sqlite3_open_v2(file.c_str(), &handle, kFlags, nullptr);
  target.reset(handle);
  if (code == SQLITE_OK &&
      sqlite3_exec(handle, "PRAGMA synchronous=OFF; PRAGMA journal_mode=OFF", nullptr, nullptr, nullptr) == SQLITE_OK) {
    return {};
  }
  return Failure(handle);
}

/// A read lock on the source, while it is held: its content does not change for us.
class Stillness {
 public:
  explicit Stillness(sqlite3* source) : source_(source) {}
  Stillness(const Stillness&) = delete;
  Stillness& operator=(const Stillness&) = delete;
  ~Stillness() {
    if (held_) {
      sqlite3_exec(source_, "ROLLBACK", nullptr, nullptr, nullptr);
    }
  }

  int Begin() {
    const int code =
        sqlite3_exec(source_, "BEGIN; SELECT 1 FROM main.sqlite_schema LIMIT 1", nullptr, nullptr, nullptr);
    held_ = sqlite3_get_autocommit(source_) == 0;
    return code;
  }

 private:
  sqlite3* source_;
  bool held_ = false;
};

int CopyPages(sqlite3* source, sqlite3_backup* backup) {
  Stillness stillness(source);
  int beginnings = 0;
  int code = SQLITE_OK;
  int left = 0;
  while (code == SQLITE_OK) {
    if (StatementsInterrupted()) {
      return SQLITE_INTERRUPT;
    }
    code = sqlite3_backup_step(backup, kPagesAtOnce);
    const int now_left = sqlite3_backup_remaining(backup);
    if (code == SQLITE_OK && now_left > left && ++beginnings == kPatience) {
      code = stillness.Begin();
    }
    left = now_left;
  }
  return code == SQLITE_DONE ? SQLITE_OK : code;
}

}  // namespace

Error CopyDatabase(sqlite3* source, const std::string& file) {
  Handle target;
  if (Error error = Create(file, target); error.Failed()) {
    return error;
  }
  sqlite3_backup* backup = sqlite3_backup_init(target.get(), "main", source, "main");
  if (backup == nullptr) {
    return Failure(target.get());
  }
  const int code = CopyPages(source, backup);
  sqlite3_backup_finish(backup);
  return code == SQLITE_OK ? Error() : Failure(code, "while it was copied");
}

}  // namespace corvo::shared
