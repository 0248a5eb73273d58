#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace corvo::test {

/// A row as far as some plain SELECT returns it.
struct ReadableRow {
  std::int64_t key = 0;
  bool expired = false;                            ///< its time lies before the cutoff
  std::vector<std::optional<std::string>> values;  ///< type and bytes; none where the column cannot be read

  /// Whether every value that can be read is the same in the other row.
  [[nodiscard]] bool FoundIn(const ReadableRow& other) const;
  [[nodiscard]] bool Complete() const;
};

using ReadableTables = std::map<std::string, std::vector<ReadableRow>>;

/// Reads whatever can be read of a database, over SQLite as it comes: each table from its first row on, from its last
/// row back if that breaks off, then key by key up to `largest_key`, then column by column. May roll back a journal, so
/// the file must be a copy. A database that cannot be read at all has no tables.
///
/// @param expired by table: the condition under which a row has expired, in SQL.
[[nodiscard]] ReadableTables ReadTables(const std::filesystem::path& file,
                                        const std::map<std::string, std::string>& expired, std::int64_t largest_key);

}  // namespace corvo::test
