#include "host/samples/generation_plan.h"

#include <google/protobuf/descriptor.h>

#include <algorithm>

#include "common/timestamp.h"
#include "host/show/time_text.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kUsualTextLength = 12;
constexpr std::int64_t kFewestRows = 10;
constexpr std::int64_t kRowsWithoutLimit = 1'000;
constexpr std::uint32_t kDaysWithoutRetention = 400;
constexpr std::size_t kLongTableEvery = 5;

bool IsLong(const ContractView& contract, std::size_t index) {
  return contract.max_rows != 0 && index % kLongTableEvery == 1;
}

// A long table stays above its limit when its expired fifth is gone; the others stay far below.
std::int64_t UnscaledRows(const ContractView& contract, std::size_t index) {
  if (contract.max_rows == 0) {
    return kRowsWithoutLimit;
  }
  return IsLong(contract, index) ? std::int64_t{contract.max_rows} * 3 / 2 : contract.max_rows / 20;
}

std::int64_t Span(const ContractView& contract, std::uint32_t days) {
  if (days != 0) {
    return days * common::kSecondsPerDay;
  }
  const std::int64_t retention = contract.retention_days != 0 ? contract.retention_days : kDaysWithoutRetention;
  return retention * common::kSecondsPerDay * 5 / 4;
}

std::string MissingDatabase(const CatalogueView& catalogue) {
  const auto found = std::find_if(catalogue.databases.begin(), catalogue.databases.end(),
                                  [](const DatabaseView& database) { return database.max_size_mb == 0; });
  return found == catalogue.databases.end() ? "" : found->database;
}

// The smallest limit makes the smallest files; several tables make the trimming worth a look.
std::string OversizeDatabase(const CatalogueView& catalogue) {
  const DatabaseView* smallest = nullptr;
  for (const DatabaseView& database : catalogue.databases) {
    const bool candidate = database.max_size_mb != 0 && catalogue.Of(database.database).size() > 1;
    if (candidate && (smallest == nullptr || database.max_size_mb < smallest->max_size_mb)) {
      smallest = &database;
    }
  }
  return smallest == nullptr ? "" : smallest->database;
}

std::string MissingTable(const CatalogueView& catalogue) {
  std::vector<ContractView> largest;
  for (const DatabaseView& database : catalogue.databases) {
    std::vector<ContractView> tables = catalogue.Of(database.database);
    if (tables.size() > largest.size()) {
      largest = std::move(tables);
    }
  }
  return largest.size() < 3 ? "" : largest[2].table;
}

std::int64_t TextFields(const google::protobuf::Descriptor& type) {
  std::int64_t count = 0;
  for (int index = 1; index < type.field_count(); ++index) {
    count += type.field(index)->type() == google::protobuf::FieldDescriptor::TYPE_STRING ? 1 : 0;
  }
  return count;
}

// So long that the texts alone come to a tenth more than the limit.
std::size_t OversizeTextLength(const CatalogueView& catalogue, const std::string& oversize) {
  std::int64_t texts = 0;
  std::int64_t limit_bytes = 0;
  for (std::size_t index = 0; index < catalogue.contracts.size(); ++index) {
    const ContractView& contract = catalogue.contracts[index];
    if (contract.database == oversize) {
      texts += UnscaledRows(contract, index) * TextFields(*contract.descriptor);
      limit_bytes = std::int64_t{contract.max_size_mb} * 1'000'000;
    }
  }
  return texts == 0 ? kUsualTextLength : static_cast<std::size_t>(limit_bytes * 11 / 10 / texts + 1);
}

}  // namespace

GenerationPlan PlanGeneration(const CatalogueView& catalogue, double scale, std::uint32_t days) {
  GenerationPlan plan{.databases = {},
                      .missing_database = MissingDatabase(catalogue),
                      .missing_table = MissingTable(catalogue),
                      .oversize_database = OversizeDatabase(catalogue),
                      .long_tables = {}};
  const std::size_t oversize_length = OversizeTextLength(catalogue, plan.oversize_database);
  for (const DatabaseView& database : catalogue.databases) {
    plan.databases.push_back({database.database, {}});
  }
  for (std::size_t index = 0; index < catalogue.contracts.size(); ++index) {
    const ContractView& contract = catalogue.contracts[index];
    if (contract.database == plan.missing_database || contract.table == plan.missing_table) {
      continue;
    }
    const auto scaled = static_cast<std::int64_t>(static_cast<double>(UnscaledRows(contract, index)) * scale);
    const std::int64_t rows = std::max(scaled, kFewestRows);
    const auto home =
        std::find_if(plan.databases.begin(), plan.databases.end(),
                     [&contract](const DatabasePlan& entry) { return entry.database == contract.database; });
    home->tables.push_back({contract.descriptor, contract.table, rows, Span(contract, days),
                            contract.database == plan.oversize_database ? oversize_length : kUsualTextLength});
    if (contract.max_rows != 0 && rows > contract.max_rows) {
      plan.long_tables.push_back(contract.table);
    }
  }
  std::erase_if(plan.databases, [](const DatabasePlan& entry) { return entry.tables.empty(); });
  return plan;
}

}  // namespace corvo::telemetry::host
