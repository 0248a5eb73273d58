#include <gmock/gmock.h>

#include "architecture/include_rules.h"

namespace corvo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Rule = std::vector<std::string> (*)(const SourceFile&);

std::vector<std::string> OffencesInTheProject(Rule rule) {
  std::vector<std::string> all;
  for (const SourceFile& file : ProductSources(CORVO_SOURCE_DIR)) {
    const std::vector<std::string> found = rule(file);
    all.insert(all.end(), found.begin(), found.end());
  }
  return all;
}

TEST(Layers, IncludesRunOneWay) { EXPECT_THAT(OffencesInTheProject(WrongWayIncludes), IsEmpty()); }

TEST(Layers, IncludesRunOneWayWithinTheHost) { EXPECT_THAT(OffencesInTheProject(WrongWayFloors), IsEmpty()); }

TEST(Layers, OnlyStorageSourcesAndTheSampleGeneratorSeeSqlite) {
  EXPECT_THAT(OffencesInTheProject(StraySqliteIncludes), IsEmpty());
}

TEST(Layers, OnlyStorageSourcesSeeWhatAConnectionIsMadeOf) {
  EXPECT_THAT(OffencesInTheProject(StrayConnectionIncludes), IsEmpty());
}

TEST(Layers, OnlyPlatformFilesSeeTheOperatingSystem) {
  EXPECT_THAT(OffencesInTheProject(StrayPlatformCode), IsEmpty());
}

TEST(Layers, TheRulesReadTheWholeProduct) { EXPECT_THAT(ProductSources(CORVO_SOURCE_DIR), SizeIs(testing::Gt(60u))); }

TEST(LayerRules, AnIncludeOfAHigherLayerIsAnOffence) {
  const SourceFile file{"src/common/error.cc", "#include \"common/error.h\"\n#include \"cleanup/cutoff.h\"\n"};
  EXPECT_THAT(WrongWayIncludes(file), ElementsAre("src/common/error.cc: #include \"cleanup/cutoff.h\""));
}

TEST(LayerRules, TheHostReachesTheEngineOnlyByLoadingTheModule) {
  for (const char* header : {"cleanup/cutoff.h", "plugin/load_plugin.h"}) {
    EXPECT_THAT(WrongWayIncludes({"src/host/main.cc", std::string("#include \"") + header + "\""}), SizeIs(1));
  }
  EXPECT_THAT(WrongWayIncludes({"src/host/main.cc", "#include \"contracts/catalogue.h\""}), IsEmpty());
}

TEST(LayerRules, AnIncludeOfAHigherFloorOfTheHostIsAnOffence) {
  const SourceFile file{"src/host/show/failure.cc",
                        "#include \"host/show/failure.h\"\n#include \"host/cli/commands.h\""};
  EXPECT_THAT(WrongWayFloors(file), ElementsAre("src/host/show/failure.cc: #include \"host/cli/commands.h\""));
  EXPECT_THAT(WrongWayFloors({"src/host/facts/inventory.cc", "#include \"host/pass/logging.h\""}), SizeIs(1));
  EXPECT_THAT(WrongWayFloors({"src/host/pass/logging.cc", "#include \"host/samples/row_source.h\""}), SizeIs(1));
  EXPECT_THAT(WrongWayFloors({"src/host/pass/logging.cc", "#include \"host/show/failure.h\""}), IsEmpty());
}

TEST(LayerRules, AFileOfTheHostThatIsOnNoFloorIsAnOffence) {
  EXPECT_THAT(WrongWayFloors({"src/host/attic/old.cc", ""}), SizeIs(1));
  EXPECT_THAT(WrongWayFloors({"src/host/units.cc", ""}), SizeIs(1));
  EXPECT_THAT(WrongWayFloors({"src/storage/sql_command.cc", "#include \"host/cli/commands.h\""}), IsEmpty());
}

TEST(LayerRules, AHeaderWithoutItsFolderIsAnOffence) {
  EXPECT_THAT(WrongWayIncludes({"src/cleanup/cutoff.cc", "#include \"cutoff.h\""}), SizeIs(1));
}

TEST(LayerRules, AFolderThatNoLayerNamesIsAnOffence) {
  EXPECT_THAT(WrongWayIncludes({"src/misc/misc.cc", ""}), SizeIs(1));
}

TEST(LayerRules, StorageHeadersMayNotIncludeSqliteButItsSourcesMay) {
  EXPECT_THAT(StraySqliteIncludes({"src/storage/sql_command.h", "#include <sqlite3.h>"}), SizeIs(1));
  EXPECT_THAT(StraySqliteIncludes({"src/storage/result_code.cc", "#include <sqlite3.h>"}), IsEmpty());
  EXPECT_THAT(StraySqliteIncludes({"src/storage/connection/connection.cc", "#include <sqlite3.h>"}), IsEmpty());
}

TEST(LayerRules, AConnectionsInsideIsAnOffenceInTheStoragesHeadersAndInOtherLayers) {
  const std::string text = "#include \"storage/connection/statement.h\"\n";
  EXPECT_THAT(StrayConnectionIncludes({"src/storage/sql_command.h", text}), SizeIs(1));
  EXPECT_THAT(StrayConnectionIncludes({"src/cleanup/expiry.cc", text}), SizeIs(1));
  EXPECT_THAT(StrayConnectionIncludes({"src/storage/sql_command.cc", text}), IsEmpty());
  EXPECT_THAT(StrayConnectionIncludes({"src/storage/connection/soundness.h", text}), IsEmpty());
}

TEST(LayerRules, PlatformHeadersAndConditionsBelongInPlatformFiles) {
  const std::string text = "#include <unistd.h>\n#include <sys/stat.h>\n#ifdef _WIN32\n#include <vector>\n";
  EXPECT_THAT(StrayPlatformCode({"src/host/main.cc", text}), SizeIs(3));
  EXPECT_THAT(StrayPlatformCode({"src/host/loader_posix.cc", text}), IsEmpty());
}

}  // namespace
}  // namespace corvo::test
