#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "support/database.h"
#include "support/fixture_data.h"
#include "support/temp_dir.h"
#include "system/pass.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

fs::path ProcessFolder(pid_t id) { return fs::path("/proc") / std::to_string(id); }

std::ptrdiff_t OpenFiles(pid_t id) {
  return std::distance(fs::directory_iterator(ProcessFolder(id) / "fd"), fs::directory_iterator());
}

long ResidentBytes(pid_t id) {
  long total = 0;
  long resident = 0;
  std::ifstream(ProcessFolder(id) / "statm") >> total >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

// The child waits for its next line while it is measured.
TEST(LongRun, TwoHundredPassesOfOneProcessLeakNeitherFilesNorMemory) {
  constexpr int kWarmUp = 50;
  constexpr int kPasses = 200;
  constexpr long kBound = 5'000'000;  // a connection left open in every second pass would be more
  TempDir directory;
  WriteFixture(directory.Path(), {.rows = {20, 20}, .databases = {"Cache", "DeviceUsage"}});
  Database database(directory.Path() / "DeviceUsage.db");
  PassRunner runner(directory.Path());
  std::ptrdiff_t files = 0;
  long memory = 0;
  for (int pass = 1; pass <= kPasses; ++pass) {
    database.Run(InsertRows("PowerEvents", pass * 100, 10, 400));
    ASSERT_TRUE(Succeeded(runner.Run()));
    ASSERT_EQ(database.Count("PowerEvents"), 20);
    if (pass == kWarmUp) {
      files = OpenFiles(runner.Process().Id());
      memory = ResidentBytes(runner.Process().Id());
    }
  }
  EXPECT_EQ(OpenFiles(runner.Process().Id()), files);
  EXPECT_LE(ResidentBytes(runner.Process().Id()) - memory, kBound);
}

}  // namespace
}  // namespace corvo::test
