#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <type_traits>

#include "framework/probe_collector.h"
#include "support/buffer_allocator.h"

namespace corvo::test {
namespace {

using shared::plugin::IDynamicPluginModule;
using shared::plugin::IPluginModule;
using shared::plugin::PluginBufferAllocator;
using telemetry::common::Error;
using telemetry::common::ErrorText;
using telemetry::common::TelemetryCollectorBase;
using testing::ElementsAre;
using testing::IsEmpty;

Error WithWhat(const std::string& what) {
  Error error;
  error.what = what;
  return error;
}

class CollectorBase : public testing::Test {
 protected:
  std::vector<std::string> calls;
  ProbeCollector collector{calls};
  BufferAllocator allocator;
  char untouched[9] = "########";
  char* output = untouched;
};

TEST(CollectorTypes, DeriveFromThePluginInterfaces) {
  static_assert(std::is_base_of_v<IPluginModule, IDynamicPluginModule>);
  static_assert(std::is_base_of_v<IDynamicPluginModule, TelemetryCollectorBaseClass>);
  static_assert(std::is_base_of_v<TelemetryCollectorBaseClass, TelemetryCollectorBase>);
  static_assert(std::is_abstract_v<IPluginModule> && std::is_abstract_v<TelemetryCollectorBase>);
  static_assert(std::has_virtual_destructor_v<IPluginModule>);
  EXPECT_EQ(sizeof(IDynamicPluginModule), sizeof(void*)) << "an interface has no data";
}

TEST(CollectorTypes, AreDestroyedThroughTheOldestInterface) {
  std::vector<std::string> calls;
  const IPluginModule* module = new ProbeCollector(calls);
  delete module;
  EXPECT_THAT(calls, ElementsAre("destroyed"));
}

TEST_F(CollectorBase, ConfiguresReadsAndFinalizesInThatOrder) {
  collector.read_result = WithWhat("read");
  collector.Execute("input", output, allocator);
  EXPECT_THAT(calls, ElementsAre("Configure input", "ReadSource", "Finalize read"));
}

TEST_F(CollectorBase, PassesANullInputOn) {
  collector.Execute(nullptr, output, allocator);
  EXPECT_THAT(calls, ElementsAre("Configure null", "ReadSource", "Finalize "));
}

TEST_F(CollectorBase, HandsOutTheJsonTextOfWhatFinalizeReturned) {
  const Error final_result(std::runtime_error("broken"));
  collector.on_finalize = [&](const Error&) { return final_result; };
  collector.Execute("input", output, allocator);
  EXPECT_EQ(output, allocator.Latest());
  EXPECT_STREQ(output, ErrorText(final_result).c_str());
  EXPECT_STREQ(untouched, "########");
}

TEST_F(CollectorBase, AsksOnceForExactlyTheTextAndItsZero) {
  collector.Execute("input", output, allocator);
  EXPECT_STREQ(output, R"({"category":"EC_NoError","code":0,"version":3})");
  EXPECT_THAT(allocator.Sizes(), ElementsAre(std::string(output).size() + 1));
}

TEST_F(CollectorBase, HandsOutNewMemoryOnEveryRun) {
  collector.Execute("input", output, allocator);
  const char* const first = output;
  collector.Execute("input", output, allocator);
  EXPECT_NE(output, first);
  EXPECT_EQ(allocator.Sizes().size(), 2U);
}

TEST_F(CollectorBase, LeavesTheOutputWhenTheAllocatorHasNoMemory) {
  const EmptyAllocator empty;
  collector.Execute("input", output, empty);
  EXPECT_EQ(output, untouched);
  EXPECT_STREQ(untouched, "########");
  EXPECT_EQ(empty.calls, 1);
}

TEST_F(CollectorBase, RunsTheWholeCollectionInTheOlderForm) {
  collector.Execute("input", untouched);
  EXPECT_THAT(calls, ElementsAre("Configure input", "ReadSource", "Finalize "));
  EXPECT_STREQ(untouched, "########");
}

TEST_F(CollectorBase, OlderFormTakesANullOutput) {
  collector.Execute("input", nullptr);
  EXPECT_EQ(calls.size(), 3U);
}

TEST_F(CollectorBase, PassesExceptionsOfConfigureThrough) {
  collector.on_configure = [] { throw 7; };
  EXPECT_THROW(collector.Execute("input", output, allocator), int);
  EXPECT_THROW(collector.Execute("input", untouched), int);
  EXPECT_THAT(calls, ElementsAre("Configure input", "Configure input"));
  EXPECT_EQ(output, untouched);
}

TEST_F(CollectorBase, PassesExceptionsOfReadSourceThrough) {
  collector.on_read = [] { throw std::runtime_error("broken"); };
  EXPECT_THROW(collector.Execute("input", output, allocator), std::runtime_error);
  EXPECT_THAT(calls, ElementsAre("Configure input", "ReadSource"));
  EXPECT_THAT(allocator.Sizes(), IsEmpty());
  EXPECT_EQ(output, untouched);
}

TEST_F(CollectorBase, PassesExceptionsOfFinalizeThrough) {
  collector.on_finalize = [](const Error& result) -> Error { throw result; };
  EXPECT_THROW(collector.Execute("input", output, allocator), Error);
  EXPECT_EQ(output, untouched);
}

TEST_F(CollectorBase, PassesExceptionsOfTheAllocatorThrough) {
  struct : PluginBufferAllocator {
    [[nodiscard]] char* Allocate(std::size_t /*size*/) const override { throw std::bad_alloc(); }
  } const throwing;
  EXPECT_THROW(collector.Execute("input", output, throwing), std::bad_alloc);
  EXPECT_EQ(output, untouched);
}

TEST_F(CollectorBase, PassesTheJsonLibrarysErrorsThrough) {
  collector.read_result = WithWhat("caf\xE9");
  EXPECT_THROW(collector.Execute("input", output, allocator), nlohmann::json::exception);
  EXPECT_THAT(allocator.Sizes(), IsEmpty());
  EXPECT_EQ(output, untouched);
}

/// Overrides what must be overridden and nothing else.
class PlainCollector : public TelemetryCollectorBase {
 public:
  Error ReadSource() override { return WithWhat("read"); }
};

TEST(PlainCollector, HandsOutTheResultOfReadSourceUnchanged) {
  PlainCollector collector;
  const BufferAllocator allocator;
  char* output = nullptr;
  collector.Execute("input", output, allocator);
  EXPECT_STREQ(output, R"({"category":"EC_NoError","code":0,"version":3,"what":"read"})");
}

}  // namespace
}  // namespace corvo::test
