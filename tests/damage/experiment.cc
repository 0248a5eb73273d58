#include "damage/experiment.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <set>

#include "damage/one_pass.h"
#include "damage/readable_rows.h"
#include "support/database.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

using Rows = std::vector<ReadableRow>;

/// When rows of a table have expired: the clock stands at the beginning of 2024-05-02.
std::map<std::string, std::string> Expired() {
  std::map<std::string, std::string> conditions;
  for (const CleanedTable& table : CleanedTables()) {
    if (table.options.retention_days != 0) {
      conditions[table.table] =
          "datetime(time) < datetime('2024-05-02', '-" + std::to_string(table.options.retention_days) + " days')";
    }
  }
  return conditions;
}

/// Size of the database in megabytes as the engine measures it: the place of each table, else the file.
std::uint32_t MeasuredSize(const std::filesystem::path& copy) {
  std::uint32_t total = 0;
  try {
    Database database(copy);
    for (const CleanedTable& table : CleanedTables()) {
      const auto pages =
          database.Query(std::string("SELECT pgsize * pageno FROM dbstat WHERE name='") + table.table + "'");
      total += pages.empty() ? 0 : static_cast<std::uint32_t>((std::stoll(pages[0][0]) + 500'000) / 1'000'000);
    }
  } catch (const std::runtime_error&) {
    total = 0;
  }
  return total != 0 ? total : static_cast<std::uint32_t>(std::filesystem::file_size(copy) / 1'000'000);
}

/// What the rules say of one table of what could be read before, for the deletions that succeeded.
class TableRules {
 public:
  TableRules(const CleanedTable& table, const std::vector<Statement>& statements, std::uint32_t size_mb)
      : options_(table.options), size_mb_(size_mb) {
    const std::string start = std::string("DELETE FROM ") + table.table + " WHERE ";
    for (const Statement& statement : statements) {
      if (statement.code == 0 && statement.sql.rfind(start, 0) == 0) {
        (statement.sql.compare(start.size(), 8, "datetime") == 0 ? expired_ : trimmed_) = true;
      }
    }
  }

  /// The rows that may be gone.
  [[nodiscard]] Rows Named(Rows rows) const {
    std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
    Rows named;
    if (expired_) {
      MoveIf(rows, named, [](const ReadableRow& row) { return row.expired; });
    }
    if (trimmed_) {
      const std::size_t keep = options_.max_rows * 9 / 10;
      MoveOldest(rows, named, rows.size() > keep ? rows.size() - keep : 0);
      MoveOldest(rows, named, ShareOverSizeLimit(rows.size()));
    }
    return named;
  }

 private:
  static void MoveIf(Rows& from, Rows& to, const std::function<bool(const ReadableRow&)>& condition) {
    const auto kept = std::stable_partition(from.begin(), from.end(), [&](const auto& row) { return !condition(row); });
    to.insert(to.end(), kept, from.end());
    from.erase(kept, from.end());
  }

  static void MoveOldest(Rows& from, Rows& to, std::size_t count) {
    const auto end = from.begin() + static_cast<std::ptrdiff_t>(std::min(count, from.size()));
    to.insert(to.end(), from.begin(), end);
    from.erase(from.begin(), end);
  }

  [[nodiscard]] std::size_t ShareOverSizeLimit(std::size_t rows) const {
    if (size_mb_ < kMaxSizeMb) {
      return 0;
    }
    const double share = (0.1 * kMaxSizeMb + (size_mb_ - kMaxSizeMb)) / kMaxSizeMb;
    return std::max<std::size_t>(1, static_cast<std::size_t>(static_cast<double>(rows) * share));
  }

  const ContractOptions& options_;
  std::uint32_t size_mb_;
  bool expired_ = false;
  bool trimmed_ = false;
};

bool Holds(const Rows& rows, const ReadableRow& wanted) {
  return std::any_of(rows.begin(), rows.end(), [&](const ReadableRow& row) { return wanted.FoundIn(row); });
}

/// Rows are known by their values: compaction may number them anew.
Rows Missing(const Rows& before, const Rows& after) {
  std::set<std::vector<std::optional<std::string>>> left;
  for (const ReadableRow& row : after) {
    left.insert(row.values);
  }
  Rows missing;
  for (const ReadableRow& row : before) {
    if (left.count(row.values) == 0 && (row.Complete() || !Holds(after, row))) {
      missing.push_back(row);
    }
  }
  return missing;
}

Rows NamedByRules(const std::string& table, const Rows& rows, const std::vector<Statement>& statements,
                  std::uint32_t size_mb) {
  for (const CleanedTable& cleaned : CleanedTables()) {
    if (cleaned.table == table) {
      return TableRules(cleaned, statements, size_mb).Named(rows);
    }
  }
  return {};
}

std::vector<std::string> Lost(const ReadableTables& before, const ReadableTables& after,
                              const std::vector<Statement>& statements, std::uint32_t size_mb) {
  std::vector<std::string> lost;
  for (const auto& [table, rows] : before) {
    const auto left = after.find(table);
    const Rows missing = Missing(rows, left != after.end() ? left->second : Rows());
    const Rows named = missing.empty() ? Rows() : NamedByRules(table, rows, statements, size_mb);
    for (const ReadableRow& row : missing) {
      if (!Holds(named, row)) {
        lost.push_back(table + " " + std::to_string(row.key));
      }
    }
  }
  return lost;
}

Outcome::End End(const telemetry::common::Error& result) {
  constexpr std::int64_t kPrimaryCode = 0xFF;
  constexpr std::int64_t kCorrupt = 11;
  constexpr std::int64_t kNotADatabase = 26;
  const std::int64_t code = result.code & kPrimaryCode;
  if (!result.Failed()) {
    return Outcome::End::kCleaned;
  }
  return code == kCorrupt || code == kNotADatabase ? Outcome::End::kRefusedAsDamaged : Outcome::End::kFailedOtherwise;
}

/// A folder that exists while the object lives, with a copy of the image and a note on how it was made.
class WorkingCopy {
 public:
  WorkingCopy(const DamagedImage& image, std::filesystem::path folder) : folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
    image.files.Write(DatabaseFile(folder_));
    std::ofstream(folder_ / "how.txt") << image.base->name << ": " << image.description << '\n';
  }
  WorkingCopy(const WorkingCopy&) = delete;
  WorkingCopy& operator=(const WorkingCopy&) = delete;
  ~WorkingCopy() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  [[nodiscard]] const std::filesystem::path& Folder() const { return folder_; }

 private:
  std::filesystem::path folder_;
};

}  // namespace

Outcome CleanDamaged(const DamagedImage& image, const std::filesystem::path& folder) {
  const WorkingCopy cleaned(image, folder / "cleaned");
  const StatementLog statements;
  const telemetry::common::Error result = CleanFolder(cleaned.Folder());
  Outcome outcome{End(result), result.what, {}};
  const std::filesystem::path file = DatabaseFile(cleaned.Folder());
  // What SQLite makes of a wild pointer depends on its memory: the same bytes are the same rows.
  if (Image::Read(file) != image.files) {
    const WorkingCopy before(image, folder / "before");
    const std::filesystem::path copy = DatabaseFile(before.Folder());
    outcome.lost = Lost(ReadTables(copy, Expired(), kLargestKey), ReadTables(file, Expired(), kLargestKey),
                        statements.All(), MeasuredSize(copy));
  }
  return outcome;
}

}  // namespace corvo::test
