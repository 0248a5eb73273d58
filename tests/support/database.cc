#include "support/database.h"

#include <sqlite3.h>

#include <memory>
#include <stdexcept>

namespace corvo::test {
namespace {

void Check(sqlite3* handle, int code, const std::string& sql) {
  if (code != SQLITE_OK) {
    throw std::runtime_error(sql + ": " + sqlite3_errmsg(handle));
  }
}

}  // namespace

Database::Database(const std::filesystem::path& file) {
  const auto name = file.u8string();
  Check(handle_, sqlite3_open(reinterpret_cast<const char*>(name.c_str()), &handle_), file.string());
  sqlite3_busy_timeout(handle_, 30'000);
}

Database::~Database() { sqlite3_close(handle_); }

void Database::Run(const std::string& sql) {
  Check(handle_, sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr), sql);
}

std::vector<Row> Database::Query(const std::string& sql) {
  sqlite3_stmt* raw = nullptr;
  Check(handle_, sqlite3_prepare_v2(handle_, sql.c_str(), -1, &raw, nullptr), sql);
  const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(raw, &sqlite3_finalize);
  std::vector<Row> rows;
  int code = sqlite3_step(raw);
  for (; code == SQLITE_ROW; code = sqlite3_step(raw)) {
    Row& row = rows.emplace_back();
    for (int column = 0; column < sqlite3_column_count(raw); ++column) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(raw, column));
      row.emplace_back(text != nullptr ? text : "NULL");
    }
  }
  Check(handle_, code == SQLITE_DONE ? SQLITE_OK : code, sql);
  return rows;
}

std::int64_t Database::Number(const std::string& sql) { return std::stoll(Query(sql).at(0).at(0)); }

}  // namespace corvo::test
