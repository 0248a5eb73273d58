#include <fmt/core.h>

#include "host/show/report/html_template.h"
#include "host/show/report/sections.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

using Subject = ReportFacts::Subject;

struct Words {
  const char* title;
  std::string lead;
  const char* after;  ///< the column's name
};

Words WordsOf(const ReportFacts& facts) {
  switch (facts.subject) {
    case Subject::kPlan:
      return {"What a run would do now",
              "The module has run on copies of the databases; the databases themselves are as they were.", "Rows left"};
    case Subject::kRun:
      return {"What the run did",
              fmt::format("The last run began {} and its passes took {}.", Moment(facts.pass.start),
                          Duration(facts.pass.seconds)),
              "Rows after"};
    case Subject::kStatus:
      break;
  }
  return {"What the next pass would do",
          "Foreseen from the rows of now, by the rules of the contracts. Nothing has been deleted.", "Rows left"};
}

Json Segment(const char* reason, std::int64_t rows, std::int64_t whole) {
  return {{"reason", reason}, {"width", Percent(static_cast<double>(rows), static_cast<double>(whole))}};
}

/// What was there, in parts: those that stay, and those that each rule takes.
Json Segments(std::int64_t before, const Deleted& deleted) {
  Json segments = Json::array({Segment("kept", before - deleted.Sum(), before)});
  for (const Reason& reason : Reasons()) {
    if (deleted.*reason.rows > 0) {
      segments.push_back(Segment(reason.name, deleted.*reason.rows, before));
    }
  }
  return segments;
}

Json TableJson(const TableRecord& table) {
  const std::int64_t before = table.rows_before.value_or(0);
  Json json = {{"table", table.table},
               {"before", Figure(before)},
               {"after", table.rows_after ? Figure(*table.rows_after) : Json()},
               {"segments", before > 0 ? Segments(before, table.deleted) : Json()}};
  PutDeleted(json, table.deleted);
  return json;
}

/// The sums of the tables that could be counted.
struct Sums {
  std::int64_t before = 0;
  std::int64_t after = 0;
  Deleted deleted;

  void Add(const TableRecord& table) {
    before += table.rows_before.value_or(0);
    after += table.rows_after.value_or(0);
    deleted.Add(table.deleted);
  }

  void Add(const Sums& other) {
    before += other.before;
    after += other.after;
    deleted.Add(other.deleted);
  }

  void Put(Json& json) const {
    json["before"] = Figure(before);
    json["after"] = Figure(after);
    PutDeleted(json, deleted);
  }
};

std::string SizeText(const DatabaseRecord& database, bool knows_after) {
  return knows_after ? fmt::format("{} \u2192 {}", HumanBytes(database.bytes_before), HumanBytes(database.bytes_after))
                     : HumanBytes(database.bytes_before);
}

Json DatabaseJson(const DatabaseRecord& database, bool knows_after, Sums& total) {
  Sums sums;
  Json tables = Json::array();
  for (const TableRecord& table : database.tables) {
    if (table.rows_before) {
      tables.push_back(TableJson(table));
      sums.Add(table);
    }
  }
  total.Add(sums);
  Json json = {{"name", database.name},
               {"problem", database.problem},
               {"not_compacted", database.not_compacted},
               {"size", SizeText(database, knows_after)},
               {"bytes_before", database.bytes_before},
               {"bytes_after", knows_after ? Json(database.bytes_after) : Json()},
               {"tables", tables}};
  sums.Put(json);
  return json;
}

}  // namespace

std::string ChangeSection(const ReportFacts& facts) {
  const Words words = WordsOf(facts);
  Sums total;
  Json databases = Json::array();
  for (const DatabaseRecord& database : facts.pass.databases) {
    databases.push_back(DatabaseJson(database, facts.subject != Subject::kStatus, total));
  }
  Json legend = Json::array();
  legend.push_back({{"reason", "kept"}, {"label", "Kept"}});
  for (const Json& reason : Legend()) {
    legend.push_back(reason);
  }
  Json view = {{"title", words.title},        {"lead", words.lead}, {"after_title", words.after},
               {"result", facts.pass.result}, {"legend", legend},   {"has_databases", !databases.empty()},
               {"databases", databases}};
  Json sum;
  total.Put(sum);
  view["total"] = sum;
  return FillTemplate(templates::kChange, view);
}

}  // namespace corvo::telemetry::host
