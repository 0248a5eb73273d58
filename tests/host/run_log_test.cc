#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "host/run_fixture.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class RunLog : public RunTest {
 protected:
  void SetUp() override { Generate(); }

  [[nodiscard]] std::string LogText() const {
    std::ostringstream text;
    text << std::ifstream(log_).rdbuf();
    return text.str();
  }

  const std::string log_ = folder_ / "run.log";
};

TEST_F(RunLog, IsQuietByDefaultAboutMissingTables) { EXPECT_EQ(Run().err, ""); }

TEST_F(RunLog, SpeaksOfMissingTablesWhenErrorsAreAskedFor) {
  const HostRun run = Run({"--log-level", "error"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.err, HasSubstr("ERROR DataCleanup::DeleteExpiredRows - exception : "));
  EXPECT_THAT(run.err, HasSubstr("no such table: "));
}

TEST_F(RunLog, StaysEmptyAtLevelNone) { EXPECT_EQ(Run({"--log-level", "none"}).err, ""); }

TEST_F(RunLog, TellsTheCourseOfAPassAtLevelInfo) {
  const HostRun run = Run({"--log-level", "info"});
  EXPECT_THAT(run.err, HasSubstr("INFO Started DataCleanup::ReadSource\n"));
  EXPECT_THAT(run.err, HasSubstr("INFO Finished DataCleanup::ReadSource\n"));
}

TEST_F(RunLog, GoesToTheFileThatIsNamed) {
  const HostRun run = Run({"--log-level", "info", "--log-file", log_});
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(LogText(), HasSubstr("Started DataCleanup::ReadSource"));
}

TEST_F(RunLog, HoldsErrorsOnlyByDefaultWhenAFileIsNamed) {
  const HostRun run = Run({"--log-file", log_});
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(LogText(), HasSubstr("no such table: "));
  EXPECT_THAT(LogText(), Not(HasSubstr("Started")));
}

TEST_F(RunLog, OfLevelBriefSparesMissingTablesWhereverItGoes) {
  EXPECT_EQ(Run({"--log-level", "brief"}).err, "");
  EXPECT_EQ(Run({"--log-level", "brief", "--log-file", log_}).exit_code, 0);
  EXPECT_EQ(LogText(), "");
}

TEST_F(RunLog, BeginsItsFileWithTheFirstRecordAndNoByteOrderMark) {
  Run({"--log-level", "info", "--log-file", log_});
  EXPECT_THAT(LogText(), MatchesPattern("^[0-9]{4}-[0-9]{2}-[0-9]{2} [^]*"));
}

TEST_F(RunLog, NeverMixesWithTheJsonDocument) {
  const HostRun run = Run({"--json", "--log-level", "verbose"});
  EXPECT_EQ(run.Json()["result"]["category"], "EC_NoError");
  EXPECT_THAT(run.err, HasSubstr("INFO Started"));
}

}  // namespace
}  // namespace corvo::test
