#include "host/random_directory.h"

#include <array>
#include <fstream>

#include "support/fake_clock.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

/// One kind of time that a rule has to judge, as an expression of the row's number i.
std::string TimeOfRow(int shift) {
  return "CASE WHEN i % 13 = 0 THEN NULL WHEN i % 17 = 0 THEN 'never' WHEN i % 19 = 0 THEN '12:30:00' WHEN i % 23 = 0 "
         "THEN 2024 ELSE strftime('%Y-%m-%dT%H:%M:%S+00:00', " +
         std::to_string(FakeClock::kStart) + " - ((i * 7919 + " + std::to_string(shift) +
         ") % 144) * 3600 + i % 3 - 1, 'unixepoch') END";
}

std::string Numbers(int count) {
  return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) + ") ";
}

}  // namespace

RandomDirectory::RandomDirectory(std::uint64_t seed) : dice_(seed) {
  for (const char* name : {"Alpha", "beta", "GAMMA"}) {
    AddDatabase(name);
    if (dice_.OneIn(3)) {
      break;
    }
  }
  if (dice_.OneIn(8)) {
    AddStrayFile();
  }
}

void RandomDirectory::AddDatabase(const std::string& name) {
  names_.push_back(name);
  const int max_size_mb = dice_.Pick(0, 2);
  catalogue_.databases.push_back(
      factory_.Make(name + "Database", {.database = name, .max_size_mb = static_cast<std::uint32_t>(max_size_mb)}));
  std::vector<std::string> tables;
  for (int number = dice_.Pick(1, 4); number > 0; --number) {
    const std::string type = name + "Type" + std::to_string(number);
    AddContract(name, type, dice_.OneIn(4) ? dice_.Pick(0, 3) : max_size_mb);
    if (!dice_.OneIn(7)) {
      tables.push_back(type);
    }
  }
  if (!dice_.OneIn(8)) {
    Write(name, tables);
  }
}

void RandomDirectory::AddContract(const std::string& database, const std::string& type, int max_size_mb) {
  const auto limit = [this](int highest) { return static_cast<std::uint32_t>(dice_.Pick(1, highest)); };
  catalogue_.contracts.push_back(factory_.Make(type, {.database = database,
                                                      .max_rows = dice_.OneIn(2) ? 0U : limit(400),
                                                      .retention_days = dice_.OneIn(4) ? 0U : limit(6),
                                                      .max_size_mb = static_cast<std::uint32_t>(max_size_mb)}));
}

/// Made beside the directory, so that it can be left there as a program that was killed leaves it.
void RandomDirectory::Write(const std::string& name, const std::vector<std::string>& tables) {
  constexpr std::array kPageSizes = {512, 1024, 4096, 4096, 8192, 65536};
  const TempDir workshop;
  const fs::path made = workshop.Path() / (name + ".db");
  const fs::path file = Path() / (name + ".db");
  Database database(made);
  database.Run("PRAGMA page_size=" + std::to_string(kPageSizes.at(static_cast<std::size_t>(dice_.Pick(0, 5)))) +
               "; PRAGMA auto_vacuum=" + std::to_string(dice_.Pick(0, 2)) +
               "; PRAGMA synchronous=OFF; PRAGMA journal_mode=" + (dice_.OneIn(3) ? "WAL" : "DELETE") + "; BEGIN");
  const bool filler_first = dice_.OneIn(2);
  if (filler_first) {
    AddFiller(database);
  }
  for (const std::string& table : tables) {
    AddTable(database, table);
  }
  if (!filler_first) {
    AddFiller(database);
  }
  database.Run("COMMIT");
  Settle(database, made, file);
  Spoil(file);
}

/// Leaves the file as it is, or with the log or the journal of a program that goes no further.
void RandomDirectory::Settle(Database& database, const fs::path& made, const fs::path& file) {
  const bool killed = dice_.OneIn(4);
  if (killed) {
    database.Run("PRAGMA cache_size=5; BEGIN; DELETE FROM Foreign_Table WHERE value % 2 = 0");
  }
  for (const char* suffix : {"", "-journal", "-wal"}) {
    if (fs::exists(made.string() + suffix) && (killed || *suffix == '\0')) {
      fs::copy_file(made.string() + suffix, file.string() + suffix);
    }
  }
}

