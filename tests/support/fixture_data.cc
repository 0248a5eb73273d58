#include "support/fixture_data.h"

#include <google/protobuf/descriptor.h>

#include <algorithm>
#include <stdexcept>

#include "contracts/catalogue.h"
#include "contracts/lookups.h"
#include "support/database.h"

namespace corvo::test {
namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
namespace contracts = telemetry::contracts;

// Beyond the longest retention of the catalogue, and within the shortest.
constexpr int kExpiredDays = 400;
constexpr int kFreshDays = 1;

std::string Column(const FieldDescriptor& field) {
  switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING:
      return field.name() + " TEXT";
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return field.name() + " REAL";
    default:
      return field.name() + " INTEGER";
  }
}

std::string Value(const FieldDescriptor& field, int age_days) {
  if (field.name() == "time") {
    return "strftime('%Y-%m-%dT%H:%M:%S+00:00', 'now', '-" + std::to_string(age_days) + " days')";
  }
  return field.cpp_type() == FieldDescriptor::CPPTYPE_STRING ? "'" + field.name() + " number ' || i" : "i";
}

/// One text a field, separated by commas.
template <class Format>
std::string List(const Descriptor& type, Format format) {
  std::string list;
  for (int index = 0; index < type.field_count(); ++index) {
    list += (index > 0 ? ", " : "") + format(*type.field(index));
  }
  return list;
}

const Message& ContractOf(const std::string& table) {
  for (const Message* contract : contracts::ContractCatalogue()) {
    if (contracts::GetTableName(contract) == table) {
      return *contract;
    }
  }
  throw std::invalid_argument("no contract keeps its rows in " + table);
}

void WriteTable(Database& database, const Message& contract, const TableRows& rows) {
  const std::string table = contracts::GetTableName(&contract);
  database.Run("CREATE TABLE " + table + " (" + List(*contract.GetDescriptor(), Column) + ")");
  database.Run(InsertRows(table, 1, rows.expired, kExpiredDays));
  database.Run(InsertRows(table, rows.expired + 1, rows.fresh, kFreshDays));
}

}  // namespace

void WriteFixture(const std::filesystem::path& directory, const FixturePlan& plan) {
  for (const Message* contract : contracts::ContractCatalogue()) {
    const std::string name = contracts::GetPersistance(*contract).database();
    if (!plan.databases.empty() &&
        std::find(plan.databases.begin(), plan.databases.end(), name) == plan.databases.end()) {
      continue;
    }
    Database database(directory / (name + ".db"));
    database.Run("PRAGMA journal_mode=" + plan.journal_mode + "; PRAGMA synchronous=OFF");
    const auto exception = plan.exceptions.find(contracts::GetTableName(contract));
    WriteTable(database, *contract, exception != plan.exceptions.end() ? exception->second : plan.rows);
  }
}

std::string InsertRows(const std::string& table, std::int64_t first, std::int64_t count, int age_days) {
  const Descriptor& type = *ContractOf(table).GetDescriptor();
  const auto value = [age_days](const FieldDescriptor& field) { return Value(field, age_days); };
  return "WITH RECURSIVE numbers(i) AS (SELECT " + std::to_string(first) +
         " UNION ALL SELECT i + 1 FROM numbers LIMIT " + std::to_string(count) + ") INSERT INTO " + table + " SELECT " +
         List(type, value) + " FROM numbers";
}

}  // namespace corvo::test
