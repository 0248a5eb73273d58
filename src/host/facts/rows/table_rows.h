#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "storage/telemetry_storage.h"

namespace corvo::telemetry::host {

/// A value of a row with its type.
struct Cell {
  enum class Type { kNull, kInteger, kReal, kText, kBlob };

  Type type = Type::kNull;
  std::string text = {};  ///< the bytes of a text, the digits of a number, a blob in hexadecimal digits
};

/// The values of a row, in the order of the columns.
using Cells = std::vector<Cell>;

/// Reads the rows of one table by age, as it was when the reading began. Age is the order of rowids, as the rules have
/// it. Opened for reading when the storage's options in force say so. One thread.
class TableRows {
 public:
  struct Request {
    std::filesystem::path file;
    std::string table;
    bool oldest_first = false;
    std::size_t longest_text = 0;  ///< characters, or bytes of a blob, that are read of each value; 0: all
  };

  /// @throws std::runtime_error, as `Next` does, with the reason for people: when the file cannot be read, or there is
  /// no such table, or it is no ordinary one whose rows have an age.
  explicit TableRows(Request request);

  /// "rowid", unless the table has a column of that name, and the table's columns.
  [[nodiscard]] const std::vector<std::string>& Columns() const { return columns_; }

  /// The next rows; none after the last. Fewer than `most` are no sign of the end.
  [[nodiscard]] std::vector<Cells> Next(std::size_t most);

 private:
  [[nodiscard]] shared::Rows Ask(const std::string& sql, const std::string& less = "");
  void RefuseWhatHasNoAge();
  void ReadColumns();
  [[nodiscard]] std::string NextStatement(std::size_t most) const;
  [[nodiscard]] std::string Selection() const;
  [[nodiscard]] std::string ValueOf(const std::string& column) const;

  Request request_;
  shared::TelemetryStorage storage_;
  shared::SqlCommand* command_ = nullptr;  ///< the storage's; used again, so that it keeps one result alone
  std::vector<std::string> columns_;
  std::string selection_;
  std::optional<std::int64_t> last_rowid_;
};

}  // namespace corvo::telemetry::host
