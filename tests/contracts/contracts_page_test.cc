#include <gtest/gtest.h>

#include <fstream>

#include "contracts/catalogue.h"
#include "contracts/lookups.h"

namespace corvo::test {
namespace {

using telemetry::contracts::GetPersistance;

std::string Limit(std::uint32_t value) { return value == 0 ? "–" : std::to_string(value); }

std::string PageRow(const google::protobuf::Message& contract) {
  const auto& options = GetPersistance(contract);
  const std::string prefix = "corvo.telemetry.contract.storage.";
  return "| `" + contract.GetDescriptor()->full_name().substr(prefix.size()) + "` | " + options.database() + " | " +
         telemetry::contracts::GetTableName(&contract) + " | " + Limit(options.table_options().max_rows()) + " | " +
         Limit(options.table_options().retention_days()) + " | " + Limit(options.database_options().max_size_mb()) +
         " |";
}

/// The table rows, without the head, that follow a heading of the page.
std::string RowsBelow(const std::string& heading) {
  std::ifstream page(CORVO_CONTRACTS_PAGE);
  std::string line;
  while (std::getline(page, line) && line != heading) {
  }
  std::string rows;
  while (std::getline(page, line)) {
    rows += line.rfind("| `", 0) == 0 ? line + "\n" : "";
  }
  return rows;
}

// When this fails, copy the expected rows into docs/contracts.md.
TEST(ContractsPage, ListsTheCatalogueWithItsLimits) {
  std::string expected;
  for (const auto* contract : telemetry::contracts::ContractCatalogue()) {
    expected += PageRow(*contract) + "\n";
  }
  EXPECT_EQ(RowsBelow("## The contracts"), expected);
}

}  // namespace
}  // namespace corvo::test
