#include <gtest/gtest.h>

#include "common/log.h"
#include "plugin/module_pass.h"

namespace corvo::test {
namespace {

TEST_F(ModulePass, ExportsOneFunctionUnderTwoNames) {
  const LoadedModule module;
  EXPECT_EQ(module.Symbol(LoadedModule::kPlainName), module.Symbol(LoadedModule::kQualifiedName));
}

class ModuleEntry : public ModulePass, public testing::WithParamInterface<const char*> {};

TEST_P(ModuleEntry, GivesAnObjectThatCleans) {
  CreateUsage();
  AddExpiredRow();
  const LoadedModule module;
  const auto object = module.NewObject(GetParam());
  EXPECT_EQ(Run(*object), kSuccessJson);
  EXPECT_EQ(CountRows(), 0);
}

INSTANTIATE_TEST_SUITE_P(, ModuleEntry, testing::Values(LoadedModule::kPlainName, LoadedModule::kQualifiedName));

TEST_F(ModulePass, GivesANewObjectOnEveryCall) {
  const LoadedModule module;
  const auto first = module.NewObject();
  const auto second = module.NewObject();
  EXPECT_NE(first, nullptr);
  EXPECT_NE(first, second);
}

TEST_F(ModulePass, ObjectStaysUsableWhenAnotherIsDestroyed) {
  CreateUsage();
  AddExpiredRow();
  const LoadedModule module;
  auto first = module.NewObject();
  const auto second = module.NewObject();
  first.reset();
  EXPECT_EQ(Run(*second), kSuccessJson);
  EXPECT_EQ(CountRows(), 0);
}

TEST_F(ModulePass, OlderEntryCleansToo) {
  CreateUsage();
  AddExpiredRow();
  const LoadedModule module;
  char text[] = "########";
  module.NewObject()->Execute("input", text);
  EXPECT_EQ(CountRows(), 0);
  EXPECT_STREQ(text, "########");
}

// This program initialises no logger, and neither does the module.
TEST_F(ModulePass, CreatesNoLogger) {
  const LoadedModule module;
  EXPECT_EQ(Run(*module.NewObject()), kSuccessJson);
  EXPECT_EQ(telemetry::common::DefaultLogger(), nullptr);
}

TEST_F(ModulePass, LeavesTheProcessWhenItIsUnloaded) {
  {
    const LoadedModule module;
    EXPECT_EQ(Run(*module.NewObject()), kSuccessJson);
    EXPECT_TRUE(LoadedModule::IsInProcess(LoadedModule::File()));
  }
  EXPECT_FALSE(LoadedModule::IsInProcess(LoadedModule::File()));
}

TEST_F(ModulePass, ServesEveryTimeItIsLoadedAnew) {
  CreateUsage();
  for (int time = 0; time < 20; ++time) {
    AddExpiredRow();
    {
      const LoadedModule module;
      ASSERT_EQ(Run(*module.NewObject()), kSuccessJson);
    }
    ASSERT_EQ(CountRows(), 0);
    ASSERT_FALSE(LoadedModule::IsInProcess(LoadedModule::File())) << "time " << time;
  }
}

TEST_F(ModulePass, TwoCopiesServeSideBySide) {
  CreateUsage();
  const TempDir folder;
  const auto copy = LoadedModule::CopyTo(folder.Path());
  const LoadedModule first;
  const LoadedModule second(copy);
  EXPECT_NE(first.Symbol(LoadedModule::kPlainName), second.Symbol(LoadedModule::kPlainName));
  const auto object = first.NewObject();
  const auto other = second.NewObject();
  for (auto* module : {object.get(), other.get()}) {
    AddExpiredRow();
    EXPECT_EQ(Run(*module), kSuccessJson);
    EXPECT_EQ(CountRows(), 0);
  }
}

TEST_F(ModulePass, CopyStaysUsableWhenTheOtherIsUnloaded) {
  CreateUsage();
  AddExpiredRow();
  const TempDir folder;
  const LoadedModule copy(LoadedModule::CopyTo(folder.Path()));
  {
    const LoadedModule module;
    EXPECT_EQ(Run(*module.NewObject()), kSuccessJson);
  }
  EXPECT_FALSE(LoadedModule::IsInProcess(LoadedModule::File()));
  AddExpiredRow();
  EXPECT_EQ(Run(*copy.NewObject()), kSuccessJson);
  EXPECT_EQ(CountRows(), 0);
}

}  // namespace
}  // namespace corvo::test
