#include <gmock/gmock.h>
#include <google/protobuf/message.h>

#include "contracts/catalogue.h"
#include "contracts/lookups.h"
#include "host/host_process.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

using google::protobuf::Message;
namespace contracts = telemetry::contracts;

nlohmann::json Expected(const Message& message) {
  const auto& options = contracts::GetPersistance(message);
  return {{"type", message.GetDescriptor()->full_name()},
          {"name", message.GetDescriptor()->name()},
          {"table", contracts::GetTableName(&message)},
          {"database", options.database()},
          {"max_rows", options.table_options().max_rows()},
          {"retention_days", options.table_options().retention_days()},
          {"max_size_mb", options.database_options().max_size_mb()}};
}

TEST(ContractsCommand, WritesBothCataloguesInTheirOrderAsJson) {
  nlohmann::json expected = {{"schema_version", 1}, {"contracts", {}}, {"databases", {}}};
  for (const Message* message : contracts::ContractCatalogue()) {
    expected["contracts"].push_back(Expected(*message));
  }
  for (const Message* message : contracts::DatabaseCatalogue()) {
    nlohmann::json database = Expected(*message);
    database.erase("table");
    database.erase("max_rows");
    database.erase("retention_days");
    expected["databases"].push_back(database);
  }
  const HostRun run = RunHost({"contracts", "--json"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.Json(), expected);
}

TEST(ContractsCommand, ShowsOneLineForEachContract) {
  const HostRun run = RunHost({"contracts"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_THAT(run.out, testing::HasSubstr(std::to_string(contracts::ContractCatalogue().size()) + " tables in " +
                                          std::to_string(contracts::DatabaseCatalogue().size()) + " databases"));
  for (const Message* message : contracts::ContractCatalogue()) {
    EXPECT_THAT(run.out,
                ContainsPattern(contracts::GetPersistance(*message).database() + " +" +
                                message->GetDescriptor()->name() + " +" + contracts::GetTableName(message) + " "));
  }
}

TEST(ContractsCommand, FindsNothingDoubtfulInTheCatalogue) {
  const HostRun run = RunHost({"contracts", "--lint"});
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(run.out, "Nothing doubtful: " + std::to_string(contracts::ContractCatalogue().size()) + " tables in " +
                         std::to_string(contracts::DatabaseCatalogue().size()) + " databases\n");
  const HostRun document = RunHost({"contracts", "--lint", "--json"});
  EXPECT_EQ(document.exit_code, 0);
  EXPECT_EQ(document.Json()["kind"], "lint");
  EXPECT_EQ(document.Json()["findings"], nlohmann::json::array());
}

}  // namespace
}  // namespace corvo::test
