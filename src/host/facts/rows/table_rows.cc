#include "host/facts/rows/table_rows.h"

#include <fmt/core.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "common/text.h"
#include "host/facts/file_problem.h"
#include "host/facts/query.h"
#include "storage/result_code.h"

namespace corvo::telemetry::host {
namespace {

std::string Quoted(const std::string& name) {
  std::string quoted = "\"";
  for (const char letter : name) {
    quoted += letter == '"' ? "\"\"" : std::string(1, letter);
  }
  return quoted + "\"";
}

bool IsRowid(const std::string& column) {
  std::string lower = column;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter; });
  return lower == "rowid";
}

std::string FromHex(const std::string& digits) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
  }
  return bytes;
}

/// What `ValueOf` selects of a value: a letter for its type, and its text.
Cell CellOf(const std::string& type, const std::string& text) {
  using Type = Cell::Type;
  switch (type.empty() ? '\0' : type.front()) {
    case 'i':
      return {Type::kInteger, text};
    case 'r':
      return {Type::kReal, text};
    case 't':
      return {Type::kText, text};
    case 'z':
      return {Type::kText, FromHex(text)};
    case 'b':
      return {Type::kBlob, text};
    default:
      return {};
  }
}

}  // namespace

TableRows::TableRows(Request request)
    : request_(std::move(request)),
      storage_(request_.file.string().c_str(), ""),
      command_(new shared::SqlCommand("BEGIN")) {
  if (const common::Error error = storage_.Execute(command_, false); error.Failed()) {
    throw std::runtime_error(ProblemOf(error, request_.file, Access::kRead).reason);
  }
  RefuseWhatHasNoAge();
  ReadColumns();
  selection_ = Selection();
}

/// @param less what to ask for when the answer is too big; empty: nothing.
shared::Rows TableRows::Ask(const std::string& sql, const std::string& less) {
  command_->Execute(sql.c_str(), nullptr, 0);
  if (!less.empty() && shared::IsTooBig(command_->GetLastError())) {
    command_->Execute(less.c_str(), nullptr, 0);
  }
  if (const common::Error error = command_->GetLastError(); error.Failed()) {
    throw std::runtime_error(ProblemOf(error, request_.file, Access::kRead).reason);
  }
  return command_->GetResults();
}

void TableRows::RefuseWhatHasNoAge() {
  const shared::Rows found =
      Ask(fmt::format("SELECT type, wr FROM pragma_table_list('{}') WHERE schema = 'main'", request_.table));
  if (found.count == 0) {
    throw std::runtime_error("it has no table " + request_.table);
  }
  const std::string type = found[0][0].GetColumnValue();
  if (type != "table") {
    throw std::runtime_error(
        fmt::format("{} is a {} and no ordinary table", request_.table, type == "view" ? type : type + " table"));
  }
  if (std::string(found[0][1].GetColumnValue()) == "1") {
    throw std::runtime_error(request_.table + " has no rowids, which tell old rows from new ones");
  }
}

void TableRows::ReadColumns() {
  const std::string table = "'" + request_.table + "'";
  const shared::Rows found =
      Ask(fmt::format("SELECT name, pk = 0 OR EXISTS (SELECT 1 FROM pragma_index_list({0}) WHERE origin = 'pk') "
                      "FROM pragma_table_xinfo({0}) WHERE hidden <> 1",
                      table));
  for (const auto& column : found) {
    columns_.emplace_back(column[0].GetColumnValue());
    if (IsRowid(columns_.back()) && std::string(column[1].GetColumnValue()) == "1") {
      throw std::runtime_error(request_.table +
                               " has an ordinary column called rowid, which hides the age of its rows");
    }
  }
  if (std::none_of(columns_.begin(), columns_.end(), &IsRowid)) {
    columns_.emplace_back("rowid");
    std::rotate(columns_.begin(), columns_.end() - 1, columns_.end());
  }
}

std::string TableRows::Selection() const {
  std::string selection = "SELECT rowid";
  for (const std::string& column : columns_) {
    selection += ", " + ValueOf(Quoted(column));
  }
  return fmt::format("{} FROM main.{}", selection, Quoted(request_.table));
}

// Results are texts that end at a zero byte, so a text that holds one comes in hexadecimal digits as well. A real
// number as a text has fifteen digits only.
std::string TableRows::ValueOf(const std::string& column) const {
  const std::string cut = request_.longest_text == 0 ? "" : fmt::format(", 1, {}", request_.longest_text);
  const auto part = [&cut](const std::string& value) { return cut.empty() ? value : "substr(" + value + cut + ")"; };
  const std::string hex = "hex(" + column + ")";
  return fmt::format(
      "CASE typeof({0}) WHEN 'text' THEN CASE WHEN instr({0}, char(0)) THEN 'z' ELSE 't' END ELSE substr(typeof({0}), "
      "1, 1) END, CASE typeof({0}) WHEN 'blob' THEN hex({1}) WHEN 'real' THEN printf('%!.17g', {0}) WHEN 'text' THEN "
      "CASE WHEN instr({0}, char(0)) THEN {2} ELSE {1} END ELSE {0} END",
      column, part(column), part(hex));
}

std::string TableRows::NextStatement(std::size_t most) const {
  const std::string after =
      last_rowid_ ? fmt::format(" WHERE rowid {} {}", request_.oldest_first ? ">" : "<", *last_rowid_) : "";
  return fmt::format("{}{} ORDER BY rowid {} LIMIT {}", selection_, after, request_.oldest_first ? "ASC" : "DESC",
                     most);
}

std::vector<Cells> TableRows::Next(std::size_t most) {
  const shared::Rows found = Ask(NextStatement(most), NextStatement(1));
  std::vector<Cells> rows;
  for (const auto& values : found) {
    last_rowid_ = NumberIn(values[0]);
    Cells& row = rows.emplace_back();
    for (std::int32_t at = 1; at + 1 < values.count; at += 2) {
      row.push_back(CellOf(values[at].GetColumnValue(), values[at + 1].GetColumnValue()));
    }
  }
  return rows;
}

}  // namespace corvo::telemetry::host
