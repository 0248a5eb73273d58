#include <gtest/gtest.h>

#include <fstream>

#include "cleanup/scripted_fixture.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

/// A pass over databases that share one file.
class ScriptedOrder : public ScriptedTest {
 protected:
  ScriptedOrder() {
    std::ofstream(directory / "Log.db").flush();
    storage.path = [this] { return directory / "Log.db"; };
  }

  TempDir directory;
  google::protobuf::Message* first = contracts.Make("First", {.database = "Log"});
  google::protobuf::Message* last = contracts.Make("Last", {.database = "Log"});
};

TEST_F(ScriptedOrder, CompactionOpensTheDatabaseOfTheFirstContract) {
  EXPECT_THAT(collector.CleanDatabases({{"log", {0, {first, contract, last}}}}), Succeeded());
  EXPECT_THAT(storage.statements, testing::ElementsAre("VACUUM;"));
  EXPECT_EQ(storage.opened.back(), "contract First");
}

TEST_F(ScriptedOrder, DatabaseWithoutTablesBetweenTwoOthersIsPassedOver) {
  EXPECT_THAT(collector.CleanDatabases({{"a", {0, {first}}}, {"b", {0, {}}}, {"c", {0, {last}}}}), Succeeded());
  EXPECT_THAT(storage.statements, testing::ElementsAre("VACUUM;", "VACUUM;"));
  EXPECT_EQ(storage.opened.back(), "contract Last");
}

}  // namespace
}  // namespace corvo::test
