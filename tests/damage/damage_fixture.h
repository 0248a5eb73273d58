#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>

#include "damage/image.h"
#include "damage/one_pass.h"
#include "storage/storage_options.h"
#include "support/database.h"
#include "support/environment.h"
#include "support/temp_dir.h"

namespace corvo::test {

/// A folder with the database that a pass cleans, and statements that end in time.
class DamageTest : public testing::Test {
 protected:
  [[nodiscard]] Database Open() const { return Database(DatabaseFile(Folder())); }
  [[nodiscard]] const std::filesystem::path& Folder() const { return folder_.Path(); }

  /// Changes the bytes of the database behind SQLite's back.
  template <class Change>
  void Edit(const Change& change) const {
    Image image = Image::Read(DatabaseFile(Folder()));
    change(image.database);
    image.Write(DatabaseFile(Folder()));
  }

  [[nodiscard]] telemetry::common::Error Clean() const { return CleanFolder(Folder()); }

 private:
  /// Thousands of small files: in memory where the system has a folder for that.
  static TempDir MakeFolder() {
    if (std::getenv("TMPDIR") == nullptr && std::filesystem::is_directory("/dev/shm")) {
      SetEnvironment("TMPDIR", "/dev/shm");
    }
    return TempDir();
  }

  static shared::StorageOptions Options() {
    shared::StorageOptions options;
    options.busy_timeout = std::chrono::milliseconds(0);
    options.statement_time_limit = std::chrono::seconds(10);
    return options;
  }

  shared::StorageOptionsScope options_{Options()};
  TempDir folder_ = MakeFolder();
};

}  // namespace corvo::test
