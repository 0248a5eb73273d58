#include <gtest/gtest.h>

#include <new>

#include "plugin/module_pass.h"
#include "support/allocation_failure.h"

namespace corvo::test {
namespace {

TEST_F(ModulePass, LetsTheHostKnowWhenThereIsNoMemoryForAnObject) {
  const LoadedModule module;
  const auto load = reinterpret_cast<LoadedModule::LoadFunction>(module.Symbol(LoadedModule::kPlainName));
  {
    const AllocationFailure failure(0);
    EXPECT_THROW(static_cast<void>(load()), std::bad_alloc);
  }
  EXPECT_NE(module.NewObject(), nullptr);
}

}  // namespace
}  // namespace corvo::test
