#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"
#include "host/facts/record/promises.h"
#include "host/facts/run_report.h"

namespace corvo::telemetry::host {

/// A database against what its last run has promised.
struct DatabaseCheck {
  std::string name;  ///< as the option spells it
  std::filesystem::path path;
  std::optional<LastRun> run = {};        ///< the last one that visited it, when it is recorded
  std::optional<Problem> problem = {};    ///< why it cannot be looked at; then nothing is known of its content
  common::Error damage = {};              ///< what the storage library says of a damaged file; else success
  Outcomes outcomes = {};                 ///< of the database with all its tables
  std::vector<Breach> breaches = {};      ///< likewise
  std::vector<TableVerdict> tables = {};  ///< in catalogue order
};

/// Looks through the database's file for damage, reads it in one transaction, and fills in what that tells. Changes
/// nothing. The options of the storage in force say that files are opened for reading only, and looked through.
///
/// @param check with path and last run; has nothing of its content yet.
/// @param contracts of the database, in catalogue order.
/// @param now from which ages are counted without a last run, in seconds since 1970-01-01 UTC.
void CheckContent(DatabaseCheck& check, const std::vector<ContractView>& contracts, std::int64_t now);

}  // namespace corvo::telemetry::host