/// A table that no contract names; it decides how far back in the file those after it begin.
void RandomDirectory::AddFiller(Database& database) {
  const int bytes = dice_.OneIn(2) ? 100 : dice_.Pick(1, 5) * 450'000;
  database.Run("CREATE TABLE Foreign_Table (value, payload); INSERT INTO Foreign_Table VALUES (0, zeroblob(" +
               std::to_string(bytes) + ")); " + Numbers(60) +
               "INSERT INTO Foreign_Table SELECT i, hex(zeroblob(i * 10)) FROM n");
}

void RandomDirectory::AddTable(Database& database, const std::string& table) {
  switch (dice_.Pick(1, 30)) {
    case 1:
      database.Run("CREATE VIEW " + table + " AS SELECT 1 AS time");
      return;
    case 2:
      database.Run("CREATE TABLE " + table + " (time TEXT PRIMARY KEY, value) WITHOUT ROWID");
      return;
    case 3:
      database.Run("CREATE TABLE " + table + " (stamp TEXT, value)");
      return;
    case 4:
      database.Run("CREATE TABLE " + table + " (time TEXT, rowid INTEGER)");
      return;
    default:
      AddRows(database, table);
      AddExtras(database, table);
  }
}

void RandomDirectory::AddRows(Database& database, const std::string& table) {
  const std::string columns = dice_.OneIn(4) ? "id INTEGER PRIMARY KEY, " : "";
  database.Run("CREATE TABLE " + table + " (" + columns + "time TEXT, value INTEGER, note TEXT)");
  database.Run(Numbers(dice_.Pick(1, 500)) + "INSERT INTO " + table + " (time, value, note) SELECT " +
               TimeOfRow(dice_.Pick(0, 143)) + ", i, hex(zeroblob(i % 40)) FROM n");
  if (dice_.OneIn(3)) {
    database.Run("DELETE FROM " + table + " WHERE value % " + std::to_string(dice_.Pick(2, 9)) + " = 0");
  }
}

void RandomDirectory::AddExtras(Database& database, const std::string& table) {
  if (dice_.OneIn(3)) {
    database.Run("CREATE INDEX " + table + "_time ON " + table + " (time)");
  }
  if (dice_.OneIn(6)) {
    database.Run("CREATE INDEX " + table + "_part ON " + table + " (value, note) WHERE value > 20");
  }
  if (dice_.OneIn(8)) {
    database.Run("CREATE TABLE " + table + "_log (value); CREATE TRIGGER " + table + "_gone AFTER DELETE ON " + table +
                 " BEGIN INSERT INTO " + table + "_log VALUES (old.value); END");
  }
}

/// Longer than its pages, now and then; seldom damaged.
void RandomDirectory::Spoil(const fs::path& file) {
  if (dice_.OneIn(6) && !fs::exists(file.string() + "-journal") && !fs::exists(file.string() + "-wal")) {
    fs::resize_file(file, fs::file_size(file) + static_cast<std::uintmax_t>(dice_.Pick(1, 1'500'000)));
  }
  if (dice_.OneIn(15)) {
    std::fstream bytes(file, std::ios::binary | std::ios::in | std::ios::out);
    bytes.seekp(dice_.OneIn(3) ? 0 : static_cast<std::streamoff>(fs::file_size(file) / 2));
    bytes << std::string(600, 'x');
  }
}

void RandomDirectory::AddStrayFile() {
  const std::string type = catalogue_.contracts.front()->GetDescriptor()->name();
  Database stray(Path() / (type + ".db"));
  stray.Run("CREATE TABLE " + type + " (time TEXT, value); INSERT INTO " + type + " VALUES ('2001-01-01', 1)");
}

}  // namespace corvo::test
