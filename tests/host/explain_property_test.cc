#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/facts/explain/explanation.h"
#include "host/pass/directory_run.h"
#include "host/random_directory.h"
#include "plugin/data_cleanup_plugin.h"
#include "storage/storage_options.h"
#include "support/fake_clock.h"

namespace corvo::test {
namespace {

using telemetry::host::ContractView;
using telemetry::host::DatabaseReport;
using telemetry::host::Deleted;
using telemetry::host::Explanation;
using telemetry::host::Rule;
using telemetry::host::RunReport;
using telemetry::host::TableReport;

constexpr std::uint64_t kDirectories = 75;

/// What was said of the rows of one table. Rows are known by their value: compaction may renumber them.
struct Foreseen {
  std::map<Rule, std::vector<std::int64_t>> rows;
  Deleted next_pass;

  [[nodiscard]] std::int64_t Count(Rule rule) const {
    const auto found = rows.find(rule);
    return found == rows.end() ? 0 : static_cast<std::int64_t>(found->second.size());
  }
};

class ExplainProperty : public testing::Test {
 protected:
  /// The databases that a killed program left with a journal or a log: what reads only cannot put them in order.
  [[nodiscard]] static std::set<std::string> LeftBehind(const RandomDirectory& directory) {
    std::set<std::string> names;
    for (const std::string& name : directory.Names()) {
      const std::filesystem::path file = directory.Path() / (name + ".db");
      if (std::filesystem::exists(file.string() + "-journal") || std::filesystem::exists(file.string() + "-wal")) {
        names.insert(name);
      }
    }
    return names;
  }

  /// Explains every row of the table; none when there is no such table, or nothing that can be explained.
  [[nodiscard]] static std::optional<Foreseen> Foresee(const RandomDirectory& directory, const ContractView& contract) {
    const std::filesystem::path file = directory.Path() / (contract.database + ".db");
    try {
      const Explanation table = telemetry::host::Explain(directory.Path(), contract.table, {}, FakeClock::kStart);
      if (table.missing_file || table.table.missing || !table.left_alone.empty()) {
        return std::nullopt;
      }
      const std::vector<Row> rows =
          Database(file).Query("SELECT rowid, value FROM " + contract.table + " ORDER BY rowid");
      return ForeseeRows(directory, contract, rows);
    } catch (const std::runtime_error&) {
      return std::nullopt;  // damaged, or nothing that the rules could work on
    }
  }

  [[nodiscard]] static Foreseen ForeseeRows(const RandomDirectory& directory, const ContractView& contract,
                                            const std::vector<Row>& rows) {
    std::vector<std::int64_t> rowids;
    for (const Row& row : rows) {
      rowids.push_back(std::stoll(row[0]));
    }
    const Explanation explained = telemetry::host::Explain(directory.Path(), contract.table, rowids, FakeClock::kStart);
    Foreseen foreseen{.rows = {}, .next_pass = explained.table.next_pass};
    for (std::size_t index = 0; index < rows.size(); ++index) {
      foreseen.rows[explained.rows.at(index).next_pass].push_back(std::stoll(rows[index][1]));
    }
    return foreseen;
  }

  [[nodiscard]] RunReport Run(const RandomDirectory& directory) {
    const shared::StorageOptionsScope kept(shared::GetStorageOptions());
    shared::SetDataDirectory(directory.Path().string());
    return telemetry::host::Run(module_, {.directory = directory.Path(), .source = "", .only = {}});
  }

  /// Whether the table has rowids, and values to know its rows by.
  static bool CanBeAsked(const DatabaseReport& database, const std::string& table) {
    return !Database(database.path)
                .Query("SELECT 1 FROM pragma_table_list('" + table +
                       "') WHERE type = 'table' AND wr = 0 AND EXISTS (SELECT 1 FROM "
                       "pragma_table_xinfo('" +
                       table + "') WHERE name = 'value')")
                .empty();
  }

  static std::vector<std::int64_t> ValuesLeft(const DatabaseReport& database, const std::string& table) {
    std::vector<std::int64_t> values;
    for (const Row& row : Database(database.path).Query("SELECT value FROM " + table + " ORDER BY rowid")) {
      values.push_back(std::stoll(row[0]));
    }
    return values;
  }

  void ExpectForeseen(const DatabaseReport& database, const TableReport& table, const Foreseen& foreseen) {
    EXPECT_EQ(table.deleted.expired, foreseen.Count(Rule::kAge)) << table.table;
    EXPECT_EQ(table.deleted.row_limit, foreseen.Count(Rule::kRowLimit)) << table.table;
    EXPECT_EQ(table.deleted.size_limit, foreseen.Count(Rule::kSizeLimit)) << table.table;
    EXPECT_EQ(foreseen.next_pass.Sum(), table.deleted.Sum()) << table.table;
    const auto kept = foreseen.rows.find(Rule::kNone);
    EXPECT_EQ(ValuesLeft(database, table.table),
              kept == foreseen.rows.end() ? std::vector<std::int64_t>() : kept->second);
    rows_ += table.rows_before.value_or(0);
    deleted_.Add(table.deleted);
  }

  telemetry::plugin::DataCleanupPlugin module_;
  std::int64_t rows_ = 0;
  Deleted deleted_;
};

TEST_F(ExplainProperty, EveryRowGoesOrStaysByTheRuleThatWasForetold) {
  for (std::uint64_t seed = 1; seed <= kDirectories && !HasFailure(); ++seed) {
    SCOPED_TRACE("directory " + std::to_string(seed));
    const RandomDirectory directory(seed);
    const std::set<std::string> left_behind = LeftBehind(directory);
    std::map<std::string, Foreseen> tables;
    for (const ContractView& contract : telemetry::host::ReadCatalogue().contracts) {
      if (auto foreseen = Foresee(directory, contract)) {
        tables.emplace(contract.table, *std::move(foreseen));
      }
    }
    for (const DatabaseReport& database : Run(directory).databases) {
      for (const TableReport& table : database.tables) {
        if (database.problem || table.missing) {
          continue;
        }
        if (const auto found = tables.find(table.table); found != tables.end()) {
          ExpectForeseen(database, table, found->second);
        } else {
          EXPECT_TRUE(left_behind.contains(database.name) || !CanBeAsked(database, table.table)) << table.table;
        }
      }
    }
  }
  // A property of tables in which nothing happens would say nothing.
  EXPECT_GT(rows_, 5000);
  EXPECT_GT(deleted_.expired, 500);
  EXPECT_GT(deleted_.row_limit, 500);
  EXPECT_GT(deleted_.size_limit, 100);
}

}  // namespace
}  // namespace corvo::test
