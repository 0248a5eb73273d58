// A user who ends a run early, with the signals that a terminal and a system send.
#include <gmock/gmock.h>

#include "host/platform/instance_lock.h"
#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

/// The second of five databases takes for ever: a trigger of its file never ends.
class InterruptedRun : public RunTest {
 protected:
  void SetUp() override {
    Generate();
    Database(File("DeviceProfile.db"))
        .Run(
            "CREATE TRIGGER Endless BEFORE DELETE ON Device BEGIN SELECT COUNT(*) FROM "
            "(WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i FROM n); END");
    rows_ = Rows();
  }

  [[nodiscard]] std::int64_t Rows() const { return Database(File("DeviceProfile.db")).Count("Device"); }

  [[nodiscard]] HostRun RunAndSend(const std::string& signal, const std::string& option) const {
    return RunHostThrough({"timeout", "--foreground", "--preserve-status", "--signal", signal, "6"},
                          {"run", "--data-dir", data_, option});
  }

  std::int64_t rows_ = 0;
};

TEST_F(InterruptedRun, RollsTheStatementBackAndSaysWhatWasDoneUntilThen) {
  const HostRun run = RunAndSend("INT", "--keep-going");
  EXPECT_EQ(run.exit_code, 130);
  EXPECT_THAT(run.out, HasSubstr("Interrupted: cleaned 1 of 5 databases; not cleaned: DeviceProfile (interrupted), "
                                 "DeviceProfileEvents (not reached before the interruption)"));
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(Rows(), rows_);
  EXPECT_FALSE(std::filesystem::exists(File(".corvo-telemetry-host.lock")));
}

TEST_F(InterruptedRun, WritesItsDocumentAllTheSame) {
  const HostRun run = RunAndSend("TERM", "--json");
  EXPECT_EQ(run.exit_code, 143);
  const nlohmann::json document = run.Json();
  EXPECT_EQ(document["interrupted"], true);
  EXPECT_EQ(document["cleaned"], 1);
  EXPECT_EQ(document["databases"][0]["cleaned"], true);
  EXPECT_EQ(document["databases"][1]["problem"]["kind"], "interrupted");
  EXPECT_EQ(document["databases"][4]["problem"]["kind"], "interrupted");
  EXPECT_EQ(Rows(), rows_);
}

TEST_F(InterruptedRun, EndsInOrderWhenItsTerminalGoesAway) {
  const HostRun run = RunAndSend("HUP", "--json");
  EXPECT_EQ(run.exit_code, 129);
  EXPECT_EQ(run.Json()["databases"][1]["problem"]["kind"], "interrupted");
  EXPECT_EQ(Rows(), rows_);
  EXPECT_FALSE(std::filesystem::exists(File(".corvo-telemetry-host.lock")));
  EXPECT_TRUE(std::filesystem::exists(File(".corvo-telemetry-host.history")));
}

TEST_F(InterruptedRun, SaysInTheDocumentOfAFailureThatItsTerminalWentAway) {
  std::string holder;
  const auto lock = telemetry::host::InstanceLock::TryTake(data_, holder);
  const HostRun run = RunHostThrough({"timeout", "--foreground", "--preserve-status", "--signal", "HUP", "3"},
                                     {"run", "--data-dir", data_, "--wait", "600", "--json"});
  EXPECT_EQ(run.exit_code, 129);
  EXPECT_EQ(run.Json()["interrupted"], true);
}

TEST_F(InterruptedRun, StaysUntouchedByAHangUpThatItWasStartedToIgnore) {
  const HostRun run = RunHostThrough({"sh", "-c", "trap '' HUP; (sleep 1; kill -HUP $$) & exec \"$0\" \"$@\""},
                                     {"run", "--data-dir", data_, "--time-limit", "2"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("Cleaned 1 of 5 databases"));
}

TEST_F(InterruptedRun, CanBeEndedWhileItWaitsForAnotherOne) {
  std::string holder;
  const auto lock = telemetry::host::InstanceLock::TryTake(data_, holder);
  const HostRun run = RunHostThrough({"timeout", "--foreground", "--preserve-status", "--signal", "INT", "3"},
                                     {"run", "--data-dir", data_, "--wait", "600"});
  EXPECT_EQ(run.exit_code, 130);
  EXPECT_THAT(run.err, HasSubstr("interrupted while another run was waited for: process "));
}

TEST_F(InterruptedRun, SaysInItsDocumentThatItWasInterruptedWhileItWaited) {
  std::string holder;
  const auto lock = telemetry::host::InstanceLock::TryTake(data_, holder);
  const HostRun run = RunHostThrough({"timeout", "--foreground", "--preserve-status", "--signal", "TERM", "3"},
                                     {"run", "--data-dir", data_, "--wait", "600", "--json"});
  EXPECT_EQ(run.exit_code, 143);
  EXPECT_EQ(run.Json()["interrupted"], true);
}

TEST_F(InterruptedRun, SaysSoAlsoWhenItHadNotGotBeyondItsPlan) {
  const HostRun run = RunHostThrough({"timeout", "--foreground", "--preserve-status", "--signal", "INT", "4"},
                                     {"run", "--data-dir", data_, "--max-loss", "100", "--json"});
  EXPECT_EQ(run.exit_code, 130);
  EXPECT_EQ(run.Json()["kind"], "failure");
  EXPECT_EQ(run.Json()["interrupted"], true);
}

/// Commands that only look, while another program keeps them waiting.
class InterruptedLook : public RunTest, public testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(InterruptedLook, SaysSoInItsDocument) {
  Generate();
  Database holder(File("Cache.db"));
  holder.Run("BEGIN EXCLUSIVE");
  std::vector<std::string> words = GetParam();
  if (words.front() == "report") {
    words.emplace_back(folder_ / "page.html");
  }
  words.insert(words.end(), {"--data-dir", data_, "--busy-timeout", "600", "--json"});
  const HostRun run = RunHostThrough({"timeout", "--foreground", "--preserve-status", "--signal", "INT", "2"}, words);
  EXPECT_EQ(run.exit_code, 130) << run.err;
  EXPECT_EQ(run.Json()["interrupted"], true);
}

INSTANTIATE_TEST_SUITE_P(Each, InterruptedLook,
                         testing::Values(std::vector<std::string>{"status"}, std::vector<std::string>{"verify"},
                                         std::vector<std::string>{"report", "--html"},
                                         std::vector<std::string>{"explain", "CollectorCache"},
                                         std::vector<std::string>{"print", "CollectorCache"}),
                         [](const auto& instance) { return instance.param.front(); });

class InterruptedGeneration : public RunTest {};

TEST_F(InterruptedGeneration, TellsOfItBesideTheRowsThatItHasAdded) {
  Generate();
  const HostRun run = RunHostThrough({"timeout", "--foreground", "--preserve-status", "--signal", "INT", "3"},
                                     {"generate", "--data-dir", data_, "--live", "600", "--json"});
  EXPECT_EQ(run.exit_code, 130);
  EXPECT_EQ(run.Json()["interrupted"], true);
}

TEST_F(InterruptedGeneration, LeavesNothingOfItsOwn) {
  const HostRun run = RunHostThrough({"timeout", "--foreground", "--preserve-status", "--signal", "INT", "3"},
                                     {"generate", "--data-dir", data_, "--scale", "1000"});
  EXPECT_EQ(run.exit_code, 130);
  EXPECT_THAT(run.err, HasSubstr("interrupted: nothing was generated"));
  EXPECT_FALSE(std::filesystem::exists(data_));
}

}  // namespace
}  // namespace corvo::test
