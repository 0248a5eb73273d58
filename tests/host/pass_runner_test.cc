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

TEST(RunPass, RunsTheModuleOnceWithoutInput) {
  ScriptedModule module({kSuccess});
  const PassOutcome outcome = RunPass(module, 0).outcome;
  EXPECT_EQ(module.inputs, std::vector<std::string>({""}));
  EXPECT_FALSE(outcome.result.Failed());
  EXPECT_EQ(outcome.failure, std::nullopt);
}

TEST(RunPass, GivesTheRecordOfTheModule) {
  ScriptedModule module({kFailure});
  EXPECT_EQ(ErrorJson(RunPass(module, 0).outcome.result), Json::parse(kFailure));
}

TEST(RunPass, TellsAFailureByCategoryOrCode) {
  ScriptedModule module({R"({"category":"EC_NoError","code":1})", R"({"category":"EC_Std","code":0})"});
  EXPECT_TRUE(RunPass(module, 0).outcome.result.Failed());
  EXPECT_TRUE(RunPass(module, 0).outcome.result.Failed());
}

class UselessOutput : public testing::TestWithParam<const char*> {};

TEST_P(UselessOutput, CountsAsAFailedPass) {
  ScriptedModule module({GetParam()});
  const common::Error result = RunPass(module, 0).outcome.result;
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

TEST(RunPass, CountsAnExceptionOfTheModuleAsAFailedPass) {
  const auto former = shared::GetStatementObserver();
  ThrowingModule module;
  const common::Error result = RunPass(module, 0).outcome.result;
  EXPECT_EQ(result.category, common::EC_Std);
  EXPECT_EQ(result.what, "from inside");
  EXPECT_EQ(shared::GetStatementObserver(), former);
}

TEST(RunPass, PutsTheStatementObserverBack) {
  const auto former = shared::GetStatementObserver();
  ScriptedModule module({kSuccess});
  EXPECT_FALSE(RunPass(module, 0).outcome.result.Failed());
  EXPECT_EQ(shared::GetStatementObserver(), former);
}

/// A record of a statement on HealthLog.db.
shared::StatementRecord Ran(const char* sql, std::int64_t rows, const common::Error& result) {
  return {"/data/HealthLog.db", sql, {}, {}, rows, result};
}

class PassWatching : public testing::Test {
 protected:
  void End(const char* sql, std::int64_t rows = 0, const common::Error& result = {}) {
    watcher_.OnEnd(Ran(sql, rows, result));
  }
  [[nodiscard]] Visit TheVisit() const { return watcher_.Visits().at("HealthLog.db"); }

  PassWatcher watcher_{0};
};

TEST_F(PassWatching, AddsUpDeletedRowsByTheRuleThatNamedThem) {
  End("DELETE FROM Boot WHERE datetime(time) < datetime('2024-01-01');", 900);
  End("SELECT COUNT(*) AS rows FROM Boot");
  End("DELETE FROM Boot WHERE rowid IN (SELECT rowid FROM Boot ORDER BY rowid ASC LIMIT 100);", 100);
  End("SELECT pgsize, pageno FROM dbstat WHERE name='Boot'");
  End("DELETE FROM Boot WHERE rowid IN (SELECT rowid FROM Boot ORDER BY rowid ASC LIMIT 7);", 7);
  End("VACUUM;");
  const Deleted deleted = TheVisit().tables.at("Boot");
  EXPECT_EQ(deleted.expired, 900);
  EXPECT_EQ(deleted.row_limit, 100);
  EXPECT_EQ(deleted.size_limit, 7);
  EXPECT_EQ(watcher_.RowsDeleted(), 1007);
  EXPECT_TRUE(TheVisit().compacted);
}

TEST_F(PassWatching, TakesALeftOutCompactionForTheEndOfTheVisit) {
  const common::Error success;
  const shared::LeftOutCompaction left_out{shared::LeftOutCompaction::Reason::kLittleToFree, 0.3, 4'096};
  shared::StatementRecord record = Ran("VACUUM;", 0, success);
  record.left_out = &left_out;
  watcher_.OnEnd(record);
  EXPECT_TRUE(TheVisit().compacted);
  EXPECT_EQ(TheVisit().left_out->free_percent, 0.3);
}

TEST_F(PassWatching, LetsCompactionBeLeftOutOnlyWhereItSawThatNoSizeLimitActs) {
  EXPECT_FALSE(watcher_.MayLeaveOutCompaction("/data/HealthLog.db")) << "nothing was seen";
  End("SELECT COUNT(*) AS rows FROM Boot");
  End("SELECT pgsize, pageno FROM dbstat WHERE name='Boot'");
  EXPECT_TRUE(watcher_.MayLeaveOutCompaction("/data/HealthLog.db"));
  End("SELECT COUNT(*) AS rows FROM Boot");
  EXPECT_FALSE(watcher_.MayLeaveOutCompaction("/data/HealthLog.db"));
}

TEST_F(PassWatching, RemembersTheStatementThatFailed) {
  common::Error failure;
  failure.category = common::EC_Custom;
  failure.code = 5;
  failure.type = "sqlite3";
  End("DELETE FROM Boot WHERE datetime(time) < datetime('2024-01-01');", 3, failure);
  EXPECT_EQ(watcher_.LastFailure()->database, "/data/HealthLog.db");
  EXPECT_THAT(watcher_.LastFailure()->sql, testing::StartsWith("DELETE FROM Boot"));
  EXPECT_EQ(watcher_.RowsDeleted(), 0) << "it was rolled back";
  EXPECT_FALSE(TheVisit().compacted);
}

TEST_F(PassWatching, TakesAMissingTableForNoFailure) {
  common::Error missing;
  missing.category = common::EC_Custom;
  missing.code = 1;
  missing.type = "sqlite3";
  missing.what = "no such table: Boot";
  End("DELETE FROM Boot WHERE datetime(time) < datetime('2024-01-01');", 0, missing);
  EXPECT_EQ(watcher_.LastFailure(), std::nullopt);
}

TEST_F(PassWatching, DoesNotTakeAFailedCompactionForOne) {
  common::Error full;
  full.category = common::EC_Custom;
  full.code = 13;
  full.type = "sqlite3";
  End("VACUUM;", 0, full);
  EXPECT_FALSE(TheVisit().compacted);
  EXPECT_NE(TheVisit().failure, std::nullopt);
}

}  // namespace
}  // namespace corvo::telemetry::host
