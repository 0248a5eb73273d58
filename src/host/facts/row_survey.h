#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "common/error.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {

/// Rows of one kind that a person should know of, with one of them.
struct OddRows {
  std::int64_t rows = 0;
  std::int64_t rowid = 0;   ///< of the sample, the one with the smallest rowid; 0 when the table has no rowids
  std::string sample = {};  ///< its time as it stands, at most 100 characters; NULL as "NULL", bytes as "x'00ff'"
};

/// The rows of a table by their times. Times are in seconds since 1970-01-01 UTC, as SQLite reads them.
struct RowSurvey {
  std::int64_t rows = 0;
  std::int64_t expired = 0;
  std::optional<std::int64_t> oldest = {};
  std::optional<std::int64_t> newest = {};
  std::int64_t recent = 0;                         ///< of the last seven days
  std::optional<std::int64_t> oldest_recent = {};  ///< of these
  std::int64_t before_recent = 0;                  ///< that are older
  OddRows no_time = {};
  OddRows unreadable = {};
  OddRows future = {};
  OddRows ancient = {};
};

inline constexpr std::int64_t kRecentDays = 7;

/// What the survey of a table is to find.
struct SurveyRequest {
  std::string table;
  bool has_time = true;                     ///< else its rows are only counted
  bool has_rowids = true;                   ///< else samples come without one
  std::optional<std::int64_t> cutoff = {};  ///< moment before which rows are expired; none: rows do not expire
  std::int64_t now = 0;
};

/// Reads the table once, and a sample of each odd kind that is there.
common::Error SurveyRows(shared::TelemetryStorage& storage, const SurveyRequest& request, RowSurvey& survey);

}  // namespace corvo::telemetry::host
