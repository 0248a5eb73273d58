#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/facts/catalogue_view.h"
#include "host/facts/record/history.h"

namespace corvo::telemetry::host {

// What a run promises of a database, and whether it is so, from counts alone. Pure.

enum class Promise {
  kCleaned,      ///< the last run cleaned it
  kSound,        ///< its file is not damaged
  kNoFreePages,  ///< all that was deleted has been given back
  kNoneTooOld,   ///< no row is older than its table's retention allowed at the run
  kWithinLimit,  ///< no table has more rows than a run leaves
  kNothingLost,  ///< no row is gone that no rule named
};

inline constexpr std::array kPromises = {Promise::kCleaned,    Promise::kSound,       Promise::kNoFreePages,
                                         Promise::kNoneTooOld, Promise::kWithinLimit, Promise::kNothingLost};

/// In the order in which the worse one is that of the whole.
enum class Outcome {
  kNone,     ///< nothing is promised: there is no such limit, or no such table
  kKept,     ///< it is so
  kUnknown,  ///< cannot be found out
  kBroken,   ///< it is not so
};

/// An outcome for each promise.
class Outcomes {
 public:
  [[nodiscard]] Outcome Of(Promise promise) const { return all_.at(static_cast<std::size_t>(promise)); }
  void Set(Promise promise, Outcome outcome) { all_.at(static_cast<std::size_t>(promise)) = outcome; }

  /// Takes the worse one of each.
  void Add(const Outcomes& other) {
    std::transform(all_.begin(), all_.end(), other.all_.begin(), all_.begin(),
                   [](Outcome mine, Outcome others) { return std::max(mine, others); });
  }

 private:
  std::array<Outcome, kPromises.size()> all_{};
};

struct RowSample {
  std::int64_t rowid = 0;
  std::string time = {};  ///< as it stands in the row
};

/// A promise that is not kept, and by what.
struct Breach {
  Promise promise;
  std::string table = {};    ///< empty: the database as a whole
  std::string reason = {};   ///< why it was not cleaned, or what is damaged; else empty
  std::int64_t number = 0;   ///< rows that are too old, too many or lost; free pages
  std::int64_t allowed = 0;  ///< the moment before which rows are too old, in seconds since 1970-01-01 UTC; the most
                             ///< rows that a run leaves; the rows that there should be; bytes of a page
  std::int64_t days = 0;     ///< that rows are kept for, where they are too old
  bool during_run = false;   ///< rows were lost while the run was at work, not since
  bool all_gone = false;     ///< with them the table, or the file
  std::optional<RowSample> row = {};  ///< the first one that is too old
};

/// What has been read of a table.
struct TableFacts {
  bool missing = false;
  bool has_time = true;  ///< a column of that name
  std::int64_t rows = 0;
  std::int64_t too_old = 0;      ///< older than the cutoff
  std::int64_t of_the_run = 0;   ///< up to the last row that the run left
  std::int64_t came_since = 0;   ///< after that row, of the time of the run's start or later
  std::int64_t came_during = 0;  ///< up to that row, of the time of the run's start or later
  std::optional<RowSample> first_too_old = {};
};

struct TableVerdict {
  ContractView contract;
  bool missing = false;
  std::int64_t rows = 0;
  std::int64_t came_since = 0;  ///< rows that came in since the run, which no limit counts
  Outcomes outcomes = {};
  std::vector<Breach> breaches = {};
};

/// The record of a database in the last run that visited it.
struct LastRun {
  std::int64_t start = 0;  ///< of the run, in seconds since 1970-01-01 UTC
  DatabaseRecord database;
  bool compaction_optional = false;  ///< options could leave it out

  /// Null when the run knew no such table.
  [[nodiscard]] const TableRecord* Find(const std::string& table) const;
};

/// Holds a table against its limits and, where there is one, against the record of the last run.
///
/// @param run null when there is none.
/// @param cutoff the moment that no row may be older than, in seconds since 1970-01-01 UTC.
[[nodiscard]] TableVerdict JudgeTable(const ContractView& contract, const TableFacts& facts, const LastRun* run,
                                      std::int64_t cutoff);

}  // namespace corvo::telemetry::host
