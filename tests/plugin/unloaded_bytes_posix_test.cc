// A program of its own: its operator new, which the libraries and the module use too, counts the bytes in use.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include "contracts/catalogue.h"
#include "plugin/module_pass.h"

namespace corvo::test {
namespace {

std::int64_t bytes_in_use = 0;

constexpr std::size_t kHeader = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

// The lists that loading builds: contracts and databases, the excluded name, three times the number 0.
std::int64_t ListBytes() {
  const std::size_t instances =
      telemetry::contracts::ContractCatalogue().size() + telemetry::contracts::DatabaseCatalogue().size();
  return static_cast<std::int64_t>(instances * sizeof(void*) + sizeof(std::string) + 3 * sizeof(std::uint32_t));
}

}  // namespace
}  // namespace corvo::test

void* operator new(std::size_t size) {
  auto* const block = static_cast<char*>(std::malloc(size + corvo::test::kHeader));
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  *reinterpret_cast<std::size_t*>(block) = size;
  corvo::test::bytes_in_use += static_cast<std::int64_t>(size);
  return block + corvo::test::kHeader;
}

void operator delete(void* memory) noexcept {
  if (memory != nullptr) {
    auto* const block = static_cast<char*>(memory) - corvo::test::kHeader;
    corvo::test::bytes_in_use -= static_cast<std::int64_t>(*reinterpret_cast<std::size_t*>(block));
    std::free(block);
  }
}

void operator delete(void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }

namespace corvo::test {
namespace {

/// Bytes that the libraries build for themselves when they are first used stay with them.
class UnloadedBytes : public ModulePass {
 protected:
  UnloadedBytes() {
    CreateUsage();
    LoadRunUnload();
  }

  static void LoadRunUnload() {
    const LoadedModule module;
    EXPECT_EQ(Run(*module.NewObject()), kSuccessJson);
  }
};

TEST_F(UnloadedBytes, AreExactlyThoseOfTheListsThatTheLoadBuilt) {
  const std::int64_t before = bytes_in_use;
  {
    const LoadedModule module;
    EXPECT_EQ(bytes_in_use - before, ListBytes());
  }
  EXPECT_EQ(bytes_in_use, before);
}

TEST_F(UnloadedBytes, LeaveNothingBehindWhenThereWasAPass) {
  AddExpiredRow();
  const std::int64_t before = bytes_in_use;
  LoadRunUnload();
  EXPECT_EQ(bytes_in_use, before);
}

}  // namespace
}  // namespace corvo::test
