#include "host/cli/words/option_values.h"

#include <gmock/gmock.h>

#include <limits>

namespace corvo::telemetry::host {
namespace {

using testing::ElementsAre;

/// One option, read from its words.
class OptionValues : public testing::Test {
 protected:
  void Parse(std::vector<std::string> words) {
    std::reverse(words.begin(), words.end());
    app_.parse(words);
  }

  CLI::App app_;
};

TEST_F(OptionValues, KeepEveryBitOfANumber) {
  std::uint64_t seed = 1;
  AddNumber(app_, {"--seed", "NUMBER", ""}, seed, std::uint64_t{0}, std::numeric_limits<std::uint64_t>::max());
  Parse({"--seed", "18446744073709551615"});
  EXPECT_EQ(seed, 18'446'744'073'709'551'615U);
}

TEST_F(OptionValues, ReachBothEndsOfTheirRange) {
  double scale = 1;
  AddNumber(app_, {"--scale", "FACTOR", ""}, scale, 0.001, 1000.0);
  Parse({"--scale", "1e3"});
  EXPECT_EQ(scale, 1000);
  Parse({"--scale=0.001"});
  EXPECT_EQ(scale, 0.001);
}

TEST_F(OptionValues, StayAtTheirDefaultsWhenNotGiven) {
  int wait_s = 7;
  AddNumber(app_, {"--wait", "SECONDS", ""}, wait_s, 0, 10);
  Parse({});
  EXPECT_EQ(wait_s, 7);
}

TEST_F(OptionValues, NameDatabasesOnceAndAsTheCatalogueSpellsThem) {
  std::vector<std::string> databases;
  AddDatabases(app_, {"--database", "NAME", ""}, databases);
  Parse({"--database", "healthLOG.DB", "--database=cache", "--database", "HealthLog"});
  EXPECT_THAT(databases, ElementsAre("HealthLog", "Cache"));
}

}  // namespace
}  // namespace corvo::telemetry::host
