#pragma once

#include <string>

#include "common/error.h"
#include "host/facts/catalogue_view.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {

/// What a contract's table is, by the schema of its database.
struct TableCheck {
  bool missing = false;      ///< there is no such table, which is nothing wrong
  bool has_time = false;     ///< it has a column `time`
  bool has_rowids = false;   ///< it is no WITHOUT ROWID table and no view
  std::string misread = {};  ///< what the rules of the contract would misread in it; empty when nothing
};

/// Looks at the schema for the contract's table, without reading its rows.
common::Error CheckTable(shared::TelemetryStorage& storage, const ContractView& contract, TableCheck& check);

}  // namespace corvo::telemetry::host
