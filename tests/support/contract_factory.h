#pragma once

#include <google/protobuf/descriptor.h>
#include <google/protobuf/dynamic_message.h>
#include <google/protobuf/message.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvo::test {

/// The options of a contract type; an empty table name leaves the table named after the type.
struct ContractOptions {
  std::string database = {};
  std::string table = {};
  std::uint32_t max_rows = 0;
  std::uint32_t retention_days = 0;
  std::uint32_t max_size_mb = 0;
};

/// Contracts made at run time, each of a message type of its own with options of its own: what the engine writes
/// through them ends with the factory, so tests stay independent of each other.
class ContractFactory {
 public:
  ContractFactory();
  ContractFactory(const ContractFactory&) = delete;
  ContractFactory& operator=(const ContractFactory&) = delete;
  ~ContractFactory();

  /// A new type of this short name with these options, as the one instance that represents it. The factory owns it.
  google::protobuf::Message* Make(const std::string& type, const ContractOptions& options);

  /// A new type that sets no options.
  google::protobuf::Message* MakeWithoutOptions(const std::string& type);

 private:
  google::protobuf::Message* MakeType(const std::string& type, const std::optional<ContractOptions>& options);

  google::protobuf::DescriptorPool pool_;
  google::protobuf::DynamicMessageFactory factory_;
  std::vector<std::unique_ptr<google::protobuf::Message>> messages_;
};

}  // namespace corvo::test
