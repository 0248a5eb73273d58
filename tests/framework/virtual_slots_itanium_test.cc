#include "support/virtual_slots_itanium.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "framework/probe_collector.h"
#include "support/buffer_allocator.h"

namespace corvo::test {
namespace {

using telemetry::common::Error;
using testing::ElementsAre;

class CollectorSlots : public testing::Test {
 protected:
  ~CollectorSlots() override { slots.DestroyAndFree(); }

  std::vector<std::string> calls;
  ProbeCollector* collector = new ProbeCollector(calls);
  VirtualSlots slots{collector};
  char text[9] = "########";
};

TEST_F(CollectorSlots, FirstIsTheOlderExecute) {
  slots.Execute("input", text);
  EXPECT_THAT(calls, ElementsAre("Configure input", "ReadSource", "Finalize "));
  EXPECT_STREQ(text, "########");
}

TEST(CollectorSlot, SecondIsTheDestructor) {
  std::vector<std::string> calls;
  VirtualSlots(new ProbeCollector(calls)).DestroyAndFree();
  EXPECT_THAT(calls, ElementsAre("destroyed"));
}

TEST_F(CollectorSlots, ThirdIsTheExecuteWithAnAllocator) {
  const BufferAllocator allocator;
  char* output = text;
  slots.Execute("input", output, allocator);
  EXPECT_THAT(calls, ElementsAre("Configure input", "ReadSource", "Finalize "));
  EXPECT_EQ(output, allocator.Latest());
}

TEST_F(CollectorSlots, FourthIsFinalize) {
  Error error;
  error.what = "given";
  EXPECT_EQ(slots.Finalize(error).what, "given");
  EXPECT_THAT(calls, ElementsAre("Finalize given"));
}

TEST_F(CollectorSlots, FifthIsConfigure) {
  slots.Configure("input");
  EXPECT_THAT(calls, ElementsAre("Configure input"));
}

TEST_F(CollectorSlots, SixthIsReadSource) {
  collector->read_result.code = 9;
  EXPECT_EQ(slots.ReadSource().code, 9);
  EXPECT_THAT(calls, ElementsAre("ReadSource"));
}

}  // namespace
}  // namespace corvo::test
