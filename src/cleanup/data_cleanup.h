#pragma once

#include <google/protobuf/message.h>

#include <cstdint>

#include "cleanup/database_map.h"
#include "common/error.h"
#include "framework/telemetry_collector_base.h"

/// The collector that keeps the telemetry databases within bounds: one object for one pass.
///
/// Every operation opens its own storage, sends it one statement and closes it again, and reports through the `Error`
/// it returns; a table that does not exist counts as clean. Runs on the calling thread. Two passes at once in one
/// process are not safe: `EnforceSizeLimit` writes option objects that the whole process shares.
class DataCleanup : public corvo::telemetry::common::TelemetryCollectorBase {
 public:
  using Error = corvo::telemetry::common::Error;
  using Message = google::protobuf::Message;
  using DatabaseEntry = corvo::telemetry::cleanup::DatabaseEntry;
  using DatabaseMap = corvo::telemetry::cleanup::DatabaseMap;

  ~DataCleanup() override;

  /// Nothing is configured from outside: the input is ignored.
  void Configure(const char* input) override;

  /// The whole pass; its result is that of the last step that ran.
  Error ReadSource() override;

  /// Cleans the databases in map order, each completely before the next, up to the first failure.
  [[nodiscard]] Error CleanDatabases(const DatabaseMap& databases) const;

  /// Deletes the rows of the contract's table that are older than `retention_days` days of 86,400 seconds; 0 keeps all.
  static Error DeleteExpiredRows(const Message* contract, std::uint32_t retention_days);

  /// Trims the contract's table below `row_limit` rows, the oldest first; 0 means no limit.
  Error DeleteExtraRows(const Message* contract, std::uint32_t row_limit) const;

  /// Trims every table of a database that has reached its size limit, each by the same share of its rows. The entry
  /// may be null.
  Error EnforceSizeLimit(const DatabaseEntry* database) const;

  /// Deletes the `count` rows with the smallest rowids from the contract's table.
  static Error TruncateRows(const Message* contract, std::uint32_t count);

  /// Size of the contract's table in decimal megabytes, to the nearest; 0 when it is unknown.
  static std::int32_t GetTableSize(const Message* contract);

  /// Number of rows of the contract's table, written to `count`, which keeps its value on failure.
  static Error GetRowCount(const Message* contract, std::uint32_t& count);

  /// Compacts the database that holds the contract's table.
  static Error Vacuum(const Message* message);

 private:
  Error CleanDatabase(const DatabaseEntry& database) const;
  Error CleanTable(const Message* contract) const;

  /// Percentage taken off every row and size limit when trimming. The spelling is frozen.
  double trimMarginPercent = 10.0;
};
