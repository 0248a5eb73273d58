#include "host/facts/record/promises.h"

#include <limits>

#include "contracts/rules.h"
#include "host/facts/forecast.h"
#include "host/facts/growth.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::int64_t kMostCounted = std::numeric_limits<std::uint32_t>::max();

std::int64_t RowsTooMany(std::int64_t rows, std::uint32_t max_rows) {
  const auto count = static_cast<std::uint32_t>(std::clamp<std::int64_t>(rows, 0, kMostCounted));
  return contracts::RowsOverLimit(count, max_rows, kTrimMarginPercent);
}

/// Rows that others wrote during the run, less those that they deleted.
std::optional<std::int64_t> Balance(const TableRecord& record) {
  if (!record.rows_before || !record.rows_after) {
    return std::nullopt;
  }
  return *record.rows_after - (*record.rows_before - record.deleted.Sum());
}

/// Holds one table against its promises.
class Judgement {
 public:
  Judgement(TableVerdict& check, const TableFacts& facts, const LastRun* run)
      : check_(check), facts_(facts), run_(run), record_(run != nullptr ? run->Find(check.contract.table) : nullptr) {}

  void OnAge(std::int64_t cutoff) {
    if (check_.contract.retention_days == 0 || facts_.missing) {
      return;
    }
    Set(Promise::kNoneTooOld, facts_.has_time ? Outcome::kKept : Outcome::kUnknown);
    if (facts_.too_old > 0) {
      Break({.promise = Promise::kNoneTooOld,
             .number = facts_.too_old,
             .allowed = cutoff,
             .days = check_.contract.retention_days,
             .row = facts_.first_too_old});
    }
  }

  void OnLimit() {
    if (check_.contract.max_rows == 0 || facts_.missing) {
      return;
    }
    Set(Promise::kWithinLimit, Outcome::kKept);
    if (const std::int64_t rows = RowsTooMany(Counted(), check_.contract.max_rows); rows > 0) {
      Break({.promise = Promise::kWithinLimit, .number = rows, .allowed = RowsKept(check_.contract.max_rows)});
    }
  }

  void OnLoss() {
    if (record_ == nullptr) {
      Set(Promise::kNothingLost, Outcome::kUnknown);
      return;
    }
    if (!record_->rows_after) {
      const bool was_missing = run_->database.problem.empty();
      Set(Promise::kNothingLost, was_missing ? Outcome::kNone : Outcome::kUnknown);
      return;
    }
    Set(Promise::kNothingLost, Outcome::kKept);
    if (const std::int64_t balance = Balance(*record_).value_or(0); balance < 0) {
      Break({.promise = Promise::kNothingLost,
             .number = -balance,
             .allowed = *record_->rows_after - balance,
             .during_run = true});
    }
    if (const std::int64_t left = StillThere(); left < *record_->rows_after) {
      Break({.promise = Promise::kNothingLost,
             .number = *record_->rows_after - left,
             .allowed = *record_->rows_after,
             .all_gone = facts_.missing});
    }
  }

 private:
  /// Without a last row the run found no rowids to tell its rows by.
  [[nodiscard]] std::int64_t StillThere() const { return record_->last_rowid ? facts_.of_the_run : facts_.rows; }

  /// The rows that the limit is for: what collectors wrote while the run was at work came after its trimming, perhaps.
  [[nodiscard]] std::int64_t Counted() const {
    const std::int64_t added = record_ != nullptr ? std::max<std::int64_t>(Balance(*record_).value_or(0), 0) : 0;
    return facts_.rows - facts_.came_since - std::min(facts_.came_during, added);
  }

  void Set(Promise promise, Outcome outcome) { check_.outcomes.Set(promise, outcome); }

  void Break(Breach breach) {
    Set(breach.promise, Outcome::kBroken);
    breach.table = check_.contract.table;
    check_.breaches.push_back(std::move(breach));
  }

  TableVerdict& check_;
  const TableFacts& facts_;
  const LastRun* run_;
  const TableRecord* record_;
};

}  // namespace

const TableRecord* LastRun::Find(const std::string& table) const {
  const auto found = std::find_if(database.tables.begin(), database.tables.end(),
                                  [&table](const TableRecord& each) { return each.table == table; });
  return found == database.tables.end() ? nullptr : &*found;
}

TableVerdict JudgeTable(const ContractView& contract, const TableFacts& facts, const LastRun* run,
                        std::int64_t cutoff) {
  TableVerdict check{
      .contract = contract, .missing = facts.missing, .rows = facts.rows, .came_since = facts.came_since};
  Judgement judgement(check, facts, run);
  judgement.OnAge(cutoff);
  judgement.OnLimit();
  judgement.OnLoss();
  return check;
}

}  // namespace corvo::telemetry::host
