#include "host/facts/record/database_check.h"

#include <fmt/core.h>

#include "contracts/rules.h"
#include "host/facts/file_problem.h"
#include "host/facts/query.h"
#include "storage/result_code.h"
#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {
namespace {

using shared::TelemetryStorage;

/// A moment as SQLite's `datetime` writes it. None that it knows: nothing is before it.
std::string SqlTime(std::int64_t seconds) {
  const auto time = contracts::BrokenDownUtc(seconds);
  return time ? fmt::format("'{:04}-{:02}-{:02} {:02}:{:02}:{:02}'", time->tm_year + 1900, time->tm_mon + 1,
                            time->tm_mday, time->tm_hour, time->tm_min, time->tm_sec)
              : "NULL";
}

/// One database, read in one transaction.
class Reading {
 public:
  Reading(DatabaseCheck& check, std::int64_t now)
      : check_(check), now_(now), storage_(check.path.string().c_str(), "") {}

  void ReadAll(const std::vector<ContractView>& contracts) {
    if (!Begin() || !LookForFreePages()) {
      return;
    }
    for (const ContractView& contract : contracts) {
      const std::int64_t cutoff = contracts::Cutoff(check_.run ? check_.run->start : now_, contract.retention_days);
      TableFacts facts;
      if (!Read(contract, cutoff, facts)) {
        return;
      }
      check_.tables.push_back(JudgeTable(contract, facts, check_.run ? &*check_.run : nullptr, cutoff));
    }
  }

 private:
  /// What the connection can only read it does not lock for writing, but is looked through for damage all the same.
  bool Begin() {
    common::Error error = storage_.GetLastError();
    if (!error.Failed()) {
      error = RunStatement(storage_, "BEGIN IMMEDIATE");
    }
    if (error.Failed()) {
      return Fail(error);
    }
    check_.outcomes.Set(Promise::kSound, Outcome::kKept);
    return true;
  }

  bool LookForFreePages() {
    if (!Ask("SELECT freelist_count, page_size FROM pragma_freelist_count, pragma_page_size")) {
      return false;
    }
    if (check_.run && check_.run->compaction_optional && check_.run->database.compacted_bytes == 0) {
      check_.outcomes.Set(Promise::kNoFreePages, Outcome::kNone);
      return true;
    }
    const std::int64_t pages = Number(0);
    check_.outcomes.Set(Promise::kNoFreePages, pages > 0 ? Outcome::kBroken : Outcome::kKept);
    if (pages > 0) {
      check_.breaches.push_back({.promise = Promise::kNoFreePages, .number = pages, .allowed = Number(1)});
    }
    return true;
  }

  bool Read(const ContractView& contract, std::int64_t cutoff, TableFacts& facts) {
    if (!Ask(fmt::format("SELECT EXISTS (SELECT 1 FROM pragma_table_list('{0}') WHERE schema = 'main'), "
                         "EXISTS (SELECT 1 FROM pragma_table_xinfo('{0}') WHERE lower(name) = 'time')",
                         contract.table))) {
      return false;
    }
    facts.missing = Number(0) == 0;
    facts.has_time = Number(1) != 0;
    return facts.missing || Count(contract, cutoff, facts);
  }

  bool Count(const ContractView& contract, std::int64_t cutoff, TableFacts& facts) {
    const bool by_age = contract.retention_days != 0 && facts.has_time;
    const std::string too_old = by_age ? "datetime(time) < " + SqlTime(cutoff) : "0";
    const TableRecord* record = check_.run ? check_.run->Find(contract.table) : nullptr;
    const bool has_last = record != nullptr && record->last_rowid;
    const std::string up_to = has_last ? fmt::format("rowid <= {}", *record->last_rowid) : "0";
    const std::string fresh = !check_.run       ? "0"
                              : !facts.has_time ? "1"
                                                : "datetime(time) >= " + SqlTime(check_.run->start);
    if (!Ask(fmt::format("SELECT COUNT(*), total({1}), total({2}), total({3} AND NOT ({2})), total({3} AND {2}) "
                         "FROM \"{0}\"",
                         contract.table, too_old, up_to, fresh))) {
      return false;
    }
    facts.rows = Number(0);
    facts.too_old = Number(1);
    facts.of_the_run = Number(2);
    facts.came_since = Number(3);
    facts.came_during = Number(4);
    return facts.too_old == 0 || FindFirst(contract, too_old, facts);
  }

  bool FindFirst(const ContractView& contract, const std::string& condition, TableFacts& facts) {
    if (!Ask(fmt::format("SELECT rowid, substr(time, 1, 40) FROM \"{}\" WHERE {} ORDER BY rowid LIMIT 1",
                         contract.table, condition))) {
      return false;
    }
    facts.first_too_old = RowSample{Number(0), rows_[0][1].GetColumnValue()};
    return true;
  }

  /// One row.
  bool Ask(const std::string& sql) {
    const common::Error error = RunStatement(storage_, sql, &rows_);
    return error.Failed() || rows_.count != 1 ? Fail(error) : true;
  }

  [[nodiscard]] std::int64_t Number(int column) const { return NumberIn(rows_[0][column]); }

  /// No more is read; what has been found until then stands.
  bool Fail(const common::Error& error) {
    if (!shared::IsDamaged(error)) {
      check_.problem = ProblemOf(error, check_.path, Access::kRead);
      return false;
    }
    check_.damage = error;
    check_.outcomes.Set(Promise::kSound, Outcome::kBroken);
    check_.breaches.push_back({.promise = Promise::kSound, .reason = error.what});
    return false;
  }

  DatabaseCheck& check_;
  std::int64_t now_;
  TelemetryStorage storage_;
  shared::Rows rows_;
};

void AddTables(DatabaseCheck& check) {
  for (const TableVerdict& table : check.tables) {
    check.outcomes.Add(table.outcomes);
    check.breaches.insert(check.breaches.end(), table.breaches.begin(), table.breaches.end());
  }
}

}  // namespace

void CheckContent(DatabaseCheck& check, const std::vector<ContractView>& contracts, std::int64_t now) {
  Reading(check, now).ReadAll(contracts);
  if (check.tables.size() == contracts.size()) {
    for (const Promise promise : {Promise::kNoneTooOld, Promise::kWithinLimit, Promise::kNothingLost}) {
      check.outcomes.Set(promise, Outcome::kNone);
    }
  }
  AddTables(check);
}

}  // namespace corvo::telemetry::host
