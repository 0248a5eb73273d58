#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/platform/trust.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

namespace fs = std::filesystem;

/// A folder of this user's own, with another in it, below the system's folder for temporary files, which is sticky.
class Trust : public testing::Test {
 protected:
  Trust() {
    umask(022);
    fs::create_directories(data_);
    SetMode(folder_.Path(), 0755);
  }

  static void SetMode(const fs::path& path, mode_t mode) { ASSERT_EQ(chmod(path.c_str(), mode), 0); }

  test::TempDir folder_;
  fs::path parent_ = folder_.Path() / "parent";
  fs::path data_ = parent_ / "data";
};

TEST_F(Trust, NobodyElseMayWriteFoldersOfOnesOwn) {
  EXPECT_EQ(WhoElseMayWrite(data_), "");
  EXPECT_EQ(WhoElseMayWrite(data_ / ""), "");
  EXPECT_EQ(WhoElseMayWrite(data_ / ".." / "." / "data"), "");
  EXPECT_EQ(WhoElseMayWrite("/usr"), "");
}

TEST_F(Trust, TheFolderThatOthersMayWriteIsNamed) {
  SetMode(data_, 0775);
  EXPECT_EQ(WhoElseMayWrite(data_), data_.string() + " may be written by its group");
  SetMode(data_, 0777);
  EXPECT_EQ(WhoElseMayWrite(data_), data_.string() + " may be written by everybody");
}

TEST_F(Trust, AFolderAboveCountsAsWell) {
  SetMode(parent_, 0775);
  EXPECT_EQ(WhoElseMayWrite(data_), parent_.string() + " may be written by its group");
}

TEST_F(Trust, AStickyFolderIsGoodAboveOnly) {
  SetMode(parent_, 01777);
  EXPECT_EQ(WhoElseMayWrite(data_), "");
  EXPECT_EQ(WhoElseMayWrite(parent_), parent_.string() + " may be written by everybody");
  EXPECT_EQ(WhoElseMayWrite(parent_ / ""), (parent_ / "").string() + " may be written by everybody");
}

TEST_F(Trust, ALinkIsJudgedByTheWayToWhereItLeads) {
  const fs::path link = folder_.Path() / "link";
  const fs::path second = folder_.Path() / "second";
  fs::create_symlink("parent/data", link);
  fs::create_symlink(link, second);
  EXPECT_EQ(WhoElseMayWrite(second), "");
  SetMode(parent_, 0777);
  EXPECT_EQ(WhoElseMayWrite(second), parent_.string() + " may be written by everybody");
  EXPECT_EQ(WhoElseMayWrite(second / "deeper"), parent_.string() + " may be written by everybody");
}

TEST_F(Trust, ALinkInAFolderThatOthersMayWriteIsNoWayToATrustedOne) {
  const test::TempDir open;
  const fs::path link = open.Path() / "link";
  fs::create_symlink(data_, link);
  SetMode(open.Path(), 0777);
  EXPECT_EQ(WhoElseMayWrite(link), open.Path().string() + " may be written by everybody");
}

TEST_F(Trust, WhatCannotBeLookedAtIsNotTrusted) {
  EXPECT_EQ(WhoElseMayWrite(data_ / "missing"),
            (data_ / "missing").string() + " cannot be judged: No such file or directory");
  fs::create_symlink("loop", data_ / "loop");
  EXPECT_EQ(WhoElseMayWrite(data_ / "loop"),
            (data_ / "loop").string() + " cannot be judged: Too many levels of symbolic links");
}

TEST_F(Trust, WhatBelongsToAnotherUserIsNot) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can give a folder away";
  }
  fs::create_symlink("data", parent_ / "link");
  ASSERT_EQ(lchown((parent_ / "link").c_str(), 1000, 0), 0);
  EXPECT_EQ(WhoElseMayWrite(parent_ / "link"), (parent_ / "link").string() + " belongs to another user (uid 1000)");
  ASSERT_EQ(chown(parent_.c_str(), 1000, 0), 0);
  EXPECT_EQ(WhoElseMayWrite(data_), parent_.string() + " belongs to another user (uid 1000)");
}

TEST_F(Trust, OnlyRootIsPrivileged) { EXPECT_EQ(IsPrivileged(), geteuid() == 0); }

}  // namespace
}  // namespace corvo::telemetry::host
