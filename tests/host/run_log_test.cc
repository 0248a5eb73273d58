#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "host/run_fixture.h"

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

TEST_F(RunLog, NeverMixesWithTheJsonDocument) {
  const HostRun run = Run({"--json", "--log-level", "verbose"});
  EXPECT_EQ(run.Json()["result"]["category"], "EC_NoError");
  EXPECT_THAT(run.err, HasSubstr("INFO Started"));
}

}  // namespace
}  // namespace corvo::test
