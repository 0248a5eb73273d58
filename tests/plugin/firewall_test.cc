#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "plugin/data_cleanup_plugin.h"
#include "plugin/pass_fixture.h"
#include "plugin/thrown.h"
#include "support/buffer_allocator.h"
#include "support/log_capture.h"

namespace corvo::test {
namespace {

using shared::plugin::PluginBufferAllocator;
using telemetry::plugin::DataCleanupPlugin;
using testing::HasSubstr;
using testing::IsEmpty;

class Firewall : public PassTest, public testing::WithParamInterface<Thrown> {
 protected:
  /// Throws out of the log statement of every record of this severity and tag.
  void ThrowOn(LogCapture& log, plog::Severity severity, const std::string& tag) const {
    log.OnRecord([severity, tag, raise = GetParam().raise](const plog::Record& record) {
      if (record.getSeverity() == severity && record.getFunc() == tag) {
        raise();
      }
    });
  }

  DataCleanupPlugin module;
  BufferAllocator allocator;
  char untouched[9] = "########";
  char* output = untouched;
};

INSTANTIATE_TEST_SUITE_P(, Firewall, testing::ValuesIn(kThrown));

TEST_P(Firewall, ExceptionFromReadSourceDoesNotLeaveExecute) {
  LogCapture log;
  ThrowOn(log, plog::info, "DataCleanup::ReadSource");
  EXPECT_NO_THROW(module.Execute("input", output, allocator));
  EXPECT_EQ(output, untouched);
  EXPECT_THAT(allocator.Sizes(), IsEmpty());
  EXPECT_THAT(log.Lines(), IsEmpty()) << "swallowed without a record";
}

TEST_P(Firewall, ExceptionFromReadSourceDoesNotLeaveTheOlderExecute) {
  LogCapture log;
  ThrowOn(log, plog::info, "DataCleanup::ReadSource");
  EXPECT_NO_THROW(module.Execute("input", untouched));
  EXPECT_STREQ(untouched, "########");
}

TEST_P(Firewall, ExceptionFromTheRecordOfTheOlderExecuteDoesNotStopThePass) {
  Open("DeviceUsage").Run("CREATE TABLE PowerEvents (time TEXT); INSERT INTO PowerEvents VALUES ('2000-01-01')");
  LogCapture log;
  ThrowOn(log, plog::debug, "corvo::telemetry::plugin::DataCleanupPlugin::Execute");
  EXPECT_NO_THROW(module.Execute("input", untouched));
  EXPECT_THAT(log.Texts(plog::debug), IsEmpty()) << "the record was refused";
  EXPECT_EQ(Open("DeviceUsage").Count("PowerEvents"), 0);
}

TEST_P(Firewall, ModuleStaysUsableAfterAnException) {
  {
    LogCapture log;
    ThrowOn(log, plog::info, "DataCleanup::ReadSource");
    module.Execute("input", output, allocator);
  }
  module.Execute("input", output, allocator);
  EXPECT_STREQ(output, kSuccessJson);
}

TEST_P(Firewall, ExceptionFromTheHostsAllocatorDoesNotLeaveExecute) {
  struct ThrowingAllocator : PluginBufferAllocator {
    explicit ThrowingAllocator(void (*action)()) : raise(action) {}
    [[nodiscard]] char* Allocate(std::size_t /*size*/) const override {
      raise();
      return nullptr;
    }
    void (*raise)();
  };
  EXPECT_NO_THROW(module.Execute("input", output, ThrowingAllocator(GetParam().raise)));
  EXPECT_EQ(output, untouched);
}

TEST_P(Firewall, ExceptionFromAStepIsThePassesResult) {
  CreateFailingDatabase();
  LogCapture log;
  ThrowOn(log, plog::error, "DataCleanup::DeleteExpiredRows");
  EXPECT_NO_THROW(module.Execute("input", output, allocator));
  EXPECT_EQ(output, allocator.Latest());
  EXPECT_THAT(output, HasSubstr(GetParam().json));
}

}  // namespace
}  // namespace corvo::test
