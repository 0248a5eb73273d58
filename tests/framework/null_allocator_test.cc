#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "framework/probe_collector.h"

namespace corvo::test {
namespace {

using shared::plugin::PluginBufferAllocator;
using testing::ElementsAre;

// Hosts of the older interface have no allocator, and the reference refers to nothing.
TEST(NullAllocator, RunsTheCollectionAndLeavesTheOutputAsItWas) {
  std::vector<std::string> calls;
  ProbeCollector collector(calls);
  const PluginBufferAllocator* const none = nullptr;
  char text[] = "########";
  char* output = text;
  collector.Execute("input", output, *none);
  EXPECT_THAT(calls, ElementsAre("Configure input", "ReadSource", "Finalize "));
  EXPECT_EQ(output, text);
  EXPECT_STREQ(text, "########");
}

TEST(NullAllocator, LeavesANullOutputNull) {
  std::vector<std::string> calls;
  ProbeCollector collector(calls);
  const PluginBufferAllocator* const none = nullptr;
  char* output = nullptr;
  collector.Execute("input", output, *none);
  EXPECT_EQ(output, nullptr);
}

}  // namespace
}  // namespace corvo::test
