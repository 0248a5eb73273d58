#include "storage/connection/soundness.h"

#include <sqlite3.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "storage/connection/failure.h"
#include "storage/connection/statement.h"

namespace corvo::shared {
namespace {

using telemetry::common::Error;

// With what stands behind a zero byte, which SQLite does not see.
std::string_view TextOf(sqlite3_stmt* statement, int column) {
  const void* text = sqlite3_column_text(statement, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return text != nullptr ? std::string_view(static_cast<const char*>(text), size) : std::string_view();
}

bool Is(std::string_view text, const char* word) { return sqlite3_stricmp(std::string(text).c_str(), word) == 0; }

/// What is wrong with a row of the schema, as a text that does not repeat its names; null when nothing is.
const char* FaultOf(std::string_view type, std::string_view name, std::string_view table) {
  for (const std::string_view text : {type, name, table}) {
    if (text.find('\0') != std::string_view::npos) {
      return "the schema has a name with a zero byte";
    }
    if (text.find(kMissingTableText) != std::string_view::npos) {
      return "the schema has a name that reads like an error message";
    }
  }
  const bool answers = Is(type, "table") || Is(type, "view");
  return answers && Is(name, "dbstat") ? "the schema has an object named dbstat" : nullptr;
}

/// Rows that break a CHECK constraint are the user's business, but quick_check reports them like damage.
class ChecksIgnored {
 public:
  explicit ChecksIgnored(sqlite3* handle) : handle_(handle) { Run("PRAGMA ignore_check_constraints=ON"); }
  ChecksIgnored(const ChecksIgnored&) = delete;
  ChecksIgnored& operator=(const ChecksIgnored&) = delete;
  ~ChecksIgnored() { Run("PRAGMA ignore_check_constraints=OFF"); }

 private:
  void Run(const char* sql) noexcept { sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr); }

  sqlite3* handle_;
};

/// What SQLite says of the pages of a database, a line a finding, begins with this line.
constexpr std::string_view kPagesHeading = "*** in database main ***\n";

bool IsLeakedPage(std::string_view line) {
  // "Page 7 is never used" until 3.41, "Page 7: never used" since.
  constexpr std::string_view kPage = "Page ";
  if (!line.starts_with(kPage)) {
    return false;
  }
  line.remove_prefix(kPage.size());
  const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
  line.remove_prefix(digits);
  return digits > 0 && (line == " is never used" || line == ": never used");
}

/// Findings about single rows and about indexes of virtual tables. Names of the file stand behind the part that counts.
bool IsHarmlessContent(std::string_view finding) {
  constexpr std::string_view kHarmless[] = {
      "NULL value in ",
      "NUMERIC value in ",
      "TEXT value in ",
      "non-INT value in ",
      "non-INTEGER value in ",
      "non-REAL value in ",
      "non-TEXT value in ",
      "non-BLOB value in ",
      // One that is behind its table, and one that keeps no content to compare it with.
      "malformed inverted index for FTS",
      "unable to validate the inverted index for FTS",
  };
  return std::any_of(std::begin(kHarmless), std::end(kHarmless),
                     [finding](std::string_view harmless) { return finding.starts_with(harmless); });
}

/// The first part of a finding that is damage; empty when none is.
std::string_view DamageIn(std::string_view finding) {
  if (!finding.starts_with(kPagesHeading)) {
    return finding == "ok" || IsHarmlessContent(finding) ? std::string_view() : finding;
  }
  finding.remove_prefix(kPagesHeading.size());
  while (!finding.empty()) {
    const std::string_view line = finding.substr(0, finding.find('\n'));
    if (!IsLeakedPage(line)) {
      return line;
    }
    finding.remove_prefix(std::min(line.size() + 1, finding.size()));
  }
  return {};
}

/// Why a page could not be had, where that says nothing of the page: quick_check reports it like damage. 0 for none.
int ReasonOfAPageNotRead(std::string_view finding) {
  constexpr std::string_view kNotRead = "unable to get the page. error code=";
  const std::size_t at = finding.find(kNotRead);
  if (!finding.starts_with(kPagesHeading) || at == std::string_view::npos) {
    return SQLITE_OK;
  }
  finding.remove_prefix(at + kNotRead.size());
  int code = SQLITE_OK;
  std::from_chars(finding.data(), finding.data() + finding.size(), code);
  const int kind = code & 0xff;
  return kind == SQLITE_NOMEM || kind == SQLITE_IOERR ? code : SQLITE_OK;
}

/// Runs a quick_check and looks at what it finds.
Error LookAtFindings(sqlite3* handle, const std::string& check, int most_findings) {
  Statement statement;
  if (Error error = Prepare(handle, check, statement); error.Failed()) {
    return error;
  }
  int findings = 0;
  int code = sqlite3_step(statement.get());
  for (; code == SQLITE_ROW; code = sqlite3_step(statement.get())) {
    const std::string_view finding = TextOf(statement.get(), 0);
    if (const int reason = ReasonOfAPageNotRead(finding); reason != SQLITE_OK) {
      return Failure(reason, "while the file was looked through");
    }
    findings += 1 + static_cast<int>(std::count(finding.begin(), finding.end(), '\n'));
    if (const std::string_view damage = DamageIn(finding); !damage.empty()) {
      return Failure(ResultCode::kCorrupt, std::string(damage));
    }
  }
  if (code != SQLITE_DONE) {
    return Failure(handle);
  }
  return findings < most_findings ? Error() : Failure(ResultCode::kCorrupt, "more findings than can be looked at");
}

/// Quotes names of the file: the pattern holds one %w for each.
template <class... Names>
std::string Sql(const char* pattern, const Names&... names) {
  const std::unique_ptr<char, decltype(&sqlite3_free)> text(sqlite3_mprintf(pattern, names...), &sqlite3_free);
  if (text == nullptr) {
    throw std::bad_alloc();
  }
  return text.get();
}

/// The rows of a query without parameters.
Error ReadRows(sqlite3* handle, const char* query, Rows& rows) {
  Statement statement;
  Error error = Prepare(handle, query, statement);
  return error.Failed() ? error : Run(statement.get(), {}, rows);
}

// SQLite's own number of findings for a check of one table.
constexpr int kMostFindingsOfATable = 100;

/// Every table for itself.
Error CheckTables(sqlite3* handle) {
  Rows tables;
  Error error = ReadRows(handle, "SELECT name FROM main.sqlite_schema WHERE type = 'table' AND rootpage > 0", tables);
  for (int table = 0; table < tables.count && !error.Failed(); ++table) {
    error = LookAtFindings(handle, Sql("PRAGMA main.quick_check(\"%w\")", tables[table][0].GetColumnValue()),
                           kMostFindingsOfATable);
  }
  return error;
}

Error CheckStructure(sqlite3* handle) {
  const ChecksIgnored ignored(handle);
  // As many findings as a text can hold: leaked pages must not hide damage behind them.
  constexpr int kMostFindings = 500'000;
  Error error = LookAtFindings(handle, "PRAGMA main.quick_check(" + std::to_string(kMostFindings) + ")", kMostFindings);
  // SQLite 3.44 and later look at virtual tables too, and give up on one with a tokenizer that only its owner has.
  return error.code == SQLITE_ERROR ? CheckTables(handle) : error;
}

Error CountEntries(sqlite3* handle, const char* table, const char* index, std::int64_t rows) {
  // The second column keeps SQLite from counting in an index of its own choice.
  std::int64_t entries = 0;
  if (Error error =
          ReadNumber(handle, Sql("SELECT COUNT(*), 1 FROM main.\"%w\" INDEXED BY \"%w\"", table, index), entries);
      error.Failed()) {
    // An index over a function or a collation that this library lacks: nothing can change its table either.
    return error.code == SQLITE_ERROR ? Error() : error;
  }
  return rows == entries ? Error()
                         : Failure(ResultCode::kCorrupt, Sql("the index %s has %lld entries for the %lld rows of %s",
                                                             index, entries, rows, table));
}

Error CheckIndexes(sqlite3* handle) {
  // Partial indexes have fewer entries by intent.
  constexpr const char* kIndexes =
      "SELECT t.name, i.name FROM main.sqlite_schema t, pragma_index_list(t.name, 'main') i "
      "WHERE t.type = 'table' AND t.rootpage > 0 AND NOT i.partial";
  Rows indexes;
  Error error = ReadRows(handle, kIndexes, indexes);
  const char* counted = "";
  std::int64_t rows = 0;
  for (int index = 0; index < indexes.count && !error.Failed(); ++index) {
    const char* table = indexes[index][0].GetColumnValue();
    if (std::strcmp(counted, table) != 0) {
      error = ReadNumber(handle, Sql("SELECT COUNT(*) FROM main.\"%w\" NOT INDEXED", table), rows);
      counted = table;
    }
    if (!error.Failed()) {
      error = CountEntries(handle, table, indexes[index][1].GetColumnValue(), rows);
    }
  }
  return error;
}

/// What an index of expressions holds, such as datetime(time), SQLite takes for what the row would give, and a partial
/// index for the only rows that its condition holds for: an entry that leads elsewhere has a deletion take another row.
/// Their tables are compared with their indexes entry by entry.
Error CheckTrustedIndexes(sqlite3* handle) {
  constexpr const char* kTables =
      "SELECT DISTINCT t.name FROM main.sqlite_schema t, pragma_index_list(t.name, 'main') i "
      "WHERE t.type = 'table' AND t.rootpage > 0 AND (i.partial "
      "OR EXISTS (SELECT 1 FROM pragma_index_xinfo(i.name, 'main') WHERE cid = -2))";
  Rows tables;
  Error error = ReadRows(handle, kTables, tables);
  for (int table = 0; table < tables.count && !error.Failed(); ++table) {
    error = LookAtFindings(handle, Sql("PRAGMA main.integrity_check(\"%w\")", tables[table][0].GetColumnValue()),
                           kMostFindingsOfATable);
    if (error.code == SQLITE_ERROR) {
      // A function or a collation that this library lacks: nothing can change the table either.
      error = Error();
    }
  }
  return error;
}

/// Compaction copies what the schema names to the letter, which SQLite itself writes; reading is not so strict. A table
/// whose entry was damaged in a letter can be read, and would be gone without a word.
Error CheckSchemaTexts(sqlite3* handle) {
  constexpr const char* kStrangeEntries =
      "SELECT COUNT(*) FROM main.sqlite_schema WHERE typeof(type) <> 'text' "
      "OR type NOT IN ('table', 'index', 'view', 'trigger') OR (sql IS NOT NULL AND substr(sql, 1, 7) <> 'CREATE ')";
  std::int64_t entries = 0;
  Error error = ReadNumber(handle, kStrangeEntries, entries);
  if (!error.Failed() && entries > 0) {
    error = Failure(ResultCode::kCorrupt, "the schema has an entry that SQLite did not write");
  }
  return error;
}

/// Whether the table's primary key has an index, which it has not where the key is the rowid itself.
Error HasKeyIndex(sqlite3* handle, const std::string& table, bool& found) {
  Statement statement;
  Rows rows;
  Error error = Prepare(handle, "SELECT 1 FROM pragma_index_list(?1, 'main') WHERE origin = 'pk'", statement);
  if (!error.Failed()) {
    error = Run(statement.get(), {table}, rows);
  }
  found = rows.count > 0;
  return error;
}

/// Whether a column called rowid is another thing than the rowid: where it is part of the primary key, one of a longer
/// key, or of a table without rowids.
Error HidesRowids(sqlite3* handle, const std::string& table, bool& hidden) {
  constexpr int kName = 1;
  constexpr int kPlaceInKey = 5;
  Statement statement;
  if (Error error = Prepare(handle, Sql("PRAGMA main.table_xinfo(\"%w\")", table.c_str()), statement); error.Failed()) {
    return error;
  }
  int code = sqlite3_step(statement.get());
  for (; code == SQLITE_ROW; code = sqlite3_step(statement.get())) {
    if (Is(TextOf(statement.get(), kName), "rowid")) {
      hidden = sqlite3_column_int(statement.get(), kPlaceInKey) == 0;
      return hidden ? Error() : HasKeyIndex(handle, table, hidden);
    }
  }
  return code == SQLITE_DONE ? Error() : Failure(handle);
}

}  // namespace

Error CheckSchema(sqlite3* handle) {
  Statement statement;
  if (Error error = Prepare(handle, "SELECT type, name, tbl_name FROM main.sqlite_schema", statement); error.Failed()) {
    return error;
  }
  int code = sqlite3_step(statement.get());
  for (; code == SQLITE_ROW; code = sqlite3_step(statement.get())) {
    const char* fault = FaultOf(TextOf(statement.get(), 0), TextOf(statement.get(), 1), TextOf(statement.get(), 2));
    if (fault != nullptr) {
      return Failure(ResultCode::kAuth, fault);
    }
  }
  return code == SQLITE_DONE ? Error() : Failure(handle);
}

Error CheckRowids(sqlite3* handle, const std::set<std::string>& tables) {
  for (const std::string& table : tables) {
    bool hidden = false;
    if (Error error = HidesRowids(handle, table, hidden); error.Failed()) {
      return error;
    }
    if (hidden) {
      return Failure(ResultCode::kAuth,
                     "the table " + table + " has an ordinary column called rowid, which hides the rowid of its rows");
    }
  }
  return {};
}

Error FindDamage(sqlite3* handle) {
  Error error = CheckSchemaTexts(handle);
  if (!error.Failed()) {
    error = CheckStructure(handle);
  }
  if (!error.Failed()) {
    error = CheckIndexes(handle);
  }
  return error.Failed() ? error : CheckTrustedIndexes(handle);
}

}  // namespace corvo::shared
