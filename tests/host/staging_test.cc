#include "host/samples/staging.h"

#include <gmock/gmock.h>

#include <fstream>
#include <optional>
#include <set>

#include "support/temp_dir.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::Staging;

std::string Text(const fs::path& file) {
  std::string text;
  std::getline(std::ifstream(file), text);
  return text;
}

/// A directory with an old file, about to get new ones.
class StagedFiles : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directory(data_);
    std::ofstream(data_ / "Old.db") << "old";
    staging_.emplace(data_);
    for (const char* name : {"Old.db", "New.db"}) {
      std::ofstream(staging_->NewFile(name)) << "new";
    }
  }

  void MoveAll() {
    staging_->MoveAside("Old.db");
    staging_->MoveAside("New.db");
    staging_->Place("Old.db");
    staging_->Place("New.db");
  }

  [[nodiscard]] std::set<std::string> Names() const {
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(data_)) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }

  TempDir folder_;
  const fs::path data_ = folder_.Path() / "data";
  std::optional<Staging> staging_;
};

TEST_F(StagedFiles, TakeTheirPlacesWhenKept) {
  MoveAll();
  staging_->Keep();
  staging_.reset();
  EXPECT_EQ(Names(), (std::set<std::string>{"New.db", "Old.db"}));
  EXPECT_EQ(Text(data_ / "Old.db"), "new");
}

TEST_F(StagedFiles, LeaveNoTraceWhenTheyAreNotKept) {
  MoveAll();
  staging_.reset();
  EXPECT_EQ(Names(), std::set<std::string>{"Old.db"});
  EXPECT_EQ(Text(data_ / "Old.db"), "old");
}

TEST_F(StagedFiles, AreOutOfSightUntilTheyArePlaced) {
  EXPECT_EQ(Text(data_ / "Old.db"), "old");
  EXPECT_FALSE(fs::exists(data_ / "New.db"));
}

TEST_F(StagedFiles, AreNeverPlacedOverSomethingElse) {
  EXPECT_THROW(staging_->Place("Old.db"), fs::filesystem_error);
  EXPECT_EQ(Text(data_ / "Old.db"), "old");
}

TEST_F(StagedFiles, KeepTheOldOnesWhoseNameWasTakenMeanwhile) {
  staging_->MoveAside("Old.db");
  std::ofstream(data_ / "Old.db") << "somebody else's";
  staging_.reset();
  EXPECT_EQ(Text(data_ / "Old.db"), "somebody else's");
  ASSERT_EQ(Names().size(), 2U);
  EXPECT_EQ(Text(data_ / *Names().begin() / "old" / "Old.db"), "old");
}

TEST(StagedDirectories, GoWhenNothingCameIntoThem) {
  const TempDir folder;
  { const Staging staging(folder.Path() / "a" / "b"); }
  EXPECT_TRUE(fs::is_empty(folder.Path()));
}

TEST(StagedDirectories, StayWhenSomebodyElseUsesThem) {
  const TempDir folder;
  {
    const Staging staging(folder.Path() / "a" / "b");
    std::ofstream(folder.Path() / "a" / "other") << "somebody else's";
  }
  EXPECT_TRUE(fs::exists(folder.Path() / "a" / "other"));
  EXPECT_FALSE(fs::exists(folder.Path() / "a" / "b"));
}

}  // namespace
}  // namespace corvo::test
