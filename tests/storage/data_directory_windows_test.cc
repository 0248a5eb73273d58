// The data directory that no host has chosen.
#include "storage/storage_fixture.h"
#include "support/environment.h"

namespace corvo::test {
namespace {

constexpr const char* kVariable = "CORVO_TELEMETRY_DATA_DIR";

class DataDirectory : public StorageTest {
 protected:
  DataDirectory() { SetEnvironment(kVariable, nullptr); }
  ~DataDirectory() override { SetEnvironment(kVariable, nullptr); }
};

TEST_F(DataDirectory, IsThePlatformsByDefault) {
  EXPECT_EQ(shared::GetDataDirectory(), "c:\\ProgramData\\Corvo\\Telemetry\\Data\\");
}

TEST_F(DataDirectory, ComesFromTheEnvironmentBeforeThePlatform) {
  SetEnvironment(kVariable, "c:\\srv\\telemetry");

  EXPECT_EQ(shared::GetDataDirectory(), "c:\\srv\\telemetry\\");
}

TEST_F(DataDirectory, IgnoresAnEmptyEnvironmentVariable) {
  SetEnvironment(kVariable, "");

  EXPECT_EQ(shared::GetDataDirectory(), "c:\\ProgramData\\Corvo\\Telemetry\\Data\\");
}

TEST_F(DataDirectory, ComesFromTheHostBeforeTheEnvironment) {
  SetEnvironment(kVariable, "c:\\srv\\telemetry");
  shared::SetDataDirectory("c:\\srv\\chosen");
  EXPECT_EQ(shared::GetDataDirectory(), "c:\\srv\\chosen\\");

  shared::SetDataDirectory("");
  EXPECT_EQ(shared::GetDataDirectory(), "c:\\srv\\telemetry\\");
}

}  // namespace
}  // namespace corvo::test
