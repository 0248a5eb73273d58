#include "host/facts/lint/lint.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <ctime>
#include <sstream>

#include "host/facts/lint/sql_names.h"
#include "host/host_document.h"
#include "host/show/explain/lint_text.h"

namespace corvo::test {
namespace {

using namespace telemetry::host;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;

/// 2024-05-02T00:00:00 UTC, 19,845 days after the beginning of 1970.
constexpr std::int64_t kNow = 1'714'608'000;

/// Two tables of one database, with which nothing is wrong.
class LintOf : public testing::Test {
 protected:
  std::vector<Finding> Findings() const { return Lint(catalogue_, kNow); }

  static ContractView Contract(const std::string& name) {
    return {.type = "made." + name,
            .name = name,
            .table = name,
            .database = "Log",
            .max_rows = 1000,
            .retention_days = 30,
            .max_size_mb = 10,
            .descriptor = nullptr};
  }

  CatalogueView catalogue_ = {{Contract("Alpha"), Contract("Omega")}, {{"made.Log", "Log", "Log", 10}}};
  ContractView& first_ = catalogue_.contracts[0];
  ContractView& last_ = catalogue_.contracts[1];
};

auto Found(const char* rule, const char* table, const char* text) {
  return AllOf(Field("rule", &Finding::rule, rule), Field("table", &Finding::table, table),
               Field("text", &Finding::text, HasSubstr(text)));
}

TEST_F(LintOf, LimitsThatAgreeFindsNothing) { EXPECT_THAT(Findings(), IsEmpty()); }

TEST(Lint, OfTheProjectsOwnCatalogueFindsNothing) { EXPECT_THAT(Lint(ReadCatalogue(), std::time(nullptr)), IsEmpty()); }

TEST_F(LintOf, RetentionThatWrapsTellsHowLongRowsAreKept) {
  first_.retention_days = last_.retention_days = 49'711;
  first_.table = first_.table_option = "Alpha";
  EXPECT_THAT(Findings(), ElementsAre(Found("retention_wraps", "Alpha", "63104 seconds (0.7 days)"),
                                      Found("retention_wraps", "Omega", "63104 seconds")));
}

TEST_F(LintOf, RetentionBefore1970NeverExpiresARow) {
  first_.retention_days = last_.retention_days = 19'846;
  EXPECT_THAT(Findings(), ElementsAre(Found("retention_before_1970", "Alpha", "no row ever expires"),
                                      Found("retention_before_1970", "Omega", "19846")));
  first_.retention_days = last_.retention_days = 19'845;
  EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(LintOf, LongestRetentionThatDoesNotWrapReachesBefore1970) {
  first_.retention_days = last_.retention_days = 49'710;
  EXPECT_THAT(Findings(),
              ElementsAre(Found("retention_before_1970", "Alpha", ""), Found("retention_before_1970", "Omega", "")));
}

TEST_F(LintOf, TinyRowLimitTellsWhatItLeaves) {
  first_.max_rows = 1;
  EXPECT_THAT(Findings(), ElementsAre(Found("row_limit_tiny", "Alpha", "empties the table")));
  first_.max_rows = 9;
  EXPECT_THAT(Findings(), ElementsAre(Found("row_limit_tiny", "Alpha", "no more than 8 rows")));
  first_.max_rows = 10;
  EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(LintOf, TableWithoutAnyLimitGrowsForEver) {
  for (ContractView& contract : catalogue_.contracts) {
    contract.max_rows = contract.retention_days = contract.max_size_mb = 0;
  }
  catalogue_.databases[0].max_size_mb = 0;
  EXPECT_THAT(Findings(), ElementsAre(Found("no_limit", "Alpha", "grows for ever"), Found("no_limit", "Omega", "")));
}

TEST_F(LintOf, LimitThatNeverBitesIsNone) {
  first_.max_rows = 2'386'092'942;
  first_.retention_days = 19'846;
  last_.max_rows = 0;
  last_.retention_days = 0;
  catalogue_.databases[0].max_size_mb = 0;
  EXPECT_THAT(Findings(), ElementsAre(Found("retention_before_1970", "Alpha", ""), Found("no_limit", "Alpha", ""),
                                      Found("no_limit", "Omega", ""), Found("size_limits_disagree", "", "0")));
}

TEST_F(LintOf, TwoContractsOnOneTableAreNamed) {
  last_.table = "ALPHA";
  last_.table_option = "";
  EXPECT_THAT(Findings(), ElementsAre(Found("same_table", "ALPHA", "made.Alpha and made.Omega are the same table")));
}

TEST_F(LintOf, TableOfTheSameNameInAnotherDatabaseIsAnotherOne) {
  last_.table = "Alpha";
  last_.database = "Other";
  catalogue_.databases.push_back({"made.Other", "Other", "Other", 10});
  EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(LintOf, NamesThatNeedQuotesAreTold) {
  first_.table = first_.table_option = last_.table_option = "My table";
  EXPECT_THAT(Findings(), testing::Contains(Found("name_needs_quotes", "My table", "unquoted")));
}

TEST_F(LintOf, DatabasesThatDifferInCaseAreOneToAPass) {
  last_.database = "LOG";
  catalogue_.databases.push_back({"made.LOG", "LOG", "LOG", 10});
  EXPECT_THAT(Findings(), ElementsAre(Found("databases_differ_in_case", "", "LOG and Log differ only in letter case")));
}

TEST_F(LintOf, SizeLimitsThatDisagreeAreNamedWithTheirContracts) {
  last_.max_size_mb = 20;
  EXPECT_THAT(Findings(),
              ElementsAre(Found("size_limits_disagree", "", "max_size_mb is 10 (made.Log) and 20 (made.Omega)")));
}

TEST_F(LintOf, DatabaseThatNoMessageNamesHasNoLimit) {
  first_.database = last_.database = "Other";
  EXPECT_THAT(Findings(), ElementsAre(Found("database_unnamed", "", "no message stands for Other")));
  first_.database = last_.database = "";
  EXPECT_THAT(Findings(), ElementsAre(Found("database_unnamed", "", "made.Alpha names no database")));
}

TEST_F(LintOf, ExcludedNameIsNeverCleanedWhateverItsCase) {
  first_.database = last_.database = catalogue_.databases[0].database = "STATE";
  EXPECT_THAT(Findings(), ElementsAre(Found("name_excluded", "", "never cleaned")));
}

TEST_F(LintOf, ExchangeThatMakesLimitsStricterIsHarm) {
  last_.max_rows = 100;
  last_.retention_days = 7;
  EXPECT_THAT(Findings(),
              ElementsAre(Found("harmful_exchange", "",
                                "made.Omega: Alpha is cleaned with max_rows 100 instead of 1000, retention_days 7 "
                                "instead of 30")));
}

TEST_F(LintOf, ExchangeThatLimitsWhatHadNoLimitIsHarm) {
  first_.max_rows = 0;
  EXPECT_THAT(Findings(), ElementsAre(Found("harmful_exchange", "", "max_rows 1000 instead of none")));
}

TEST_F(LintOf, ExchangeThatNamesTheLastTableCleansItTwice) {
  last_.table_option = "Omega";
  EXPECT_THAT(Findings(),
              ElementsAre(Found("harmful_exchange", "", "Alpha is not cleaned, and Omega is cleaned twice")));
}

TEST_F(LintOf, ExchangeThatTakesTheFirstTablesNameAwayIsHarm) {
  first_.table = first_.table_option = "Renamed";
  EXPECT_THAT(Findings(), ElementsAre(Found("harmful_exchange", "", "Renamed is not cleaned, and Alpha is cleaned")));
}

TEST_F(LintOf, ExchangeDoesNoHarmWhereLimitsGetLooserOrNoneIsMade) {
  last_.max_rows = 2000;
  last_.retention_days = 0;
  EXPECT_THAT(Findings(), IsEmpty());
  last_.max_rows = 10;
  first_.max_size_mb = last_.max_size_mb = catalogue_.databases[0].max_size_mb = 0;
  EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(LintOf, ManyThingsIsADocumentThatFitsItsSchema) {
  last_.table_option = "Omega";
  last_.max_rows = 3;
  const nlohmann::json document = ParseHostDocument(LintDocument(catalogue_, Findings()));
  EXPECT_EQ(document["findings"][0]["rule"], "row_limit_tiny");
  EXPECT_EQ(document["findings"][0]["table"], "Omega");
  EXPECT_EQ(document["findings"][1]["table"], nullptr);
}

TEST(NeedsQuotes, EveryKeywordOfSqlite) {
  for (int index = 0; index < sqlite3_keyword_count(); ++index) {
    const char* word = nullptr;
    int length = 0;
    ASSERT_EQ(sqlite3_keyword_name(index, &word, &length), SQLITE_OK);
    const std::string keyword(word, static_cast<std::size_t>(length));
    EXPECT_TRUE(NeedsQuotes(keyword)) << keyword;
  }
}

TEST(NeedsQuotes, WhateverIsNoPlainName) {
  for (const char* name : {"", "1st", "two words", "semi;colon", "quo\"te", "dash-ed", "Gerät", "select"}) {
    EXPECT_TRUE(NeedsQuotes(name)) << name;
  }
  for (const char* name : {"Device", "_", "B2", "OsEvents", "selected", "CURRENT_", "IS_"}) {
    EXPECT_FALSE(NeedsQuotes(name)) << name;
  }
}

TEST_F(LintOf, ManyThingsIsShownInLinesThatFit) {
  last_.table_option = "Omega";
  last_.max_rows = 3;
  const std::string text = LintText(catalogue_, Findings(), 60, false);
  EXPECT_THAT(text, HasSubstr("Log / Omega  row_limit_tiny\n  max_rows 3 leaves no more than 2 rows\n\nLog  harmful"));
  EXPECT_THAT(text, HasSubstr("2 findings in the contracts (2 tables in 1 database)\n"));
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 60U) << line;
  }
}

}  // namespace
}  // namespace corvo::test
