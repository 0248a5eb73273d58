#include "system/comparison.h"

#include <algorithm>

#include "support/database.h"

namespace corvo::test {

namespace fs = std::filesystem;

namespace {

// Every row of a fixture is unlike the others, so sets of rows say all.
std::int64_t MissingRowsIn(const fs::path& file, const fs::path& reference) {
  Database database(file);
  database.Run("ATTACH '" + reference.string() + "' AS reference");
  std::int64_t missing = 0;
  for (const Row& table : database.Query("SELECT name FROM reference.sqlite_schema WHERE type = 'table'")) {
    missing += database.Number("SELECT COUNT(*) FROM (SELECT * FROM reference." + table[0] +
                               " EXCEPT SELECT * FROM main." + table[0] + ")");
  }
  return missing;
}

}  // namespace

std::vector<std::string> DatabaseFiles(const fs::path& directory) {
  std::vector<std::string> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    if (entry.path().extension() == ".db") {
      files.push_back(entry.path().filename().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

void CopyDatabases(const fs::path& from, const fs::path& to) {
  fs::remove_all(to);
  fs::copy(from, to);
}

std::string Damage(const fs::path& directory) {
  std::string damage;
  for (const std::string& file : DatabaseFiles(directory)) {
    Database database(directory / file);
    const std::string answer = database.Query("PRAGMA integrity_check").at(0).at(0);
    damage += answer != "ok" ? file + ": " + answer + "\n" : "";
  }
  return damage;
}

std::int64_t MissingRows(const fs::path& directory, const fs::path& reference) {
  std::int64_t missing = 0;
  for (const std::string& file : DatabaseFiles(reference)) {
    missing += MissingRowsIn(directory / file, reference / file);
  }
  return missing;
}

bool SameRows(const fs::path& one, const fs::path& other) {
  return MissingRows(one, other) == 0 && MissingRows(other, one) == 0;
}

bool SameRowsIn(const std::string& file, const fs::path& one, const fs::path& other) {
  return MissingRowsIn(one / file, other / file) == 0 && MissingRowsIn(other / file, one / file) == 0;
}

}  // namespace corvo::test
