#include "damage/base_databases.h"

#include "support/database.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

enum class Journal { kDelete, kWriteAheadLog, kHot };

struct Shape {
  const char* name;
  int page_size;
  const char* auto_vacuum;
  const char* encoding;
  Journal journal;
  int filler_bytes = 0;  ///< of one row that makes the file large
};

constexpr Shape kShapes[] = {
    {"512-utf8", 512, "NONE", "UTF-8", Journal::kDelete},
    {"512-full", 512, "FULL", "UTF-8", Journal::kDelete},
    {"512-incremental-log", 512, "INCREMENTAL", "UTF-16le", Journal::kWriteAheadLog},
    {"1024-full-utf16le", 1024, "FULL", "UTF-16le", Journal::kDelete},
    {"1024-log", 1024, "NONE", "UTF-8", Journal::kWriteAheadLog},
    {"1024-hot-journal", 1024, "NONE", "UTF-8", Journal::kHot},
    {"4096-utf8", 4096, "NONE", "UTF-8", Journal::kDelete},
    {"4096-incremental-utf16be", 4096, "INCREMENTAL", "UTF-16be", Journal::kDelete},
    {"8192-over-size-limit", 8192, "NONE", "UTF-8", Journal::kDelete, 950'000},
};

constexpr const char* kSchema =
    "CREATE TABLE BatteryStatus(time TEXT, charge INTEGER NOT NULL, note TEXT);"
    "CREATE TABLE BootHealthLog(id INTEGER PRIMARY KEY AUTOINCREMENT, time TEXT, boot TEXT UNIQUE, note BLOB);"
    "CREATE INDEX BootTime ON BootHealthLog(time DESC);"
    "CREATE INDEX BootOdd ON BootHealthLog(note) WHERE id % 2;"
    "CREATE INDEX BootLength ON BootHealthLog(length(boot));"
    "CREATE TABLE SleepMetricsLog(time TEXT, duration REAL, note TEXT);"
    "CREATE INDEX SleepNote ON SleepMetricsLog(note);"
    "CREATE TABLE Inventory(key INTEGER PRIMARY KEY, name TEXT) WITHOUT ROWID;"
    "CREATE INDEX InventoryName ON Inventory(name);"
    "CREATE TABLE Notes(text TEXT);"
    "CREATE TABLE Spare(filler);";

std::string Numbers(int first, int last) {
  return "WITH RECURSIVE n(i) AS (SELECT " + std::to_string(first) + " UNION ALL SELECT i + 1 FROM n WHERE i < " +
         std::to_string(last) + ") ";
}

/// Rows `first` to `last` of a table, of which those up to `expired` are years old.
std::string Rows(const std::string& table, int first, int last, const std::string& values) {
  return Numbers(first, last) + "INSERT INTO " + table + " SELECT " + values + " FROM n;";
}

/// A time that is long past for the first rows and recent for the others.
std::string Time(int expired) {
  return "CASE WHEN i <= " + std::to_string(expired) +
         " THEN printf('2023-%02d-%02dT00:00:00+00:00', i % 12 + 1, i % 28 + 1)"
         " ELSE printf('2024-05-01T%02d:%02d:00+00:00', i % 24, i % 60) END";
}

/// What happened up to the older state.
std::string FirstChanges(const Shape& shape) {
  const std::string page = std::to_string(shape.page_size);
  return std::string("BEGIN;") + kSchema + Rows("Spare", 1, 8, "zeroblob(" + page + " * 2)") +
         Rows("BatteryStatus", 1, 150, Time(30) + ", i, printf('battery %05d', i)") +
         Rows("BootHealthLog", 1, 110, "i, " + Time(20) + ", printf('boot %06d', i), CAST(i * 17 AS TEXT)") +
         Rows("SleepMetricsLog", 1, 80, Time(0) + ", i / 7.0, printf('%0*d sleep', i * 37 % 180, i)") +
         Rows("Inventory", 1, 90, "i, printf('device %d', i * 7919 % 1000)") +
         Rows("Notes", 1, 5, "printf('%0*d', " + page + " * i / 2, i)") + "INSERT INTO Notes VALUES(zeroblob(" +
         std::to_string(shape.filler_bytes) + "));COMMIT;";
}

/// What happened last: rows come and go in every table, and pages become free.
std::string LastChanges(const Shape& shape) {
  const std::string page = std::to_string(shape.page_size);
  return Rows("BatteryStatus", 151, 220, Time(30) + ", i, printf('battery %05d', i)") +
         Rows("BootHealthLog", 111, 150, "i, " + Time(20) + ", printf('boot %06d', i), CAST(i * 17 AS TEXT)") +
         Rows("SleepMetricsLog", 81, 110, Time(0) + ", i / 7.0, printf('%0*d sleep', i * 37 % 180, i)") +
         Rows("Inventory", 91, 110, "i, printf('device %d', i * 7919 % 1000)") +
         Rows("Notes", 7, 9, "printf('%0*d', " + page + " * i / 5, i)") +
         "DELETE FROM BatteryStatus WHERE charge BETWEEN 60 AND 66;"
         "UPDATE BootHealthLog SET note = 'changed' || id WHERE id % 10 = 3;"
         "DELETE FROM Notes WHERE rowid = 2; DROP TABLE Spare;";
}

void CreateOlder(Database& database, const Shape& shape) {
  database.Run("PRAGMA page_size=" + std::to_string(shape.page_size) + ";PRAGMA auto_vacuum=" + shape.auto_vacuum +
               ";PRAGMA encoding='" + shape.encoding + "';");
  database.Run(FirstChanges(shape));
}

/// Makes the last changes and takes the files as they are then: the log not yet in the database, or the change half
/// done.
Image ChangeAndRead(Database& database, const Shape& shape, const std::filesystem::path& file) {
  if (shape.journal == Journal::kHot) {
    // So few pages in memory that the change reaches the file before its end.
    database.Run("PRAGMA cache_size=5; BEGIN;" + LastChanges(shape));
    Image image = Image::Read(file);
    database.Run("ROLLBACK");
    return image;
  }
  if (shape.journal == Journal::kWriteAheadLog) {
    database.Run("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0;");
  }
  database.Run("BEGIN;" + LastChanges(shape) + "COMMIT;");
  return Image::Read(file);
}

std::vector<std::uint32_t> Pages(Database& database, const std::string& condition) {
  std::vector<std::uint32_t> pages;
  for (const Row& row : database.Query("SELECT DISTINCT pageno FROM dbstat WHERE " + condition + " ORDER BY pageno")) {
    pages.push_back(static_cast<std::uint32_t>(std::stoul(row.at(0))));
  }
  return pages;
}

BaseDatabase Create(const Shape& shape) {
  const TempDir folder;
  const std::filesystem::path file = folder.Path() / "Base.db";
  BaseDatabase base;
  base.name = shape.name;
  Database database(file);
  CreateOlder(database, shape);
  base.older = Image::Read(file);
  base.image = ChangeAndRead(database, shape, file);
  base.tree_pages = Pages(database, "pagetype <> 'overflow'");
  base.overflow_pages = Pages(database, "pagetype = 'overflow'");
  return base;
}

}  // namespace

const std::vector<CleanedTable>& CleanedTables() {
  static const std::vector<CleanedTable> tables = {
      {"BatteryStatus", {.database = kDatabaseName, .max_rows = 120, .retention_days = 30, .max_size_mb = 1}},
      {"BootHealthLog", {.database = kDatabaseName, .max_rows = 90, .retention_days = 180, .max_size_mb = 1}},
      {"SleepMetricsLog", {.database = kDatabaseName, .max_rows = 70, .max_size_mb = 1}}};
  return tables;
}

const std::vector<BaseDatabase>& BaseDatabases() {
  static const std::vector<BaseDatabase> databases = [] {
    std::vector<BaseDatabase> made;
    for (const Shape& shape : kShapes) {
      made.push_back(Create(shape));
    }
    return made;
  }();
  return databases;
}

}  // namespace corvo::test
