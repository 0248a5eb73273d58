#include "host/pass/statement_kind.h"

namespace corvo::telemetry::host {
namespace {

using Step = StatementKind::Step;

/// The text between a beginning and the next end; empty when the statement does not have both.
std::string Between(std::string_view sql, std::string_view begin, std::string_view end) {
  if (!sql.starts_with(begin)) {
    return {};
  }
  sql.remove_prefix(begin.size());
  const std::size_t at = sql.find(end);
  return at == std::string_view::npos ? std::string() : std::string(sql.substr(0, at));
}

}  // namespace

StatementKind KindOf(std::string_view sql) {
  if (sql.starts_with("VACUUM")) {
    return {Step::kCompact, ""};
  }
  constexpr std::string_view kCount = "SELECT COUNT(*) AS rows FROM ";
  if (sql.starts_with(kCount)) {
    return {Step::kCount, std::string(sql.substr(kCount.size()))};
  }
  if (std::string table = Between(sql, "DELETE FROM ", " WHERE datetime(time) <"); !table.empty()) {
    return {Step::kExpire, std::move(table)};
  }
  if (std::string table = Between(sql, "DELETE FROM ", " WHERE rowid IN "); !table.empty()) {
    return {Step::kTrim, std::move(table)};
  }
  if (std::string table = Between(sql, "SELECT pgsize, pageno FROM dbstat WHERE name='", "'"); !table.empty()) {
    return {Step::kMeasure, std::move(table)};
  }
  return {};
}

const char* NameOf(StatementKind::Step step) {
  switch (step) {
    case Step::kExpire:
      return "deleting expired rows";
    case Step::kTrim:
      return "trimming";
    case Step::kCount:
      return "counting";
    case Step::kMeasure:
      return "measuring";
    case Step::kCompact:
      return "compacting";
    case Step::kOther:
      break;
  }
  return "working";
}

}  // namespace corvo::telemetry::host
