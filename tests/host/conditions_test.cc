#include "host/conditions.h"

#include <filesystem>
#include <fstream>
#include <memory>

#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

void Fill(const std::string& data) {
  ASSERT_EQ(RunHost({"generate", "--data-dir", data, "--scale", "0.01"}).exit_code, 0);
}

TEST_P(EachCommand, AnswersOrSaysWhyNot) {
  const HostRun run = RunHostThrough(TheCondition().through, Words());
  EXPECT_EQ(run.exit_code, TheAnswer().exit_code) << run.out << run.err;
  EXPECT_THAT(run.out + run.err, testing::HasSubstr(TheAnswer().text));
  EXPECT_THAT(run.out + run.err, testing::Not(testing::HasSubstr("\x1b")));
}

TEST_P(EachCommand, AnswersInOneDocument) {
  std::vector<std::string> words = Words();
  words.emplace_back("--json");
  const HostRun run = RunHostThrough(TheCondition().through, words);
  EXPECT_EQ(run.exit_code, TheAnswer().exit_code) << run.out << run.err;
  if (!run.out.empty() || !TheAnswer().text.empty()) {
    EXPECT_NO_THROW(static_cast<void>(run.Json())) << run.out;
  }
}

/// Held until the next one is taken or the test program ends.
void Lock(const std::string& data) {
  static std::unique_ptr<Database> holder;
  Fill(data);
  holder = std::make_unique<Database>(fs::path(data) / "Cache.db");
  holder->Run("BEGIN EXCLUSIVE");
}

void Damage(const std::string& data) {
  Fill(data);
  std::ofstream(fs::path(data) / "Cache.db", std::ios::trunc) << "no database, but long enough for one";
}

/// All commands that work on a data directory which is to exist answer alike.
Answers WithoutDirectory(const std::string& reason, const Answer& generate) {
  Answers answers = {{"generate", generate}};
  for (const char* command : {"explain", "history", "plan", "print", "report", "run", "status", "verify"}) {
    answers[command] = {10, reason};
  }
  return answers;
}

const Answers kEmpty = {{"explain", {0, "has no file yet"}}, {"generate", {0, "Generated"}},
                        {"plan", {0, "Nothing to clean"}},   {"print", {1, "there is no Cache.db"}},
                        {"run", {0, "Nothing to clean"}},    {"status", {0, "Nothing to show"}},
                        {"verify", {0, "Nothing to verify"}}};

const Answers kDamaged = {{"explain", {1, "cannot be explained: damaged: file is not a database"}},
                          {"plan", {1, "not cleaned: Cache (damaged: file is not a database)"}},
                          {"print", {1, "damaged: file is not a database"}},
                          {"report", {1, "damaged: file is not a database"}},
                          {"run", {1, "not cleaned: Cache (damaged: file is not a database)"}},
                          {"status", {1, "Cache cannot be read: damaged: file is not a database"}},
                          {"verify", {3, "damaged: file is not a database"}}};

const Answers kLocked = {{"explain", {1, "cannot be explained: another program holds it locked"}},
                         {"plan", {1, "not cleaned: Cache (another program holds it locked)"}},
                         {"print", {1, "another program holds it locked"}},
                         {"report", {1, "another program holds it locked"}},
                         {"run", {1, "not cleaned: Cache (another program holds it locked)"}},
                         {"status", {1, "Cache cannot be read: another program holds it locked"}},
                         {"verify", {3, "cannot be looked at: another program holds it locked"}}};

INSTANTIATE_TEST_SUITE_P(
    Anywhere, EachCommand,
    testing::Combine(
        testing::Values(
            Condition{"NoDirectory", [](const std::string&) {}, WithoutDirectory("does not exist", {0, "Generated"})},
            Condition{"EmptyDirectory", [](const std::string& data) { fs::create_directory(data); }, kEmpty},
            Condition{"AFileInItsPlace", [](const std::string& data) { std::ofstream(data) << "text"; },
                      WithoutDirectory("is not a directory", {2, "data"})},
            Condition{"DamagedDatabase", &Damage, kDamaged}, Condition{"LockedDatabase", &Lock, kLocked}),
        testing::ValuesIn(Commands())),
    NameOfCase);

}  // namespace
}  // namespace corvo::test
