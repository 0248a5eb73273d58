#include <gmock/gmock.h>

#include "common/text.h"
#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

TEST_F(RunTest, CleansADirectoryWithANameOfManyScripts) {
  const std::filesystem::path folder = std::filesystem::path(data_) / u8"Gerät Ж 日本";
  const std::string name = telemetry::common::Utf8(folder);
  ASSERT_EQ(RunHost({"generate", "--data-dir", name, "--scale", "0.01"}).exit_code, 0);
  const std::int64_t before = Database(folder / "Cache.db").Count("CollectorCache");

  const HostRun run = RunHost({"run", "--data-dir", name, "--json"});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.Json()["databases"][0]["path"], telemetry::common::Utf8(folder / "Cache.db"));
  EXPECT_LT(Database(folder / "Cache.db").Count("CollectorCache"), before);
}

TEST_F(RunTest, LinesOfTheDocumentEndWithALineFeedAlone) {
  Generate();
  const HostRun run = Run({"--json"});
  EXPECT_THAT(run.out, testing::HasSubstr("\n"));
  EXPECT_THAT(run.out, testing::Not(testing::HasSubstr("\r")));
}

}  // namespace
}  // namespace corvo::test
