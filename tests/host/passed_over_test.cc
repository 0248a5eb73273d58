// Databases that become closed to a pass after they were looked at.
#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>
#include <functional>

#include "host/facts/query.h"
#include "host/pass/directory_run.h"
#include "storage/telemetry_storage.h"
#include "support/database.h"
#include "support/temp_dir.h"

namespace corvo::telemetry::host {
namespace {

using Kind = Problem::Kind;

/// Does one thing in place of a pass, and tells of a result.
class Doing : public shared::plugin::IDynamicPluginModule {
 public:
  Doing(std::function<void()> action, const char* result) : action_(std::move(action)), result_(result) {}

  void Execute(const char*, char*) override {}

  void Execute(const char*, char*& output, const shared::plugin::PluginBufferAllocator& allocator) override {
    action_();
    output = allocator.Allocate(std::strlen(result_) + 1);
    std::strcpy(output, result_);
  }

 private:
  std::function<void()> action_;
  const char* result_;
};

constexpr const char* kSuccess = R"({"category":"EC_NoError","code":0,"version":3})";
constexpr const char* kFailure = R"({"category":"EC_Std","code":1,"version":3,"what":"bad locale name"})";

class PassedOver : public testing::Test {
 protected:
  PassedOver() { test::Database(file_).Run("CREATE TABLE BatteryStatus (time TEXT)"); }

  [[nodiscard]] Problem AfterAPassThat(const std::function<void()>& action, const char* result = kSuccess,
                                       bool keep_going = false) const {
    Doing module(action, result);
    const RunReport report =
        host::Run(module, {.directory = folder_.Path(), .source = "", .only = {}, .keep_going = keep_going});
    EXPECT_EQ(report.databases.size(), 1u);
    EXPECT_TRUE(report.databases.at(0).problem.has_value());
    return *report.databases.at(0).problem;
  }

  test::TempDir folder_;
  std::filesystem::path file_ = folder_.Path() / "HealthLog.db";
};

TEST_F(PassedOver, IsToldWithWhatClosedTheFile) {
  const Problem gone = AfterAPassThat([this] { std::filesystem::rename(file_, folder_.Path() / "other"); });
  EXPECT_EQ(gone.kind, Kind::kCannotOpen);
  EXPECT_EQ(gone.reason, "the module did not clean it: no such file");
}

TEST_F(PassedOver, IsToldAloneWhenTheFileIsAsItWas) {
  const Problem problem = AfterAPassThat([] {});
  EXPECT_EQ(problem.kind, Kind::kNotReached);
  EXPECT_EQ(problem.reason, "the module did not clean it");
}

TEST_F(PassedOver, ByAPassOfItsOwnThatFailedIsNotLeftForAnothers) {
  EXPECT_EQ(AfterAPassThat([] {}, kFailure).reason, "the pass ended before it");
  const Problem own = AfterAPassThat([] {}, kFailure, true);
  EXPECT_EQ(own.kind, Kind::kFailed);
  EXPECT_EQ(own.reason, "its pass failed: bad locale name");
}

TEST_F(PassedOver, ForALockThatCameLaterIsToldAsOneThatWasThereBefore) {
  const Problem problem = AfterAPassThat([this] {
    test::Database other(file_);
    other.Run("BEGIN EXCLUSIVE");
    shared::TelemetryStorage storage(file_.string().c_str(), "");
    static_cast<void>(RunStatement(storage, "DELETE FROM BatteryStatus"));
  });
  EXPECT_EQ(problem.kind, Kind::kBusy);
  EXPECT_EQ(problem.reason, "another program holds it locked");
  EXPECT_EQ(problem.record.what, "database is locked in: DELETE FROM BatteryStatus");
}

}  // namespace
}  // namespace corvo::telemetry::host
