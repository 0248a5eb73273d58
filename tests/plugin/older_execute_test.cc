#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "plugin/data_cleanup_plugin.h"
#include "plugin/pass_fixture.h"
#include "support/log_capture.h"

namespace corvo::test {
namespace {

using shared::plugin::PluginBufferAllocator;
using telemetry::plugin::DataCleanupPlugin;

class OlderExecute : public PassTest {
 protected:
  DataCleanupPlugin module;
};

TEST_F(OlderExecute, RunsAPassAndHandsNothingBack) {
  CreatePowerEvents(50'000);
  char text[] = "########";
  module.Execute("input", text);
  EXPECT_STREQ(text, "########");
  EXPECT_EQ(Open("DeviceUsage").Count("PowerEvents"), 45'000);
}

TEST_F(OlderExecute, TakesANullOutputAndANullInput) {
  CreatePowerEvents(50'000);
  module.Execute(nullptr, nullptr);
  EXPECT_EQ(Open("DeviceUsage").Count("PowerEvents"), 45'000);
}

TEST_F(OlderExecute, WritesOneDebugRecordBeforeThePass) {
  const LogCapture log;
  module.Execute("input", nullptr);
  ASSERT_EQ(log.Texts(plog::debug).size(), 1U);
  const LogLine expected{plog::debug, "corvo::telemetry::plugin::DataCleanupPlugin::Execute",
                         "corvo::shared::plugin::IPluginModule::Execute()"};
  EXPECT_EQ(log.Lines().front(), expected);
}

TEST_F(OlderExecute, WritesNoDebugRecordToALoggerThatAdmitsInfoOnly) {
  const LogCapture log(plog::info);
  module.Execute("input", nullptr);
  EXPECT_THAT(log.Texts(plog::debug), testing::IsEmpty());
  EXPECT_THAT(log.Texts(plog::info).front(), "Started DataCleanup::ReadSource");
}

/// Notes what the older form passes to the newer one, and stores a pointer of its own.
class Forwarded : public DataCleanupPlugin {
 public:
  using DataCleanupPlugin::Execute;
  void Execute(const char* input, char*& output, const PluginBufferAllocator& allocator) override {
    ++calls;
    given_input = input;
    given_output = output;
    output_variable = &output;
    given_allocator = std::addressof(allocator);
    output = stored;
  }

  int calls = 0;
  const char* given_input = nullptr;
  char* given_output = nullptr;
  char** output_variable = nullptr;
  const PluginBufferAllocator* given_allocator = nullptr;
  char stored[7] = "stored";
};

TEST(OlderExecuteForwarding, CallsTheNewerFormOfTheObjectItself) {
  Forwarded module;
  shared::plugin::IPluginModule& host_side = module;
  const char* const input = "input";
  char text[] = "########";
  host_side.Execute(input, text);
  EXPECT_EQ(module.calls, 1);
  EXPECT_EQ(module.given_input, input);
  EXPECT_EQ(module.given_output, text);
}

TEST(OlderExecuteForwarding, PassesAReferenceToNoAllocator) {
  Forwarded module;
  const PluginBufferAllocator* const none = nullptr;
  module.given_allocator = reinterpret_cast<const PluginBufferAllocator*>(&module);
  module.Execute("input", nullptr);
  EXPECT_EQ(module.given_allocator, none);
}

TEST(OlderExecuteForwarding, KeepsWhatIsStoredIntoThePointerToItself) {
  Forwarded module;
  char text[] = "########";
  char* output = text;
  module.Execute("input", output);
  EXPECT_NE(module.output_variable, &output);
  EXPECT_EQ(output, text);
  EXPECT_STREQ(text, "########");
}

TEST(OlderExecuteForwarding, PassesANullOutputAsAReferenceToANullPointer) {
  Forwarded module;
  module.given_output = module.stored;
  module.Execute("input", nullptr);
  EXPECT_EQ(module.given_output, nullptr);
  EXPECT_NE(module.output_variable, nullptr);
}

}  // namespace
}  // namespace corvo::test
