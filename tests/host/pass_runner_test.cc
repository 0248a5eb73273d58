#include "host/pass/pass_runner.h"

#include <gmock/gmock.h>

#include <cstring>
#include <stdexcept>

#include "host/show/json_text.h"
#include "storage/statement_observer.h"

namespace corvo::telemetry::host {
namespace {

using shared::plugin::PluginBufferAllocator;

const char* const kSuccess = R"({"category":"EC_NoError","code":0,"version":3})";
const char* const kFailure = R"({"category":"EC_Custom","code":26,"version":3,"what":"file is not a database"})";

/// A module that gives one text after the other; no output where the text is null.
class ScriptedModule : public shared::plugin::IDynamicPluginModule {
 public:
  explicit ScriptedModule(std::vector<const char*> outputs) : outputs_(std::move(outputs)) {}

  void Execute(const char*, char*) override {}

  void Execute(const char* input, char*& output, const PluginBufferAllocator& allocator) override {
    inputs.emplace_back(input);
    if (const char* text = outputs_.at(inputs.size() - 1); text != nullptr) {
      output = allocator.Allocate(std::strlen(text) + 1);
      std::strcpy(output, text);
    }
  }

  std::vector<std::string> inputs;

 private:
  std::vector<const char*> outputs_;
};

TEST(RunPasses, RunsTheModuleAsOftenAsAsked) {
  ScriptedModule module({kSuccess, kSuccess, kSuccess});
  const auto outcomes = RunPasses(module, 3, false);
  EXPECT_EQ(outcomes.size(), 3U);
  EXPECT_EQ(module.inputs, std::vector<std::string>(3, ""));
  EXPECT_FALSE(outcomes.back().result.Failed());
}

TEST(RunPasses, StopsAtTheFirstPassThatFails) {
  ScriptedModule module({kSuccess, kFailure, kSuccess});
  const auto outcomes = RunPasses(module, 3, false);
  ASSERT_EQ(outcomes.size(), 2U);
  EXPECT_EQ(ErrorJson(outcomes.back().result), Json::parse(kFailure));
}

class UselessOutput : public testing::TestWithParam<const char*> {};

TEST_P(UselessOutput, CountsAsAFailedPass) {
  ScriptedModule module({GetParam()});
  const common::Error result = RunPasses(module, 1, false).back().result;
  EXPECT_TRUE(result.Failed());
  EXPECT_EQ(result.category, common::EC_Custom);
  EXPECT_THAT(result.what, testing::HasSubstr("gave no result"));
}

INSTANTIATE_TEST_SUITE_P(All, UselessOutput,
                         testing::Values(nullptr, "", "(null)", "[]", "{}", R"({"code":0})",
                                         R"({"category":1,"code":0})", R"({"category":"EC_NoError","code":"0"})"));

/// A module that does what none should.
class ThrowingModule : public shared::plugin::IDynamicPluginModule {
 public:
  void Execute(const char*, char*) override {}
  void Execute(const char*, char*&, const PluginBufferAllocator&) override { throw std::runtime_error("from inside"); }
};

TEST(RunPasses, CountsAnExceptionOfTheModuleAsAFailedPass) {
  const auto former = shared::GetStatementObserver();
  ThrowingModule module;
  const auto outcomes = RunPasses(module, 2, false);
  ASSERT_EQ(outcomes.size(), 1U);
  EXPECT_EQ(outcomes.back().result.category, common::EC_Std);
  EXPECT_EQ(outcomes.back().result.what, "from inside");
  EXPECT_EQ(shared::GetStatementObserver(), former);
}

TEST(RunPasses, PutsTheStatementObserverBack) {
  const auto former = shared::GetStatementObserver();
  ScriptedModule module({kSuccess});
  const auto outcomes = RunPasses(module, 1, false);
  EXPECT_EQ(outcomes.size(), 1U);
  EXPECT_EQ(shared::GetStatementObserver(), former);
}

TEST(RunPasses, TellsAFailureByCategoryOrCode) {
  ScriptedModule module({kSuccess, R"({"category":"EC_NoError","code":1})"});
  EXPECT_TRUE(RunPasses(module, 2, false).back().result.Failed());
  ScriptedModule without_code({R"({"category":"EC_Std","code":0})"});
  EXPECT_TRUE(RunPasses(without_code, 1, false).back().result.Failed());
}

}  // namespace
}  // namespace corvo::telemetry::host
