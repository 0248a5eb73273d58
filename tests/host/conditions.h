#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "host/run_fixture.h"

namespace corvo::test {

/// What a command is to answer.
struct Answer {
  int exit_code;
  std::string text;  ///< part of what it says on either stream
};

/// Answers of commands, by name.
using Answers = std::map<std::string, Answer>;

/// A state of the world in which every command has an answer.
struct Condition {
  const char* name;
  std::function<void(const std::string& data)> prepare;
  Answers answers = {};                   ///< where they differ from those on generated databases
  std::vector<std::string> through = {};  ///< the program that starts the host, with its first arguments
  const char* table = "CollectorCache";   ///< the one to explain

  friend void PrintTo(const Condition& value, std::ostream* stream) { *stream << value.name; }
};

inline std::vector<std::string> Commands() {
  return {"contracts", "explain", "generate", "history", "plan", "print", "report", "run", "status", "verify"};
}

/// On databases that have been generated and never cleaned.
inline const Answers& UsualAnswers() {
  static const Answers usual = {{"contracts", {0, "CollectorCache"}},
                                {"explain", {0, "Next pass"}},
                                {"generate", {2, "already holds databases"}},
                                {"history", {0, "No run is recorded"}},
                                {"plan", {0, "Would clean 5 databases"}},
                                {"print", {0, "CollectorCache in Cache.db"}},
                                {"report", {0, "Wrote a page"}},
                                {"run", {0, "Cleaned 5 databases"}},
                                {"status", {0, "A run now"}},
                                {"verify", {3, "with no run on record"}}};
  return usual;
}

/// Each command under each condition: a clear message and the documented exit code, also with --json.
class EachCommand : public RunTest, public testing::WithParamInterface<std::tuple<Condition, std::string>> {
 protected:
  void SetUp() override { TheCondition().prepare(data_); }

  static const Condition& TheCondition() { return std::get<0>(GetParam()); }
  static const std::string& Command() { return std::get<1>(GetParam()); }

  [[nodiscard]] std::vector<std::string> Words() const {
    std::vector<std::string> words = {Command()};
    if (Command() == "explain" || Command() == "print") {
      words.emplace_back(Command() == "explain" ? TheCondition().table : "CollectorCache");
    }
    if (Command() != "contracts") {
      words.insert(words.end(), {"--data-dir", data_});
    }
    if (Command() == "generate") {
      words.insert(words.end(), {"--scale", "0.01"});
    } else if (Command() == "report") {
      words.insert(words.end(), {"--html", folder_ / "page.html"});
    }
    if (Command() != "contracts" && Command() != "generate" && Command() != "history") {
      words.insert(words.end(), {"--busy-timeout", "0"});
    }
    return words;
  }

  static Answer TheAnswer() {
    const Answers& own = TheCondition().answers;
    const auto found = own.find(Command());
    return found != own.end() ? found->second : UsualAnswers().at(Command());
  }
};

inline std::string NameOfCase(const testing::TestParamInfo<std::tuple<Condition, std::string>>& info) {
  return std::string(std::get<0>(info.param).name) + "_" + std::get<1>(info.param);
}

}  // namespace corvo::test
