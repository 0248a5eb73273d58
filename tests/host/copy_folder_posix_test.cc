#include <gmock/gmock.h>
#include <sys/stat.h>

#include <fstream>

#include "host/pass/copy_folder.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::InstanceLock;

/// A folder like one that a killed plan leaves.
class PlantedCopyFolder : public testing::Test {
 protected:
  void MakeAt(const fs::path& folder) const {
    fs::create_directories(folder / "copies");
    std::ofstream(folder / InstanceLock::kFileName).flush();
    ASSERT_EQ(chmod(folder.c_str(), 0700), 0);
  }

  TempDir place_;
  TempDir elsewhere_;
  const fs::path named_ = place_.Path() / "corvo-telemetry-abc123";
};

TEST_F(PlantedCopyFolder, BehindALinkStays) {
  MakeAt(elsewhere_.Path() / "folder");
  fs::create_directory_symlink(elsewhere_.Path() / "folder", named_);
  telemetry::host::RemoveAbandonedCopies(place_.Path());
  EXPECT_TRUE(fs::exists(elsewhere_.Path() / "folder" / "copies"));
}

TEST_F(PlantedCopyFolder, WithALinkForItsCopiesStays) {
  MakeAt(named_);
  fs::create_directory(elsewhere_.Path() / "data");
  fs::remove(named_ / "copies");
  fs::create_directory_symlink(elsewhere_.Path() / "data", named_ / "copies");
  telemetry::host::RemoveAbandonedCopies(place_.Path());
  EXPECT_TRUE(fs::exists(elsewhere_.Path() / "data"));
  EXPECT_TRUE(fs::exists(named_));
}

TEST_F(PlantedCopyFolder, ThatOthersMayWriteStays) {
  MakeAt(named_);
  ASSERT_EQ(chmod(named_.c_str(), 0777), 0);
  telemetry::host::RemoveAbandonedCopies(place_.Path());
  EXPECT_TRUE(fs::exists(named_ / "copies"));
}

TEST_F(PlantedCopyFolder, OfAPlaceThatOthersMayWriteStays) {
  MakeAt(named_);
  ASSERT_EQ(chmod(place_.Path().c_str(), 0777), 0);
  telemetry::host::RemoveAbandonedCopies(place_.Path());
  EXPECT_TRUE(fs::exists(named_ / "copies"));
}

}  // namespace
}  // namespace corvo::test
