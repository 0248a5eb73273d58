#include "cleanup/pass_model.h"

#include <algorithm>

#include "support/database.h"
#include "support/fake_clock.h"

namespace corvo::test {
namespace {

using Rows = std::vector<ModelRow>;

std::filesystem::path File(const ModelDatabase& database, const std::filesystem::path& directory) {
  return directory / (database.name + ".db");
}

/// The time of a row as an SQL expression.
std::string Time(const ModelRow& row) {
  if (!row.age_seconds) {
    return "'never'";
  }
  static const char* const kZones[] = {"+00:00", "Z", "+02:00"};
  const std::int64_t shift = row.notation == 2 ? 7200 : 0;
  return std::string("strftime('%Y-%m-%dT%H:%M:%S") + kZones[row.notation] + "', " +
         std::to_string(FakeClock::kStart - *row.age_seconds + shift) + ", 'unixepoch')";
}

void DropOldest(Rows& rows, std::size_t count) {
  rows.erase(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(std::min(count, rows.size())));
}

Rows* Find(ModelDatabase& database, const ModelContract& contract) {
  const auto table = database.tables.find(contract.Table());
  return table != database.tables.end() ? &table->second : nullptr;
}

void Expire(Rows& rows, std::int64_t days) {
  std::erase_if(rows, [days](const ModelRow& row) { return row.age_seconds.value_or(0) > days * 86'400; });
}

void LimitRows(Rows& rows, std::size_t limit) {
  const std::size_t keep = limit * 9 / 10;
  DropOldest(rows, rows.size() > keep ? rows.size() - keep : 0);
}

/// Size of the database in megabytes: the sum of the places of its tables, or the size of the file if there is none.
std::int64_t Size(const ModelDatabase& database, const std::filesystem::path& file) {
  Database reader(file);
  std::int64_t total = 0;
  for (const ModelContract& contract : database.contracts) {
    const auto root = reader.Query("SELECT rootpage FROM sqlite_schema WHERE name = '" + contract.Table() + "'");
    total += root.empty() ? 0 : (std::stoll(root[0][0]) * 4096 + 500'000) / 1'000'000;
  }
  return total != 0 ? total : static_cast<std::int64_t>(std::filesystem::file_size(file) / 1'000'000);
}

void LimitSize(ModelDatabase& database, std::int64_t size) {
  for (const ModelContract& contract : database.contracts) {
    const std::int64_t limit = contract.options.max_size_mb;
    Rows* rows = Find(database, contract);
    if (limit == 0 || size == 0 || limit > size || rows == nullptr) {
      continue;
    }
    const double share =
        (0.1 * static_cast<double>(limit) + static_cast<double>(size - limit)) / static_cast<double>(limit);
    DropOldest(*rows, std::max<std::size_t>(1, static_cast<std::size_t>(static_cast<double>(rows->size()) * share)));
  }
  // The lasting effect: from now on the first contract goes by the options of the last.
  database.contracts.front().options = database.contracts.back().options;
}

}  // namespace

void Create(const ModelDatabase& database, const std::filesystem::path& directory) {
  if (!database.present) {
    return;
  }
  {
    Database file(File(database, directory));
    file.Run(database.write_ahead_log ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode=DELETE");
    file.Run("PRAGMA synchronous=OFF; BEGIN; CREATE TABLE Filler (value)");
    file.Run("INSERT INTO Filler VALUES (zeroblob(" + std::to_string(database.filler_bytes) + "))");
    for (const auto& [table, rows] : database.tables) {
      file.Run("CREATE TABLE " + table + " (time TEXT, value INTEGER)");
      for (const ModelRow& row : rows) {
        file.Run("INSERT INTO " + table + " VALUES (" + Time(row) + ", " + std::to_string(row.value) + ")");
      }
    }
    file.Run("COMMIT");
  }
  if (database.file_bytes != 0) {
    std::filesystem::resize_file(File(database, directory), database.file_bytes);
  }
}

DatabaseMap Contracts(const std::vector<ModelDatabase>& databases, ContractFactory& factory) {
  DatabaseMap map;
  for (const ModelDatabase& database : databases) {
    DatabaseEntry& entry = map[database.name];
    entry.max_size_mb = database.max_size_mb;
    for (const ModelContract& contract : database.contracts) {
      entry.contracts.push_back(factory.Make(contract.type, contract.options));
    }
  }
  return map;
}

void CleanModel(ModelDatabase& database, const std::filesystem::path& directory) {
  if (!database.present) {
    return;
  }
  for (const ModelContract& contract : database.contracts) {
    Rows* rows = Find(database, contract);
    if (rows != nullptr && contract.options.retention_days != 0) {
      Expire(*rows, contract.options.retention_days);
    }
    if (rows != nullptr && contract.options.max_rows != 0) {
      LimitRows(*rows, contract.options.max_rows);
    }
  }
  if (database.max_size_mb != 0) {
    LimitSize(database, Size(database, File(database, directory)));
  }
}

Content ExpectedContent(const ModelDatabase& database) {
  Content content;
  for (const auto& [table, rows] : database.tables) {
    auto& values = content[table];
    std::transform(rows.begin(), rows.end(), std::back_inserter(values), [](const ModelRow& row) { return row.value; });
  }
  return content;
}

Content ActualContent(const ModelDatabase& database, const std::filesystem::path& directory) {
  Content content;
  Database file(File(database, directory));
  for (const auto& [table, rows] : database.tables) {
    auto& values = content[table];
    for (const Row& row : file.Query("SELECT value FROM " + table + " ORDER BY value")) {
      values.push_back(std::stoll(row.at(0)));
    }
  }
  return content;
}

}  // namespace corvo::test
