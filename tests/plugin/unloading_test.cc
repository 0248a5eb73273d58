#include <gtest/gtest.h>

#include "plugin/module_pass.h"
#include "support/process_memory.h"

namespace corvo::test {
namespace {

constexpr int kWarmUp = 100;
constexpr int kTimes = 1'000;
constexpr std::int64_t kMostGrowth = 1'000'000;  // a kilobyte each time

/// Loads, runs and unloads the module; every tenth time there is a database to clean, which waits for the disk.
void LoadRunUnload(int time, ModulePass& pass) {
  const bool cleans = time % 10 == 0;
  pass.SetHasData(cleans);
  if (cleans) {
    pass.AddExpiredRow();
  }
  {
    const LoadedModule module;
    ASSERT_EQ(ModulePass::Run(*module.NewObject()), ModulePass::kSuccessJson);
  }
  ASSERT_EQ(pass.CountRows(), 0);
  ASSERT_FALSE(LoadedModule::IsInProcess(LoadedModule::File()));
}

TEST_F(ModulePass, LoadedAndUnloadedManyTimesTakesNoMoreMemory) {
  CreateUsage();
  for (int time = 0; time < kWarmUp; ++time) {
    ASSERT_NO_FATAL_FAILURE(LoadRunUnload(time, *this));
  }
  const std::int64_t after_warm_up = ResidentBytes();
  ASSERT_GT(after_warm_up, 0);
  for (int time = 0; time < kTimes; ++time) {
    ASSERT_NO_FATAL_FAILURE(LoadRunUnload(time, *this)) << "time " << time;
  }
  const std::int64_t growth = ResidentBytes() - after_warm_up;
  RecordProperty("growth_bytes", std::to_string(growth));
  EXPECT_LE(growth, kMostGrowth);
}

}  // namespace
}  // namespace corvo::test
