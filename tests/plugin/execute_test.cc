#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

#include "cleanup/data_cleanup.h"
#include "plugin/data_cleanup_plugin.h"
#include "plugin/pass_fixture.h"
#include "support/buffer_allocator.h"
#include "support/log_capture.h"

namespace corvo::test {
namespace {

using shared::plugin::IDynamicPluginModule;
using shared::plugin::IPluginModule;
using telemetry::plugin::DataCleanupPlugin;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ModuleExecute : public PassTest {
 protected:
  DataCleanupPlugin module;
  BufferAllocator allocator;
  char untouched[9] = "########";
  char* output = untouched;
};

TEST(DataCleanupPluginTypes, HoldNoDataOfTheirOwn) {
  static_assert(std::is_base_of_v<IDynamicPluginModule, DataCleanupPlugin>);
  static_assert(std::is_base_of_v<telemetry::common::TelemetryCollectorBase, DataCleanup>);
  EXPECT_EQ(sizeof(DataCleanupPlugin), sizeof(IPluginModule));
}

TEST_F(ModuleExecute, HandsOutThePassesResultInTheHostsMemory) {
  module.Execute("input", output, allocator);
  EXPECT_EQ(output, allocator.Latest());
  EXPECT_STREQ(output, kSuccessJson);
  EXPECT_STREQ(untouched, "########");
}

TEST_F(ModuleExecute, HandsOutTheFailureThatEndedThePass) {
  CreateFailingDatabase();
  module.Execute("input", output, allocator);
  EXPECT_THAT(output, HasSubstr(R"({"category":"EC_Custom","code":1,)"));
  EXPECT_THAT(output, HasSubstr("no such column: time"));
}

TEST_F(ModuleExecute, CleansOncePerCall) {
  const LogCapture log(plog::info);
  module.Execute("input", output, allocator);
  EXPECT_THAT(log.Texts(plog::info),
              ElementsAre("Started DataCleanup::ReadSource", kSuccessJson, "Finished DataCleanup::ReadSource"));
}

TEST_F(ModuleExecute, WritesNoDebugRecordInTheNewerForm) {
  const LogCapture log;
  module.Execute("input", output, allocator);
  EXPECT_THAT(log.Texts(plog::debug), IsEmpty());
}

TEST_F(ModuleExecute, ServesAnyNumberOfPassesFromOneObject) {
  for (int pass = 1; pass <= 3; ++pass) {
    module.Execute("input", output, allocator);
    EXPECT_STREQ(output, kSuccessJson);
    EXPECT_EQ(allocator.Sizes().size(), static_cast<std::size_t>(pass));
  }
}

TEST_F(ModuleExecute, RemembersNothingOfAFailedPass) {
  CreateFailingDatabase();
  module.Execute("input", output, allocator);
  Open("DeviceUsage").Run("DROP TABLE PowerEvents");
  module.Execute("input", output, allocator);
  EXPECT_STREQ(output, kSuccessJson);
}

TEST_F(ModuleExecute, LeavesTheOutputWhenTheAllocatorHasNoMemory) {
  const EmptyAllocator empty;
  module.Execute("input", output, empty);
  EXPECT_EQ(output, untouched);
  EXPECT_STREQ(untouched, "########");
}

TEST_F(ModuleExecute, SeveralObjectsServeInTurn) {
  DataCleanupPlugin other;
  module.Execute("input", output, allocator);
  other.Execute("input", output, allocator);
  EXPECT_STREQ(output, kSuccessJson);
}

class ModuleExecuteWithInput : public ModuleExecute, public testing::WithParamInterface<const char*> {};

// A table that holds its limit is cut to nine tenths of it, whatever the host says.
TEST_P(ModuleExecuteWithInput, TrimsTenPercentBelowTheLimit) {
  CreatePowerEvents(50'000);
  module.Execute(GetParam(), output, allocator);
  EXPECT_STREQ(output, kSuccessJson);
  EXPECT_EQ(Open("DeviceUsage").Count("PowerEvents"), 45'000);
}

INSTANTIATE_TEST_SUITE_P(, ModuleExecuteWithInput,
                         testing::Values(nullptr, "", "50", R"({"trimMarginPercent":50})", "\xFF\xFE not text"));

TEST_F(ModuleExecute, TrimsAgainTenPercentBelowTheLimitInEveryPass) {
  CreatePowerEvents(45'001);
  for (int pass = 0; pass < 2; ++pass) {
    module.Execute("input", output, allocator);
    EXPECT_EQ(Open("DeviceUsage").Count("PowerEvents"), 45'000);
    Open("DeviceUsage").Run("INSERT INTO PowerEvents VALUES ('2100-01-01T00:00:00+00:00')");
  }
}

}  // namespace
}  // namespace corvo::test
