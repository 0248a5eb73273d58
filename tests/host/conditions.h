#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "host/run_fixture.h"

namespace corvo::test {

/// What a command is to answer.
struct Answer {
  int exit_code;
  std::string text;  ///< part of what it says on either stream
};

/// A state of the world in which every command has an answer.
struct Condition {
  const char* name;
  std::function<void(const std::string& data)> prepare;
  Answer run;
  Answer generate;
  Answer contracts = {0, "CollectorCache"};
  std::vector<std::string> through = {};  ///< the program that starts the host, with its first arguments

  friend void PrintTo(const Condition& value, std::ostream* stream) { *stream << value.name; }
};

/// Each command under each condition: a clear message and the documented exit code, also with --json.
class EachCommand : public RunTest, public testing::WithParamInterface<Condition> {
 protected:
  void SetUp() override { GetParam().prepare(data_); }

  void Expect(const std::vector<std::string>& words, const Answer& answer) const {
    const HostRun run = RunHostThrough(GetParam().through, words);
    EXPECT_EQ(run.exit_code, answer.exit_code) << run.out << run.err;
    EXPECT_THAT(run.out + run.err, testing::HasSubstr(answer.text));
    EXPECT_THAT(run.out + run.err, testing::Not(testing::HasSubstr("\x1b")));
  }

  /// Not for what changes the condition.
  void ExpectJson(std::vector<std::string> words, const Answer& answer) const {
    words.emplace_back("--json");
    const HostRun run = RunHostThrough(GetParam().through, words);
    EXPECT_EQ(run.exit_code, answer.exit_code) << run.out << run.err;
    if (!run.out.empty() || answer.text.size() > 0) {
      EXPECT_NO_THROW(static_cast<void>(run.Json())) << run.out;
    }
  }
};

inline std::string NameOfCondition(const testing::TestParamInfo<Condition>& info) { return info.param.name; }

}  // namespace corvo::test
