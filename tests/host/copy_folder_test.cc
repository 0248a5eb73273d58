#include "host/pass/copy_folder.h"

#include <gmock/gmock.h>

#include <fstream>
#include <optional>

#include "support/temp_dir.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::CopyFolder;
using telemetry::host::InstanceLock;
using telemetry::host::RemoveAbandonedCopies;

class CopyFolders : public testing::Test {
 protected:
  /// What a killed plan leaves.
  [[nodiscard]] fs::path Abandon(const std::string& name = "corvo-telemetry-abc123") const {
    const fs::path folder = place_.Path() / name;
    fs::create_directories(folder / "copies");
    std::ofstream(folder / "copies" / "Cache.db") << "copy";
    std::ofstream(folder / InstanceLock::kFileName) << "process 1, since 2024-05-01 10:00:00 UTC\n";
    fs::permissions(folder, fs::perms::owner_all);
    return folder;
  }

  TempDir place_;
};

TEST_F(CopyFolders, GoWithTheirCopies) {
  {
    const CopyFolder folder(place_.Path());
    std::ofstream(folder.Path() / "Cache.db") << "copy";
  }
  EXPECT_TRUE(fs::is_empty(place_.Path()));
}

TEST_F(CopyFolders, OfKilledPlansAreRemoved) {
  const fs::path folder = Abandon();
  RemoveAbandonedCopies(place_.Path());
  EXPECT_FALSE(fs::exists(folder));
}

TEST_F(CopyFolders, OfLivingPlansStay) {
  const CopyFolder folder(place_.Path());
  std::ofstream(folder.Path() / "Cache.db") << "copy";
  RemoveAbandonedCopies(place_.Path());
  EXPECT_TRUE(fs::exists(folder.Path() / "Cache.db"));
}

TEST_F(CopyFolders, WithAnythingElseInThemStay) {
  const fs::path more = Abandon();
  std::ofstream(more / "HealthLog.db") << "of a user";
  const fs::path other_name = Abandon("telemetry");
  const fs::path no_copies = Abandon("corvo-telemetry-def456");
  fs::remove_all(no_copies / "copies");
  RemoveAbandonedCopies(place_.Path());
  EXPECT_TRUE(fs::exists(more / "copies" / "Cache.db"));
  EXPECT_TRUE(fs::exists(other_name / "copies" / "Cache.db"));
  EXPECT_TRUE(fs::exists(no_copies));
}

TEST_F(CopyFolders, OfAPlaceThatIsNotThereAreNone) {
  EXPECT_NO_THROW(RemoveAbandonedCopies(place_.Path() / "missing"));
}

}  // namespace
}  // namespace corvo::test
