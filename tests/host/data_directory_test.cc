#include "host/facts/data_directory.h"

#include <gmock/gmock.h>

#include <fstream>

#include "host/run_fixture.h"
#include "support/environment.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

using telemetry::host::DataDirectory;
using telemetry::host::ResolveDataDirectory;
using testing::HasSubstr;

constexpr const char* kVariable = "CORVO_TELEMETRY_DATA_DIR";

class DataDirectoryOf : public testing::Test {
 protected:
  DataDirectoryOf() { SetEnvironment(kVariable, nullptr); }
  ~DataDirectoryOf() override { SetEnvironment(kVariable, nullptr); }

  TempDir folder_;
};

TEST_F(DataDirectoryOf, TheOptionComesFirst) {
  SetEnvironment(kVariable, "/nowhere");
  const DataDirectory directory = ResolveDataDirectory(folder_.Path().string());
  EXPECT_EQ(directory.path, folder_.Path());
  EXPECT_EQ(directory.origin, "--data-dir");
  EXPECT_EQ(directory.problem, "");
}

TEST_F(DataDirectoryOf, TheEnvironmentComesSecond) {
  SetEnvironment(kVariable, folder_.Path().string().c_str());
  const DataDirectory directory = ResolveDataDirectory("");
  EXPECT_EQ(directory.path, folder_.Path());
  EXPECT_EQ(directory.origin, kVariable);
  EXPECT_EQ(directory.problem, "");
}

TEST_F(DataDirectoryOf, ThePlatformComesLast) {
  const DataDirectory directory = ResolveDataDirectory("");
  EXPECT_TRUE(directory.path.is_absolute());
  EXPECT_EQ(directory.origin, "default");
}

TEST_F(DataDirectoryOf, ARelativeNameIsMadeAbsolute) {
  EXPECT_EQ(ResolveDataDirectory("missing").path, std::filesystem::current_path() / "missing");
}

TEST_F(DataDirectoryOf, AMissingDirectoryIsToldWithWhoNamedIt) {
  SetEnvironment(kVariable, (folder_ / "missing").c_str());
  EXPECT_EQ(ResolveDataDirectory("").problem, "the data directory " + folder_ / "missing" +
                                                  " (CORVO_TELEMETRY_DATA_DIR) does not exist; name the directory that "
                                                  "holds the .db files with --data-dir");
}

TEST_F(DataDirectoryOf, AFileOnTheWayIsNoDirectory) {
  std::ofstream(folder_ / "file") << "a file";
  EXPECT_THAT(ResolveDataDirectory(folder_ / "file").problem, HasSubstr("is not a directory"));
  EXPECT_NE(ResolveDataDirectory(folder_ / "file/data").problem, "");
}

TEST_F(DataDirectoryOf, ANameThatIsTooLongSaysSo) {
  EXPECT_NE(ResolveDataDirectory(folder_ / std::string(5000, 'x')).problem, "");
}

TEST_F(RunTest, CleansTheDirectoryOfTheEnvironmentWhenNoneIsNamed) {
  Generate();
  const HostRun run = RunHost({"run", "--json"}, {std::string(kVariable) + "=" + data_});
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(run.Json()["databases"][0]["path"], File("Cache.db").string());
}

}  // namespace
}  // namespace corvo::test
