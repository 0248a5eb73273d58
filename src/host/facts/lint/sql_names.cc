#include "host/facts/lint/sql_names.h"

#include <algorithm>
#include <cctype>
#include <string>
#include <string_view>

namespace corvo::telemetry::host {
namespace {

// Each between blanks.
constexpr std::string_view kKeywords =
    " ABORT ACTION ADD AFTER ALL ALTER ALWAYS ANALYZE AND AS ASC ATTACH AUTOINCREMENT BEFORE BEGIN BETWEEN BY "
    "CASCADE CASE CAST CHECK COLLATE COLUMN COMMIT CONFLICT CONSTRAINT CREATE CROSS CURRENT CURRENT_DATE "
    "CURRENT_TIME CURRENT_TIMESTAMP DATABASE DEFAULT DEFERRABLE DEFERRED DELETE DESC DETACH DISTINCT DO DROP "
    "EACH ELSE END ESCAPE EXCEPT EXCLUDE EXCLUSIVE EXISTS EXPLAIN FAIL FILTER FIRST FOLLOWING FOR FOREIGN FROM "
    "FULL GENERATED GLOB GROUP GROUPS HAVING IF IGNORE IMMEDIATE IN INDEX INDEXED INITIALLY INNER INSERT "
    "INSTEAD INTERSECT INTO IS ISNULL JOIN KEY LAST LEFT LIKE LIMIT MATCH MATERIALIZED NATURAL NO NOT NOTHING "
    "NOTNULL NULL NULLS OF OFFSET ON OR ORDER OTHERS OUTER OVER PARTITION PLAN PRAGMA PRECEDING PRIMARY QUERY "
    "RAISE RANGE RECURSIVE REFERENCES REGEXP REINDEX RELEASE RENAME REPLACE RESTRICT RETURNING RIGHT ROLLBACK "
    "ROW ROWS SAVEPOINT SELECT SET TABLE TEMP TEMPORARY THEN TIES TO TRANSACTION TRIGGER UNBOUNDED UNION "
    "UNIQUE UPDATE USING VACUUM VALUES VIEW VIRTUAL WHEN WHERE WINDOW WITH WITHIN WITHOUT ";

char UpperCase(char letter) { return static_cast<char>(std::toupper(static_cast<unsigned char>(letter))); }

bool IsLetter(char character) {
  const char upper = UpperCase(character);
  return (upper >= 'A' && upper <= 'Z') || character == '_';
}

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

}  // namespace

bool NeedsQuotes(const std::string& name) {
  if (name.empty() || IsDigit(name.front()) ||
      !std::all_of(name.begin(), name.end(), [](char each) { return IsLetter(each) || IsDigit(each); })) {
    return true;
  }
  std::string word = name;
  std::transform(word.begin(), word.end(), word.begin(), &UpperCase);
  return kKeywords.find(" " + word + " ") != std::string_view::npos;
}

}  // namespace corvo::telemetry::host
