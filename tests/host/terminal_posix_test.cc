#include <gmock/gmock.h>

#include "host/facts/catalogue_view.h"
#include "host/run_fixture.h"
#include "support/database.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class OnATerminal : public RunTest {
 protected:
  void SetUp() override { Generate(); }

  HostRun RunThere(const std::vector<std::string>& environment = {"TERM=xterm", "NO_COLOR="}) {
    return RunHostOnTerminal({"run", "--data-dir", data_}, environment);
  }
};

TEST_F(OnATerminal, TheOutcomeIsGreen) {
  const HostRun run = RunThere();
  EXPECT_EQ(run.exit_code, 0);
  const std::string databases = std::to_string(telemetry::host::ReadCatalogue().databases.size() - 1);
  EXPECT_THAT(run.out, ContainsPattern("\x1b\\[32mCleaned " + databases + " databases"));
}

TEST_F(OnATerminal, ColourStaysAwayWhenItIsNotWanted) {
  EXPECT_THAT(RunThere({"TERM=xterm", "NO_COLOR=1"}).out, Not(HasSubstr("\x1b")));
  EXPECT_THAT(RunThere({"TERM=dumb", "NO_COLOR="}).out, Not(HasSubstr("\x1b")));
}

TEST_F(OnATerminal, OneLineOfProgressComesAndGoes) {
  const std::string out = RunThere().out;
  EXPECT_THAT(out, HasSubstr("\rHealthLog: "));
  EXPECT_THAT(out, HasSubstr("deleting expired rows "));
  EXPECT_THAT(out, HasSubstr("compacting "));
  EXPECT_THAT(out, HasSubstr("\r" + std::string(79, ' ') + "\r"));
}

TEST_F(OnATerminal, AStatementThatTakesLongIsShownWithItsTime) {
  Database(File("Cache.db"))
      .Run(
          "CREATE TRIGGER Endless BEFORE DELETE ON CollectorCache BEGIN SELECT COUNT(*) FROM "
          "(WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT i FROM n); END");
  const HostRun run = RunHostOnTerminal({"run", "--data-dir", data_, "--database", "Cache", "--time-limit", "4"});
  EXPECT_THAT(run.out, ContainsPattern("\rCache: deleting expired rows CollectorCache, [1-4] s  0:0"));
}

TEST_F(OnATerminal, AFailureIsRed) {
  std::filesystem::resize_file(File("Cache.db"), 1000);
  EXPECT_THAT(RunThere().out, ContainsPattern("\x1b\\[31mCleaned 4 of 5 databases; not cleaned: Cache"));
}

TEST(NoColorOption, MayStandAnywhere) {
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"--no-color", "contracts"}, std::vector<std::string>{"contracts", "--no-color"}}) {
    const HostRun run = RunHostOnTerminal(words, {"TERM=xterm", "NO_COLOR="});
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_THAT(run.out, Not(HasSubstr("\x1b")));
  }
  EXPECT_THAT(RunHostOnTerminal({"contracts"}, {"TERM=xterm", "NO_COLOR="}).out, HasSubstr("\x1b"));
}

class PrintOfHostileValues : public RunTest {};

TEST_F(PrintOfHostileValues, LetsNoneSpeakToTheTerminal) {
  std::filesystem::create_directory(data_);
  Database(File("Cache.db"))
      .Run(
          "CREATE TABLE CollectorCache (time TEXT, \"na\x1b[2Jme\"); "
          "INSERT INTO CollectorCache VALUES ('\x1b[31mred', 'x')");
  for (const char* format : {"table", "jsonl", "csv"}) {
    const HostRun run = RunHostOnTerminal({"print", "CollectorCache", "--data-dir", data_, "--format", format});
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_THAT(run.out, Not(HasSubstr("\x1b[31m")));
    EXPECT_THAT(run.out, Not(HasSubstr("\x1b[2J")));
  }
}

}  // namespace
}  // namespace corvo::test
