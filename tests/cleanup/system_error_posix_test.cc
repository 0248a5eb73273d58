#include <gtest/gtest.h>

#include <filesystem>

#include "cleanup/data_cleanup.h"
#include "cleanup/database_location.h"
#include "cleanup/engine_fixture.h"
#include "contracts/catalogue.h"
#include "storage/storage_options.h"

namespace corvo::test {
namespace {

/// What the existence test itself throws for the path.
std::string TextOfException(const std::string& path) {
  try {
    static_cast<void>(telemetry::cleanup::DatabaseFileExists(path.c_str()));
  } catch (const std::filesystem::filesystem_error& e) {
    return e.what();
  }
  return "no exception";
}

// The driver tells every standard exception by its own text, without the form that records of system errors have
// elsewhere.
TEST_F(EngineTest, SystemErrorInTheDriverKeepsItsOwnForm) {
  // The file system refuses to look for a name of this length.
  shared::SetDataDirectory(directory / std::string(300, 'x'));
  const auto* first = telemetry::contracts::ContractCatalogue().front();
  const std::string text = TextOfException(telemetry::cleanup::GetDatabaseFullPathName(first));

  const auto result = DataCleanup().ReadSource();

  EXPECT_EQ(result.category, telemetry::common::EC_Std);
  EXPECT_EQ(result.code, 1);
  EXPECT_THAT(text, testing::HasSubstr("exists"));
  EXPECT_EQ(result.what, text);
  EXPECT_THAT(result.what, testing::Not(testing::HasSubstr("system code")));
}

}  // namespace
}  // namespace corvo::test
