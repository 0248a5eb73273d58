#include "storage/sql_text.h"

#include <sqlite3.h>

#include <cstring>
#include <string_view>

namespace corvo::shared {
namespace {

bool StartsWith(const char* text, std::string_view start) {
  return std::strncmp(text, start.data(), start.size()) == 0;
}

// Behind the next `end`, or the text's end: like SQLite, an open comment ends there.
const char* Behind(const char* text, std::string_view end) {
  const char* found = std::strstr(text, end.data());
  return found != nullptr ? found + end.size() : text + std::strlen(text);
}

}  // namespace

const char* SkipBlanks(const char* sql) {
  constexpr std::string_view kBlanks = " \t\n\v\f\r;";
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  while (*sql != '\0') {
    if (kBlanks.find(*sql) != std::string_view::npos) {
      ++sql;
    } else if (StartsWith(sql, "--")) {
      sql = Behind(sql, "\n");
    } else if (StartsWith(sql, "/*")) {
      sql = Behind(sql + 2, "*/");
    } else if (StartsWith(sql, kByteOrderMark)) {
      sql += kByteOrderMark.size();
    } else {
      break;
    }
  }
  return sql;
}

bool IsVacuum(const char* sql) {
  constexpr std::string_view kVacuum = "VACUUM";
  return sqlite3_strnicmp(SkipBlanks(sql), kVacuum.data(), static_cast<int>(kVacuum.size())) == 0;
}

}  // namespace corvo::shared
