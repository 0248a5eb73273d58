#pragma once

#include <string>
#include <vector>

#include "host/facts/rows/table_rows.h"
#include "host/show/json_text.h"

namespace corvo::telemetry::host {

// Rows of a table for programs. What is no UTF-8 in them is replaced by U+FFFD.

/// The value in JSON: null, a number, a text; {"blob": "00ff"} for bytes, and {"real": "Infinity"} for a number that
/// JSON has none for. Integers keep all their digits, which not every reader of JSON does.
[[nodiscard]] Json CellJson(const Cell& cell);

/// An object with a member for each column.
[[nodiscard]] Json RowJson(const std::vector<std::string>& columns, const Cells& row);

/// A line of JSON.
[[nodiscard]] std::string RowJsonLine(const std::vector<std::string>& columns, const Cells& row);

/// Whoever reads the CSV, which has no escapes. A terminal gets nothing that could speak to it.
enum class Reader { kProgram, kTerminal };

/// A line of CSV (RFC 4180): the columns' names.
[[nodiscard]] std::string CsvHead(const std::vector<std::string>& columns, Reader reader);

/// A line of CSV. NULL is nothing at all, an empty text is "", a blob is X'00ff'.
[[nodiscard]] std::string CsvLine(const Cells& row, Reader reader);

/// The number, text or blob as a person reads it: NULL as "NULL", a blob as X'00ff', a text as it is.
[[nodiscard]] std::string CellText(const Cell& cell);

}  // namespace corvo::telemetry::host
