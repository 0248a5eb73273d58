#include "storage/file_watch.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <utility>

namespace corvo::test {
namespace {

std::function<void(const FileCall& call)> watcher;
sqlite3_vfs* platform = nullptr;
sqlite3_vfs watched{};

void Show(const char* operation, const char* path) {
  if (watcher) {
    watcher({operation, path != nullptr ? path : ""});
  }
}

int Open(sqlite3_vfs* /*vfs*/, sqlite3_filename path, sqlite3_file* file, int flags, int* out_flags) {
  Show("open", path);
  return platform->xOpen(platform, path, file, flags, out_flags);
}

int Delete(sqlite3_vfs* /*vfs*/, const char* path, int sync_directory) {
  Show("delete", path);
  return platform->xDelete(platform, path, sync_directory);
}

int Access(sqlite3_vfs* /*vfs*/, const char* path, int flags, int* result) {
  Show("access", path);
  return platform->xAccess(platform, path, flags, result);
}

/// In place before the first storage opens a file: from then on the storage may keep what it found.
class WatchedPlatform : public testing::Environment {
 public:
  void SetUp() override {
    platform = sqlite3_vfs_find(nullptr);
    watched = *platform;
    watched.zName = "watched";
    watched.xOpen = &Open;
    watched.xDelete = &Delete;
    watched.xAccess = &Access;
    ASSERT_EQ(sqlite3_vfs_register(&watched, 1), SQLITE_OK);
  }
};

const testing::Environment* const kWatchedPlatform = testing::AddGlobalTestEnvironment(new WatchedPlatform);

}  // namespace

FileWatch::FileWatch(std::function<void(const FileCall& call)> before) { watcher = std::move(before); }

FileWatch::~FileWatch() { watcher = nullptr; }

}  // namespace corvo::test
