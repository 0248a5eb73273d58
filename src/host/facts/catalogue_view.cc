#include "host/facts/catalogue_view.h"

#include <google/protobuf/descriptor.h>

#include <algorithm>
#include <iterator>

#include "contracts/catalogue.h"
#include "contracts/lookups.h"

namespace corvo::telemetry::host {
namespace {

using google::protobuf::Message;

ContractView ViewContract(const Message& message) {
  const auto& options = contracts::GetPersistance(message);
  const google::protobuf::Descriptor* descriptor = message.GetDescriptor();
  return {.type = descriptor->full_name(),
          .name = descriptor->name(),
          .table = contracts::GetTableName(&message),
          .database = options.database(),
          .max_rows = options.table_options().max_rows(),
          .retention_days = options.table_options().retention_days(),
          .max_size_mb = options.database_options().max_size_mb(),
          .descriptor = descriptor,
          .table_option = options.table_options().table_name()};
}

DatabaseView ViewDatabase(const Message& message) {
  const auto& options = contracts::GetPersistance(message);
  return {.type = message.GetDescriptor()->full_name(),
          .name = message.GetDescriptor()->name(),
          .database = options.database(),
          .max_size_mb = options.database_options().max_size_mb()};
}

}  // namespace

std::vector<ContractView> CatalogueView::Of(const std::string& database) const {
  std::vector<ContractView> found;
  std::copy_if(contracts.begin(), contracts.end(), std::back_inserter(found),
               [&database](const ContractView& contract) { return contract.database == database; });
  return found;
}

CatalogueView ReadCatalogue() {
  CatalogueView view;
  for (const Message* message : contracts::ContractCatalogue()) {
    view.contracts.push_back(ViewContract(*message));
  }
  for (const Message* message : contracts::DatabaseCatalogue()) {
    view.databases.push_back(ViewDatabase(*message));
  }
  return view;
}

}  // namespace corvo::telemetry::host
