#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace google::protobuf {
class Descriptor;
}

namespace corvo::telemetry::host {

/// A contract with the values of its options.
struct ContractView {
  std::string type;      ///< full name of the message type
  std::string name;      ///< short name of the message type
  std::string table;     ///< SQL name of its table
  std::string database;  ///< name of its database as the option spells it
  std::uint32_t max_rows;
  std::uint32_t retention_days;
  std::uint32_t max_size_mb;
  const google::protobuf::Descriptor* descriptor;
  std::string table_option = {};  ///< its table as the option spells it; empty: the table has the type's short name
};

/// A database with the values of its options.
struct DatabaseView {
  std::string type;
  std::string name;
  std::string database;
  std::uint32_t max_size_mb;
};

/// Both catalogues, in catalogue order. A pass changes options of the process, so read them before the first one.
struct CatalogueView {
  std::vector<ContractView> contracts;
  std::vector<DatabaseView> databases;

  /// The contracts of one database, in catalogue order.
  [[nodiscard]] std::vector<ContractView> Of(const std::string& database) const;
};

/// Both catalogues as the linked contracts have them; read anew at each call.
[[nodiscard]] CatalogueView ReadCatalogue();

}  // namespace corvo::telemetry::host
