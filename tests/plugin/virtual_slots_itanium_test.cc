#include "support/virtual_slots_itanium.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cleanup/data_cleanup.h"
#include "plugin/data_cleanup_plugin.h"
#include "plugin/pass_fixture.h"
#include "support/buffer_allocator.h"
#include "support/log_capture.h"

namespace corvo::test {
namespace {

using telemetry::plugin::DataCleanupPlugin;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kStarted = "Started DataCleanup::ReadSource";

template <class T>
class SlotsOf : public PassTest {
 protected:
  ~SlotsOf() override { slots.DestroyAndFree(); }

  VirtualSlots slots{new T};
  BufferAllocator allocator;
  char text[9] = "########";
};

using DataCleanupPluginSlots = SlotsOf<DataCleanupPlugin>;
using DataCleanupSlots = SlotsOf<DataCleanup>;

TEST_F(DataCleanupPluginSlots, FirstIsTheOlderExecute) {
  const LogCapture log;
  slots.Execute("input", text);
  EXPECT_THAT(log.Texts(plog::debug), ElementsAre("corvo::shared::plugin::IPluginModule::Execute()"));
  EXPECT_STREQ(text, "########");
}

TEST_F(DataCleanupPluginSlots, ThirdIsTheExecuteWithAnAllocator) {
  const LogCapture log;
  char* output = text;
  slots.Execute("input", output, allocator);
  EXPECT_STREQ(output, kSuccessJson);
  EXPECT_THAT(log.Texts(plog::debug), IsEmpty());
}

TEST_F(DataCleanupSlots, FirstIsTheOlderExecuteOfTheBase) {
  const LogCapture log;
  slots.Execute("input", text);
  EXPECT_EQ(log.Texts(plog::info).front(), kStarted);
  EXPECT_STREQ(text, "########");
}

TEST_F(DataCleanupSlots, ThirdIsTheExecuteWithAnAllocatorOfTheBase) {
  char* output = text;
  slots.Execute("input", output, allocator);
  EXPECT_STREQ(output, kSuccessJson);
}

TEST_F(DataCleanupSlots, FourthIsTheFinalizeOfTheBase) {
  telemetry::common::Error error;
  error.what = "given";
  EXPECT_EQ(slots.Finalize(error).what, "given");
}

TEST_F(DataCleanupSlots, FifthDoesNothing) {
  const LogCapture log;
  slots.Configure("input");
  slots.Configure(nullptr);
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(DataCleanupSlots, SixthIsThePass) {
  const LogCapture log;
  EXPECT_FALSE(slots.ReadSource().Failed());
  EXPECT_EQ(log.Texts(plog::info).front(), kStarted);
}

}  // namespace
}  // namespace corvo::test
