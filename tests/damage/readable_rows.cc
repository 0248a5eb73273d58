#include "damage/readable_rows.h"

#include <sqlite3.h>

#include <algorithm>
#include <memory>
#include <set>

namespace corvo::test {
namespace {

using Handle = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Query = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

// A tree that loops has no last row.
constexpr std::size_t kMostRows = 5000;

Query Prepare(sqlite3* handle, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr);
  return {statement, &sqlite3_finalize};
}

std::string Value(sqlite3_stmt* statement, int column) {
  const int type = sqlite3_column_type(statement, column);
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return std::to_string(type) + ":" + (bytes != nullptr ? std::string(bytes, size) : "");
}

std::string Quoted(const std::string& name) {
  std::string quoted = "\"";
  for (const char letter : name) {
    quoted += letter == '"' ? "\"\"" : std::string(1, letter);
  }
  return quoted + '"';
}

/// Reads one table.
class TableReader {
 public:
  TableReader(sqlite3* handle, const std::string& table, const std::string& expired)
      : handle_(handle), source_(" FROM main." + Quoted(table) + " NOT INDEXED ") {
    if (const Query all = Prepare(handle_, "SELECT *" + source_)) {
      for (int column = 0; column < sqlite3_column_count(all.get()); ++column) {
        columns_.push_back(Quoted(sqlite3_column_name(all.get(), column)));
      }
    }
    key_ = Prepare(handle_, "SELECT rowid" + source_) ? "rowid" : "key";
    expired_ = expired.empty() ? "0" : expired;
  }

  [[nodiscard]] std::vector<ReadableRow> Read(std::int64_t largest_key) {
    if (!Scan("ASC")) {
      Scan("DESC");
      LookUp(largest_key);
    }
    return std::move(rows_);
  }

 private:
  /// Whether the table was read from end to end.
  bool Scan(const std::string& order) {
    const Query query = Prepare(handle_, Select("*") + "ORDER BY " + key_ + " " + order);
    return query != nullptr && Take(query.get());
  }

  bool Take(sqlite3_stmt* query) {
    int code = sqlite3_step(query);
    for (; code == SQLITE_ROW && rows_.size() < kMostRows; code = sqlite3_step(query)) {
      ReadableRow row{sqlite3_column_int64(query, 0), sqlite3_column_int(query, 1) != 0, {}};
      for (int column = 2; column < sqlite3_column_count(query); ++column) {
        row.values.emplace_back(Value(query, column));
      }
      seen_.insert(row.key);
      rows_.push_back(std::move(row));
    }
    return code == SQLITE_DONE;
  }

  void LookUp(std::int64_t largest_key) {
    const std::string where = "WHERE " + key_ + " = ?";
    const Query whole = Prepare(handle_, Select("*") + where);
    const Query exists = Prepare(handle_, "SELECT 1" + source_ + where);
    std::vector<Query> parts;
    for (const std::string& column : columns_) {
      parts.push_back(Prepare(handle_, Select(column) + where));
    }
    for (std::int64_t key = 1; whole != nullptr && key <= largest_key; ++key) {
      if (seen_.count(key) == 0 && !TakeAt(whole.get(), key) && StepsAt(exists.get(), key)) {
        TakeParts(parts, key);
      }
    }
  }

  /// Whether the row of this key, if there is one, was read to its end.
  bool TakeAt(sqlite3_stmt* query, std::int64_t key) {
    sqlite3_bind_int64(query, 1, key);
    const bool whole = Take(query);
    sqlite3_reset(query);
    return whole;
  }

  static bool StepsAt(sqlite3_stmt* query, std::int64_t key) {
    sqlite3_reset(query);
    sqlite3_bind_int64(query, 1, key);
    return sqlite3_step(query) == SQLITE_ROW;
  }

  void TakeParts(const std::vector<Query>& parts, std::int64_t key) {
    ReadableRow row{key, false, {}};
    for (const Query& part : parts) {
      auto& value = row.values.emplace_back();
      if (StepsAt(part.get(), key)) {
        row.expired = sqlite3_column_int(part.get(), 1) != 0;
        value = Value(part.get(), 2);
      }
    }
    rows_.push_back(std::move(row));
  }

  [[nodiscard]] std::string Select(const std::string& what) const {
    return "SELECT " + key_ + ", " + expired_ + ", " + what + source_;
  }

  sqlite3* handle_;
  std::string source_;
  std::string key_;
  std::string expired_;
  std::vector<std::string> columns_;
  std::vector<ReadableRow> rows_;
  std::set<std::int64_t> seen_;
};

// As SQLite knows them, by their statements: the schema's own columns for type and name may be damaged.
std::vector<std::string> TableNames(sqlite3* handle) {
  std::vector<std::string> names;
  const Query query = Prepare(handle,
                              "SELECT name FROM pragma_table_list WHERE schema = 'main' AND type = 'table' AND name <> "
                              "'sqlite_schema'");
  while (query != nullptr && sqlite3_step(query.get()) == SQLITE_ROW) {
    const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(query.get(), 0));
    names.emplace_back(name != nullptr ? name : "");
  }
  return names;
}

}  // namespace

bool ReadableRow::FoundIn(const ReadableRow& other) const {
  return values.size() == other.values.size() &&
         std::equal(values.begin(), values.end(), other.values.begin(),
                    [](const auto& mine, const auto& theirs) { return !mine || mine == theirs; });
}

bool ReadableRow::Complete() const {
  return std::all_of(values.begin(), values.end(), [](const auto& value) { return value.has_value(); });
}

ReadableTables ReadTables(const std::filesystem::path& file, const std::map<std::string, std::string>& expired,
                          std::int64_t largest_key) {
  sqlite3* raw = nullptr;
  sqlite3_open_v2(file.string().c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
  const Handle handle(raw, &sqlite3_close);
  ReadableTables tables;
  for (const std::string& name : TableNames(raw)) {
    const auto condition = expired.find(name);
    tables[name] = TableReader(raw, name, condition != expired.end() ? condition->second : "").Read(largest_key);
  }
  return tables;
}

}  // namespace corvo::test
