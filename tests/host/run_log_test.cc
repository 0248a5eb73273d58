#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "host/run_fixture.h"
#include "support/database.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

class RunLog : public RunTest {
 protected:
  void SetUp() override { Generate(); }

  [[nodiscard]] std::string LogText() const { return Content(log_); }

  static std::string Content(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
  }

  void ExpectRefusal(const fs::path& file, const char* reason) {
    const HostRun run = Run({"--log-file", file.string(), "--log-level", "debug"});
    EXPECT_EQ(run.exit_code, 2) << file;
    EXPECT_THAT(run.err, HasSubstr("--log-file"));
    EXPECT_THAT(run.err, HasSubstr(reason));
  }

  /// The failure of a trigger, whose words are the file's.
  void LetTheCacheSpeak() const {
    Database(File("Cache.db"))
        .Run(
            "CREATE TRIGGER Speak BEFORE DELETE ON CollectorCache BEGIN SELECT RAISE(ABORT, "
            "'evil \x1b[2J \xc2\x9b"
            "31m \x7f \u202e end'); END");
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

// The record of a failure is JSON, which escapes the first of them itself.
TEST_F(RunLog, ShowsWhatCouldSpeakToATerminalEscapedWhereverItGoes) {
  LetTheCacheSpeak();
  const char* const escaped = "evil \\u001b[2J \\u009b31m \\x7f \\u202e end";
  const HostRun run = Run();
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.err, HasSubstr("ERROR DataCleanup::DeleteExpiredRows - exception : "));
  EXPECT_THAT(run.err, HasSubstr(escaped));
  Run({"--log-file", log_});
  EXPECT_THAT(LogText(), HasSubstr(escaped));
}

TEST_F(RunLog, ShowsItEscapedInTheStatementsToo) {
  LetTheCacheSpeak();
  EXPECT_THAT(Run({"--log-level", "debug"}).err, HasSubstr("-> evil \\x1b[2J \\u009b31m \\x7f \\u202e end in "));
}

TEST_F(RunLog, IsNotWrittenIntoDatabasesNorFilesOfThisProgram) {
  const std::string before = Content(File("HealthLog.db"));
  const auto count = [this] { return std::distance(fs::directory_iterator(data_), fs::directory_iterator()); };
  const auto files = count();
  ExpectRefusal(File("HealthLog.db"), "it is a database");
  for (const char* name : {"DeviceUsage.db", "other.DB", "other.db-shm", "healthlog.db-WAL", "HealthLog.db-journal",
                           "Cache.db.log", ".corvo-telemetry-host.history", ".corvo-telemetry-host.lock"}) {
    ExpectRefusal(File(name), "the name belongs to a database or to this program");
    ExpectRefusal(folder_.Path() / "data/../data/." / name, "the name belongs to a database or to this program");
  }
  fs::copy_file(File("HealthLog.db"), folder_ / "copy.log");
  ExpectRefusal(folder_ / "copy.log", "it is a database");
  EXPECT_EQ(Content(File("HealthLog.db")), before);
  EXPECT_EQ(count(), files);
}

TEST_F(RunLog, IsNotMovedOverADatabase) {
  fs::copy_file(File("HealthLog.db"), folder_ / "run.1.log");
  ExpectRefusal(log_, "run.1.log: it is a database");
  EXPECT_FALSE(fs::exists(log_));
}

TEST_F(RunLog, GoesToAFileOnly) {
  ExpectRefusal(data_, "it is a directory");
  ExpectRefusal(folder_ / "missing/run.log", "its directory does not exist");
  ExpectRefusal("-", "the log goes to standard error");
  EXPECT_FALSE(fs::exists("-"));
}

TEST_F(RunLog, MayLieInTheDataDirectoryUnderAnotherName) {
  EXPECT_EQ(Run({"--log-file", File("run.log").string()}).exit_code, 0);
  EXPECT_THAT(Content(File("run.log")), HasSubstr("no such table: "));
}

TEST_F(RunLog, KeepsTwoFormerPartsOfFiveMegabytes) {
  const fs::path folder = folder_.Path() / "logs.d";
  fs::create_directory(folder);
  for (const char* name : {"run", "run.1", "run.2"}) {
    std::ofstream(folder / name) << name;
  }
  fs::resize_file(folder / "run", 5'000'001);
  EXPECT_EQ(Run({"--log-file", (folder / "run").string()}).exit_code, 0);
  EXPECT_THAT(Content(folder / "run"), MatchesPattern("^[0-9]{4}-[^]*"));
  EXPECT_EQ(fs::file_size(folder / "run.1"), 5'000'001U);
  EXPECT_EQ(Content(folder / "run.2"), "run.1");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 3);
}

}  // namespace
}  // namespace corvo::test
