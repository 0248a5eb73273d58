// From a contract or a name to a file.
#include <sqlite3.h>

#include "corvo/telemetry/contract/storage/databases.pb.h"
#include "corvo/telemetry/contract/storage/device_usage.pb.h"
#include "storage/storage_fixture.h"
#include "support/contract_factory.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

namespace contracts = telemetry::contract::storage;

class Location : public StorageTest {
 protected:
  Location() { shared::SetDataDirectory(dir_.Path().string()); }

  ContractFactory factory_;
};

TEST_F(Location, OfAContractIsItsDatabaseOptionInTheDataDirectory) {
  const contracts::device_usage::PowerEvents contract;
  Database(dir_.Path() / "DeviceUsage.db").Run("CREATE TABLE PowerEvents(time)");

  TelemetryStorage storage(&contract, "");

  EXPECT_THAT(storage.GetLastError(), Succeeded());
  EXPECT_STREQ(storage.GetDataBaseName(), "DeviceUsage.db");
  EXPECT_EQ(storage.GetDataBasePath(), dir_ / "DeviceUsage.db");
  EXPECT_THAT(RunSql(storage, "DELETE FROM PowerEvents"), Succeeded());
}

TEST_F(Location, KeepsTheSpellingOfTheOption) {
  TelemetryStorage storage(factory_.Make("Type", {.database = "MiXed.Name"}), "");

  EXPECT_STREQ(storage.GetDataBaseName(), "MiXed.Name.db");
}

TEST_F(Location, OfAMissingFileIsKnownAllTheSame) {
  const contracts::HealthLog contract;

  TelemetryStorage storage(&contract, "");

  EXPECT_TRUE(storage.GetLastError().Failed());
  EXPECT_STREQ(storage.GetDataBaseName(), "HealthLog.db");
  EXPECT_EQ(storage.GetDataBasePath(), dir_ / "HealthLog.db");
}

TEST_F(Location, OfABareNameIsTheDataDirectory) {
  TelemetryStorage storage("Some.db", "");

  EXPECT_STREQ(storage.GetDataBaseName(), "Some.db");
  EXPECT_EQ(storage.GetDataBasePath(), dir_ / "Some.db");
}

TEST_F(Location, OfANameWithADirectoryPartIsThatPath) {
  const std::filesystem::path relative = std::filesystem::path("some") / "where.db";

  TelemetryStorage storage(relative.string().c_str(), "");

  EXPECT_STREQ(storage.GetDataBaseName(), "where.db");
  EXPECT_EQ(storage.GetDataBasePath(), (std::filesystem::current_path() / relative).string());
}

void ExpectUnresolved(TelemetryStorage& storage, const std::string& reason) {
  const auto unresolved =
      FailsWith(SQLITE_CANTOPEN, testing::AllOf(StartsWith("unable to open database file: "), HasSubstr(reason)));
  EXPECT_THAT(storage.GetLastError(), unresolved);
  EXPECT_THAT(RunSql(storage, "SELECT 1"), unresolved);
  EXPECT_STREQ(storage.GetDataBaseName(), "");
  EXPECT_STREQ(storage.GetDataBasePath(), "");
}

TEST_F(Location, CannotBeResolvedFromNothing) {
  TelemetryStorage null_contract(static_cast<const google::protobuf::Message*>(nullptr), "");
  TelemetryStorage null_name(static_cast<const char*>(nullptr), nullptr);
  TelemetryStorage empty_name("", "");

  ExpectUnresolved(null_contract, "no contract");
  ExpectUnresolved(null_name, "no database name");
  ExpectUnresolved(empty_name, "no database name");
}

TEST_F(Location, CannotBeResolvedForATypeWithoutDatabase) {
  TelemetryStorage without_options(factory_.MakeWithoutOptions("Bare"), "");
  TelemetryStorage empty_option(factory_.Make("Empty", {.table = "T"}), "");

  ExpectUnresolved(without_options, "Bare names no database");
  ExpectUnresolved(empty_option, "Empty names no database");
}

TEST_F(Location, CannotBeResolvedForAnOptionThatLeavesTheDataDirectory) {
  TelemetryStorage storage(factory_.Make("Escaping", {.database = "../State"}), "");

  ExpectUnresolved(storage, "outside the data directory: ../State");
}

}  // namespace
}  // namespace corvo::test
