#include "host/show/verify/verify_json.h"

#include "common/text.h"
#include "host/show/json_text.h"
#include "host/show/time_text.h"
#include "host/show/verify/breach_text.h"

namespace corvo::telemetry::host {
namespace {

const char* NameOf(Promise promise) {
  switch (promise) {
    case Promise::kCleaned:
      return "cleaned";
    case Promise::kSound:
      return "sound";
    case Promise::kNoFreePages:
      return "no_free_pages";
    case Promise::kNoneTooOld:
      return "none_too_old";
    case Promise::kWithinLimit:
      return "within_limit";
    case Promise::kNothingLost:
      break;
  }
  return "nothing_lost";
}

const char* NameOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::kNone:
      return "none";
    case Outcome::kKept:
      return "kept";
    case Outcome::kUnknown:
      return "unknown";
    case Outcome::kBroken:
      break;
  }
  return "broken";
}

/// An empty text is none.
Json TextOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

/// What would be no breach: rows that are not before a moment, or no more rows than a number.
Json LimitJson(const Breach& breach) {
  if (breach.promise == Promise::kNoneTooOld) {
    return TimeText(breach.allowed);
  }
  return breach.promise == Promise::kWithinLimit ? Json(breach.allowed) : Json(nullptr);
}

Json BreachJson(const Breach& breach) {
  const bool counted = breach.promise != Promise::kCleaned && breach.promise != Promise::kSound;
  return {{"promise", NameOf(breach.promise)},
          {"table", TextOrNull(breach.table)},
          {"number", counted ? Json(breach.number) : Json(nullptr)},
          {"limit", LimitJson(breach)},
          {"rowid", breach.row ? Json(breach.row->rowid) : Json(nullptr)},
          {"time", breach.row ? Json(breach.row->time) : Json(nullptr)},
          {"text", BreachText(breach)}};
}

Json TableJson(const TableVerdict& table) {
  Json promises;
  for (const Promise promise : {Promise::kNoneTooOld, Promise::kWithinLimit, Promise::kNothingLost}) {
    promises[NameOf(promise)] = NameOf(table.outcomes.Of(promise));
  }
  return {{"table", table.contract.table},
          {"missing", table.missing},
          {"rows", table.rows},
          {"rows_since", table.came_since},
          {"promises", promises}};
}

Json DatabaseJson(const DatabaseCheck& database) {
  Json promises;
  for (const Promise promise : kPromises) {
    promises[NameOf(promise)] = NameOf(database.outcomes.Of(promise));
  }
  Json breaches = Json::array();
  for (const Breach& breach : database.breaches) {
    breaches.push_back(BreachJson(breach));
  }
  Json tables = Json::array();
  for (const TableVerdict& table : database.tables) {
    tables.push_back(TableJson(table));
  }
  return {{"name", database.name},
          {"path", common::Utf8(database.path)},
          {"run", database.run ? Json(TimeText(database.run->start)) : Json(nullptr)},
          {"problem", TextOrNull(database.problem ? database.problem->reason : "")},
          {"promises", promises},
          {"breaches", breaches},
          {"tables", tables}};
}

}  // namespace

std::string VerifyDocument(const Verification& verification) {
  Json databases = Json::array();
  for (const DatabaseCheck& database : verification.databases) {
    databases.push_back(DatabaseJson(database));
  }
  const Json document = {
      {"schema_version", 1},
      {"kind", "verify"},
      {"data_directory", {{"path", common::Utf8(verification.directory)}, {"source", verification.directory_source}}},
      {"broken", verification.AnythingBroken()},
      {"complete", verification.IsComplete()},
      {"history_problem", TextOrNull(verification.history_problem)},
      {"databases", databases}};
  return JsonText(document) + "\n";
}

}  // namespace corvo::telemetry::host
