// The data directory that no host has chosen.
#include <cstdlib>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

constexpr const char* kVariable = "CORVO_TELEMETRY_DATA_DIR";

class DataDirectory : public StorageTest {
 public:
  DataDirectory() { unsetenv(kVariable); }
  ~DataDirectory() override { unsetenv(kVariable); }
};

TEST_F(DataDirectory, IsThePlatformsByDefault) {
  EXPECT_EQ(shared::GetDataDirectory(), "/var/lib/corvo/telemetry/data/");
}

TEST_F(DataDirectory, ComesFromTheEnvironmentBeforeThePlatform) {
  setenv(kVariable, "/srv/telemetry", 1);

  EXPECT_EQ(shared::GetDataDirectory(), "/srv/telemetry/");
}

TEST_F(DataDirectory, IgnoresAnEmptyEnvironmentVariable) {
  setenv(kVariable, "", 1);

  EXPECT_EQ(shared::GetDataDirectory(), "/var/lib/corvo/telemetry/data/");
}

TEST_F(DataDirectory, ComesFromTheHostBeforeTheEnvironment) {
  setenv(kVariable, "/srv/telemetry", 1);
  shared::SetDataDirectory("/srv/chosen");
  EXPECT_EQ(shared::GetDataDirectory(), "/srv/chosen/");

  shared::SetDataDirectory("");
  EXPECT_EQ(shared::GetDataDirectory(), "/srv/telemetry/");
}

}  // namespace
}  // namespace corvo::test
