#include <gtest/gtest.h>

#include "support/fixture_data.h"
#include "support/temp_dir.h"
#include "system/pass.h"

namespace corvo::test {
namespace {

TEST(MemoryCheck, AWholePassReadsNothingUninitialisedAndLosesNoMemory) {
  constexpr int kFound = 99;
  TempDir directory;
  WriteFixture(directory.Path(), {.rows = {5, 5}, .exceptions = {{"BatteryHealthLog", {5, 9100}}}});
  PassRunner runner(
      directory.Path(), {},
      {CORVO_VALGRIND, "--quiet", "--num-callers=30", "--leak-check=full",
       "--show-leak-kinds=definite,indirect,possible", "--errors-for-leak-kinds=definite,indirect,possible",
       std::string("--suppressions=") + CORVO_SUPPRESSIONS, "--error-exitcode=" + std::to_string(kFound)});

  EXPECT_TRUE(Succeeded(runner.Run()));
  runner.Process().EndInput();
  EXPECT_EQ(runner.Process().Wait(), 0) << kFound << " means that memcheck has found something, shown above";
}

}  // namespace
}  // namespace corvo::test
