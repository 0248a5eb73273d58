#include <gtest/gtest.h>

#include "support/database.h"
#include "support/fixture_data.h"
#include "support/temp_dir.h"
#include "system/pass.h"

namespace corvo::test {
namespace {

// The child waits for its next line while it is measured.
TEST(LongRun, TwoHundredPassesOfOneProcessLeakNeitherFilesNorMemory) {
  constexpr int kWarmUp = 50;
  constexpr int kPasses = 200;
  constexpr std::int64_t kBound = 5'000'000;  // a connection left open in every second pass would be more
  TempDir directory;
  WriteFixture(directory.Path(), {.rows = {20, 20}, .databases = {"Cache", "DeviceUsage"}});
  Database database(directory.Path() / "DeviceUsage.db");
  PassRunner runner(directory.Path());
  std::int64_t files = 0;
  std::int64_t memory = 0;
  for (int pass = 1; pass <= kPasses; ++pass) {
    database.Run(InsertRows("PowerEvents", pass * 100, 10, 400));
    ASSERT_TRUE(Succeeded(runner.Run()));
    ASSERT_EQ(database.Count("PowerEvents"), 20);
    if (pass == kWarmUp) {
      files = runner.Process().OpenFiles();
      memory = runner.Process().ResidentBytes();
    }
  }
  EXPECT_EQ(runner.Process().OpenFiles(), files);
  EXPECT_LE(runner.Process().ResidentBytes() - memory, kBound);
}

}  // namespace
}  // namespace corvo::test
