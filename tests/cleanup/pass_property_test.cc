#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "cleanup/data_cleanup.h"
#include "cleanup/pass_model.h"
#include "storage/storage_options.h"
#include "support/statement_log.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

/// A number from `first` to `last`.
template <class Number>
Number Pick(Number first, Number last) {
  return *rc::gen::inRange<Number>(first, last + 1);
}

bool OneIn(int chances) { return Pick(1, chances) == 1; }

/// Rows whose times lie close to whole days before now, where expiry decides.
std::vector<ModelRow> RandomRows(int count) {
  std::vector<ModelRow> rows;
  for (int value = 1; value <= count; ++value) {
    ModelRow& row = rows.emplace_back(ModelRow{value, std::nullopt});
    if (!OneIn(10)) {
      row.age_seconds = Pick(0, 5) * 86'400 + Pick(-1, 1);
      row.notation = Pick(0, 2);
    }
  }
  return rows;
}

ModelContract RandomContract(const std::string& database, int number) {
  const std::string suffix = std::to_string(number);
  ModelContract contract{"Type" + suffix, {.database = database}};
  contract.options.table = OneIn(2) ? "Table" + suffix : "";
  contract.options.max_rows = OneIn(2) ? 0U : Pick(1U, 30U);
  contract.options.retention_days = Pick(0U, 5U);
  contract.options.max_size_mb = Pick(0U, 3U);
  return contract;
}

/// A database with contracts for its tables and for some that do not exist, and with tables that no contract names.
ModelDatabase RandomDatabase(const std::string& name) {
  ModelDatabase database;
  database.name = name;
  database.present = !OneIn(8);
  database.write_ahead_log = OneIn(3);
  database.max_size_mb = OneIn(3) ? 0 : 1;
  database.filler_bytes = OneIn(4) ? Pick(1, 3) * 500'000 : 10;
  const bool stretched = !database.write_ahead_log && database.filler_bytes == 10 && OneIn(2);
  database.file_bytes = stretched ? Pick<std::uintmax_t>(999'999, 3'999'999) : 0;
  for (int number = Pick(1, 4); number > 0; --number) {
    database.contracts.push_back(RandomContract(name, number));
    if (!OneIn(5)) {
      database.tables[database.contracts.back().Table()] = RandomRows(Pick(0, 40));
    }
  }
  database.tables["Foreign_Table"] = RandomRows(Pick(0, 40));
  return database;
}

std::vector<ModelDatabase> RandomDirectory() {
  std::vector<ModelDatabase> databases;
  for (const char* name : {"alpha", "beta", "gamma"}) {
    databases.push_back(RandomDatabase(name));
  }
  databases.resize(Pick<std::size_t>(1, databases.size()));
  return databases;
}

/// The databases of one case on disk, with the contracts of their tables.
class Directory {
 public:
  explicit Directory(const std::vector<ModelDatabase>& databases) : contracts_(Contracts(databases, factory_)) {
    shared::SetDataDirectory(folder_.Path().string());
    for (const ModelDatabase& database : databases) {
      Create(database, folder_.Path());
    }
  }
  Directory(const Directory&) = delete;
  Directory& operator=(const Directory&) = delete;
  ~Directory() { shared::SetDataDirectory(""); }

  void Clean() const { RC_ASSERT(!DataCleanup().CleanDatabases(contracts_).Failed()); }

  void ExpectLeft(const std::vector<ModelDatabase>& databases) const {
    for (const ModelDatabase& database : databases) {
      RC_ASSERT(std::filesystem::exists(folder_.Path() / (database.name + ".db")) == database.present);
      if (database.present) {
        RC_ASSERT(ActualContent(database, folder_.Path()) == ExpectedContent(database));
      }
    }
  }

  [[nodiscard]] const std::filesystem::path& Path() const { return folder_.Path(); }

 private:
  TempDir folder_;
  ContractFactory factory_;
  DatabaseMap contracts_;
};

/// Applies the rules of one pass to the model, and the pass to the files; both must leave the same.
void CleanBoth(std::vector<ModelDatabase>& databases, const Directory& directory) {
  for (ModelDatabase& database : databases) {
    CleanModel(database, directory.Path());
  }
  directory.Clean();
  directory.ExpectLeft(databases);
}

// The second pass goes by the options that the first one left behind.
TEST(PassProperty, TwoPassesInARowLeaveExactlyTheRowsThatTheRulesLeave) {
  EXPECT_TRUE(rc::check([] {
    std::vector<ModelDatabase> databases = RandomDirectory();
    const Directory directory(databases);
    CleanBoth(databases, directory);
    CleanBoth(databases, directory);
  }));
}

/// Brings a database within every limit less its margin.
void BringWithinLimits(ModelDatabase& database) {
  database.filler_bytes = 10;
  database.file_bytes = 0;
  for (const ModelContract& contract : database.contracts) {
    auto& rows = database.tables[contract.Table()];
    const std::size_t keep = contract.options.max_rows != 0 ? contract.options.max_rows * 9 / 10 : rows.size();
    rows.resize(std::min(rows.size(), keep), ModelRow{});
    for (ModelRow& row : rows) {
      row.age_seconds = std::min<std::int64_t>(row.age_seconds.value_or(0), contract.options.retention_days * 86'400);
    }
  }
}

TEST(PassProperty, DeletesNothingWhereEveryLimitIsKept) {
  EXPECT_TRUE(rc::check([] {
    std::vector<ModelDatabase> databases = RandomDirectory();
    for (ModelDatabase& database : databases) {
      BringWithinLimits(database);
    }
    const Directory directory(databases);
    const StatementLog statements;
    directory.Clean();
    for (const Statement& statement : statements.All()) {
      RC_ASSERT(statement.rows_changed == 0);
    }
    directory.ExpectLeft(databases);
  }));
}

}  // namespace
}  // namespace corvo::test
