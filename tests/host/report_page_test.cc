#include "host/show/report/report_page.h"

#include <gmock/gmock.h>

#include <limits>

#include "host/show/report/html_template.h"

namespace corvo::telemetry::host {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr std::int64_t kNow = 1'700'000'000;
constexpr std::int64_t kDay = 86'400;

/// One database of one table that is over its row limit, and a run.
ReportFacts Facts() {
  TableState table{.contract = {.type = "",
                                .name = "Boot",
                                .table = "Boot",
                                .database = "HealthLog",
                                .max_rows = 1000,
                                .retention_days = 30,
                                .max_size_mb = 100,
                                .descriptor = nullptr},
                   .rows = 12'345,
                   .oldest = kNow - 40 * kDay,
                   .next_pass = {.expired = 345, .row_limit = 11'100}};
  ReportFacts facts;
  facts.state = {.directory = "data", .directory_source = "--data-dir", .now = kNow};
  facts.state.databases = {
      {.name = "HealthLog", .path = "HealthLog.db", .max_size_mb = 100, .file_bytes = 1'500'000, .tables = {table}}};
  facts.ages = {{RowAges{.scale = {.days = 10, .classes = 4}, .rows = {7, 0, 5, 2}, .older = 0}}};
  facts.pass = ForecastOf(facts.state);
  RunRecord run{.start = kNow - kDay, .seconds = 0.25};
  run.databases = {{.name = "HealthLog",
                    .bytes_before = 3'000'000,
                    .bytes_after = 1'000'000,
                    .tables = {{.table = "Boot", .deleted = {.expired = 77}, .seconds = 0.125}}}};
  facts.history = {run};
  return facts;
}

TEST(ReportPage, IsOneDocumentThatNeedsNothingElse) {
  const std::string page = ReportPage(Facts());
  EXPECT_TRUE(page.starts_with("<!DOCTYPE html>"));
  EXPECT_THAT(page, HasSubstr("default-src 'none'"));
  for (const char* outside : {"<script", "http://", "https://", "@import", "url(", "src="}) {
    EXPECT_THAT(page, Not(HasSubstr(outside)));
  }
  EXPECT_THAT(page, AllOf(HasSubstr("prefers-color-scheme: dark"), HasSubstr("@media print")));
}

TEST(ReportPage, ShowsFiguresForPeopleAndPrograms) {
  const std::string page = ReportPage(Facts());
  EXPECT_THAT(page, HasSubstr("<data class=\"rows\" value=\"12345\">12,345</data> <span class=\"of\">of 1,000"));
  EXPECT_THAT(page, HasSubstr("<data class=\"next_pass\" value=\"11445\">11,445</data>"));
  EXPECT_THAT(page, HasSubstr("<data class=\"after\" value=\"900\">900</data>"));
  EXPECT_THAT(page, HasSubstr(">40 days</time> <span class=\"of\">of 30 days"));
  EXPECT_THAT(page, HasSubstr("over its row limit"));
}

TEST(ReportPage, DrawsAgesWithTheRetentionAsALine) {
  const std::string page = ReportPage(Facts());
  EXPECT_THAT(page,
              HasSubstr("<rect class=\"kept\" x=\"30.5\" y=\"0.00\" width=\"9.0\" height=\"100.00\" data-rows=\"7\">"));
  EXPECT_THAT(page, HasSubstr("<rect class=\"expired\" x=\"0.5\""));
  EXPECT_THAT(page, HasSubstr("<span class=\"retention\" style=\"left:25.00%\">"));
}

TEST(ReportPage, ShowsTheTimesAndTheRunsOfTheHistory) {
  const std::string page = ReportPage(Facts());
  EXPECT_THAT(page, HasSubstr("The statements of the last run, of 2023-11-13 22:13 UTC."));
  EXPECT_THAT(page, HasSubstr("<data value=\"0.125\">0.12 s</data>"));
  EXPECT_THAT(page, HasSubstr("<data class=\"freed\" value=\"2000000\">2.0 MB</data>"));
}

TEST(ReportPage, BeginsWithWhatItIsAbout) {
  ReportFacts facts = Facts();
  const std::string status = ReportPage(facts);
  EXPECT_LT(status.find("id=\"limits\""), status.find("id=\"change\""));
  facts.subject = ReportFacts::Subject::kPlan;
  const std::string plan = ReportPage(facts);
  EXPECT_LT(plan.find("id=\"change\""), plan.find("id=\"limits\""));
  EXPECT_THAT(plan, HasSubstr("What a run would do now"));
}

TEST(ReportPage, SaysWhatIsNotThere) {
  ReportFacts facts;
  EXPECT_THAT(ReportPage(facts),
              AllOf(HasSubstr("There are no databases here."), HasSubstr("No run is recorded yet.")));
  facts.history_problem = "it is a pipe";
  EXPECT_THAT(ReportPage(facts), HasSubstr("The history cannot be read: it is a pipe"));
}

TEST(ReportPage, EscapesWhatComesFromFiles) {
  const std::string hostile = "\"><script>alert('x')</script>{{{sections}}}\x1b[2J\xff";
  ReportFacts facts = Facts();
  facts.state.directory = hostile.substr(0, hostile.size() - 1);  // which paths of Windows cannot hold
  DatabaseState& database = facts.state.databases.front();
  database.tables.front().unreadable = {.rows = 1, .rowid = 7, .sample = hostile};
  database.tables.push_back({.contract = database.tables.front().contract, .problem = hostile});
  facts.ages.front().emplace_back();
  facts.history.front().result = hostile;
  facts.history.front().databases.front().name = hostile;
  facts.history.front().databases.front().tables.front().table = hostile;
  for (const auto subject : {ReportFacts::Subject::kStatus, ReportFacts::Subject::kRun}) {
    facts.subject = subject;
    facts.pass = facts.history.front();
    const std::string page = ReportPage(facts);
    for (const char* harm : {"<script", "\x1b", "\xff"}) {
      EXPECT_THAT(page, Not(HasSubstr(harm)));
    }
    EXPECT_THAT(page,
                HasSubstr("&quot;&gt;&lt;script&gt;alert(&apos;x&apos;)&lt;/script&gt;{{{sections}}}\\x1b[2J\\xff"));
  }
}

TEST(ReportPage, BearsFiguresOfAnyKind) {
  ReportFacts facts = Facts();
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  RunRecord& run = facts.history.front();
  run.start = kMost;
  run.seconds = 1e300;
  run.databases.front().tables.front().deleted = {.expired = -5, .row_limit = kMost / 2};
  facts.state.databases.front().tables.front().oldest = -210'866'760'000;  // the first Julian day
  const std::string page = ReportPage(facts);
  EXPECT_THAT(page, HasSubstr("at an unknown time"));
  EXPECT_THAT(page, AllOf(Not(HasSubstr("nan")), Not(HasSubstr("inf%"))));
}

TEST(FillTemplate, HidesOuterValuesBehindNullAndEmptyText) {
  const Json values = {{"note", "outer"}, {"list", Json::array({Json{{"note", nullptr}}, Json{{"note", ""}}})}};
  EXPECT_EQ(FillTemplate("{{#list}}[{{note}}{{^note}}none{{/note}}]{{/list}}", values), "[none][none]");
}

TEST(FillTemplate, RefusesWhatIsNoTemplate) {
  EXPECT_THROW(static_cast<void>(FillTemplate("{{#open}}", Json())), std::logic_error);
}

}  // namespace
}  // namespace corvo::telemetry::host
