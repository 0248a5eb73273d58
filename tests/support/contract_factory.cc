#include "support/contract_factory.h"

#include <google/protobuf/descriptor.pb.h>

#include <stdexcept>

#include "corvo/telemetry/contract/storage/persistance.pb.h"

namespace corvo::test {
namespace {

namespace pb = google::protobuf;

void SetOptions(pb::MessageOptions& type, const ContractOptions& options) {
  auto& persistance = *type.MutableExtension(telemetry::contract::storage::persistance);
  persistance.set_database(options.database);
  persistance.mutable_database_options()->set_max_size_mb(options.max_size_mb);
  persistance.mutable_table_options()->set_table_name(options.table);
  persistance.mutable_table_options()->set_max_rows(options.max_rows);
  persistance.mutable_table_options()->set_retention_days(options.retention_days);
}

}  // namespace

ContractFactory::ContractFactory() : pool_(pb::DescriptorPool::generated_pool()), factory_(&pool_) {}

ContractFactory::~ContractFactory() = default;

pb::Message* ContractFactory::Make(const std::string& type, const ContractOptions& options) {
  return MakeType(type, options);
}

pb::Message* ContractFactory::MakeWithoutOptions(const std::string& type) { return MakeType(type, std::nullopt); }

pb::Message* ContractFactory::MakeType(const std::string& type, const std::optional<ContractOptions>& options) {
  const std::string package = "corvo.made" + std::to_string(messages_.size());
  pb::FileDescriptorProto file;
  file.set_name(package + ".proto");
  file.set_package(package);
  file.set_syntax("proto3");
  auto& message = *file.add_message_type();
  message.set_name(type);
  if (options) {
    file.add_dependency("corvo/telemetry/contract/storage/persistance.proto");
    SetOptions(*message.mutable_options(), *options);
  }
  const auto* built = pool_.BuildFile(file);
  if (built == nullptr) {
    throw std::invalid_argument("not a message type: " + type);
  }
  messages_.emplace_back(factory_.GetPrototype(built->message_type(0))->New());
  return messages_.back().get();
}

}  // namespace corvo::test
