#include "cleanup/engine_fixture.h"

#include "storage/storage_settings.h"

namespace corvo::test {

EngineTest::EngineTest() { shared::SetDataDirectory(directory.Path().string()); }

EngineTest::~EngineTest() { shared::SetDataDirectory(""); }

void EngineTest::CreateDatabase(const std::string& name, const std::string& table, std::int64_t count) const {
  Database database = Open(name);
  CreateTable(database, table);
  AddRows(database, table, count);
}

void CreateTable(Database& database, const std::string& table) {
  database.Run("CREATE TABLE " + table + " (time TEXT, value)");
}

void AddRows(Database& database, const std::string& table, std::int64_t count, const std::string& time) {
  database.Run("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " + std::to_string(count) +
               ") INSERT INTO " + table + " SELECT '" + time + "', i FROM n WHERE i <= " + std::to_string(count));
}

void AddPayload(Database& database, const std::string& table, std::int64_t bytes) {
  database.Run("INSERT INTO " + table + " VALUES ('" + kRecentTime + "', zeroblob(" + std::to_string(bytes) + "))");
}

void CreateTableMeasuring(Database& database, const std::string& table, std::int64_t megabytes) {
  CreateTable(database, "Filler");
  // One page over the middle of the megabyte below, rounded up to whole pages by SQLite.
  AddPayload(database, "Filler", megabytes * 1'000'000);
  CreateTable(database, table);
}

}  // namespace corvo::test
