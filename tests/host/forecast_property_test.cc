// What is foreseen from the rows, against what a pass of the engine does to them.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cleanup/data_cleanup.h"
#include "host/facts/directory_state.h"
#include "host/pass/pass_watcher.h"
#include "storage/storage_options.h"
#include "support/contract_factory.h"
#include "support/database.h"
#include "support/fake_clock.h"
#include "support/temp_dir.h"
#include "support/test_catalogue.h"

namespace corvo::telemetry::host {
namespace {

using test::FakeClock;

template <class Number>
Number Pick(Number first, Number last) {
  return *rc::gen::inRange<Number>(first, last + 1);
}

bool OneIn(int chances) { return Pick(1, chances) == 1; }

/// Texts that SQLite reads in more ways than one would think, and such as it does not read.
std::string OddTime() {
  static const std::array<const char*, 14> times = {"NULL",
                                                    "''",
                                                    "'yesterday'",
                                                    "'now'",
                                                    "'NOW'",
                                                    "'12:30'",
                                                    "'12:30:15.5'",
                                                    "2460000",
                                                    "2460000.75",
                                                    "'2460432.5'",
                                                    "1714608000",
                                                    "' 2400000 '",
                                                    "X'323032342d30342d'",
                                                    "CAST('2024-04-01' AS BLOB)"};
  return times.at(Pick<std::size_t>(0, times.size() - 1));
}

/// A time near a whole number of days ago, where expiry decides, sometimes with a fraction that could be rounded.
std::string NearTime() {
  static const std::array<const char*, 4> ends = {"+00:00", "Z", ".9996", ".9996+00:00"};
  const std::int64_t age = Pick<std::int64_t>(-2, 5) * 86'400 + Pick(-1, 1);
  return "strftime('%Y-%m-%dT%H:%M:%S" + std::string(ends.at(Pick<std::size_t>(0, ends.size() - 1))) + "', " +
         std::to_string(FakeClock::kStart - age) + ", 'unixepoch')";
}

void AddRows(test::Database& file, const std::string& table) {
  file.Run("CREATE TABLE " + table + " (time" + (OneIn(2) ? " TEXT" : "") + ", value)");
  for (int row = Pick(0, 40); row > 0; --row) {
    file.Run("INSERT INTO " + table + " VALUES (" + (OneIn(4) ? OddTime() : NearTime()) + ", 1)");
  }
}

/// Databases of random content, with contracts of random limits, as the catalogue.
class Directory {
 public:
  Directory() {
    shared::SetDataDirectory(folder_.Path().string());
    for (const char* name : {"alpha", "beta", "gamma"}) {
      AddDatabase(name);
    }
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;
  ~Directory() { shared::SetDataDirectory(""); }

  [[nodiscard]] DirectoryState Read() const { return ReadDirectoryState(folder_.Path(), "", {}, FakeClock::kStart); }
  void CloseCollectors() { collectors_.clear(); }

 private:
  void AddDatabase(const std::string& name) {
    catalogue_.databases.push_back(
        contracts_.Make("Database_" + name, {.database = name, .max_size_mb = OneIn(3) ? 0U : 1U}));
    const bool present = !OneIn(8);
    auto file = present ? std::make_unique<test::Database>(folder_.Path() / (name + ".db")) : nullptr;
    const bool log = present && OneIn(3);
    if (file) {
      file->Run("PRAGMA synchronous=OFF; PRAGMA journal_mode=" + std::string(log ? "WAL" : "DELETE"));
      file->Run("CREATE TABLE Filler (x)");
    }
    // Before the tables it moves their places, after them it is the file alone that is large.
    const bool before = OneIn(2);
    const std::string fill =
        "INSERT INTO Filler VALUES (zeroblob(" + std::to_string(OneIn(3) ? 10 : Pick(1, 6) * 500'000) + "))";
    if (file && before) {
      file->Run(fill);
    }
    for (int number = Pick(1, 4); number > 0; --number) {
      AddTable(file.get(), name, name + std::to_string(number));
    }
    if (file && !before) {
      file->Run(fill);
    }
    if (log && OneIn(2)) {
      collectors_.push_back(std::move(file));
    }
  }

  void AddTable(test::Database* file, const std::string& database, const std::string& table) {
    catalogue_.contracts.push_back(contracts_.Make("Type_" + table, {.database = database,
                                                                     .table = table,
                                                                     .max_rows = OneIn(2) ? 0U : Pick(1U, 30U),
                                                                     .retention_days = Pick(0U, 5U),
                                                                     .max_size_mb = Pick(0U, 3U)}));
    if (file != nullptr && !OneIn(5)) {
      AddRows(*file, table);
    }
  }

  test::TempDir folder_;
  test::TestCatalogue catalogue_;
  test::ContractFactory contracts_;
  std::vector<std::unique_ptr<test::Database>> collectors_;  ///< that keep a write-ahead log
};

std::string TextOf(const Deleted& deleted) {
  return std::to_string(deleted.expired) + " expired, " + std::to_string(deleted.row_limit) + " row limit, " +
         std::to_string(deleted.size_limit) + " size limit";
}

TEST(ForecastProperty, IsWhatThePassThenDeletes) {
  EXPECT_TRUE(rc::check([] {
    const FakeClock clock(FakeClock::kStart);
    Directory directory;
    const DirectoryState state = directory.Read();
    directory.CloseCollectors();
    const auto watcher = std::make_shared<PassWatcher>(0);
    const shared::StatementObserverScope watching(watcher);
    RC_ASSERT(!DataCleanup().ReadSource().Failed());
    auto visits = watcher->Visits();
    for (const DatabaseState& database : state.databases) {
      RC_ASSERT(!database.problem);
      for (const TableState& table : database.tables) {
        RC_ASSERT(TextOf(table.next_pass) == TextOf(visits[database.name + ".db"].tables[table.contract.table]));
      }
    }
  }));
}

}  // namespace
}  // namespace corvo::telemetry::host
