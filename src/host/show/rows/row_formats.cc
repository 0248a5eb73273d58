#include "host/show/rows/row_formats.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "common/text.h"
#include "host/show/units.h"

namespace corvo::telemetry::host {
namespace {

double RealOf(const Cell& cell) { return std::strtod(cell.text.c_str(), nullptr); }

const char* NameOfInfinity(double value) { return value < 0 ? "-Infinity" : "Infinity"; }

std::string CsvField(const std::string& text, bool quoted, Reader reader) {
  std::string safe = reader == Reader::kTerminal ? Printable(text) : common::ValidUtf8(text);
  if (!quoted && safe.find_first_of(",\"\r\n") == std::string::npos) {
    return safe;
  }
  std::string field = "\"";
  for (const char letter : safe) {
    field += letter == '"' ? "\"\"" : std::string(1, letter);
  }
  return field + "\"";
}

}  // namespace

Json CellJson(const Cell& cell) {
  switch (cell.type) {
    case Cell::Type::kInteger:
      return static_cast<std::int64_t>(std::strtoll(cell.text.c_str(), nullptr, 10));
    case Cell::Type::kReal:
      return std::isfinite(RealOf(cell)) ? Json(RealOf(cell)) : Json{{"real", NameOfInfinity(RealOf(cell))}};
    case Cell::Type::kText:
      return cell.text;
    case Cell::Type::kBlob:
      return {{"blob", cell.text}};
    case Cell::Type::kNull:
      break;
  }
  return nullptr;
}

Json RowJson(const std::vector<std::string>& columns, const Cells& row) {
  Json json = Json::object();
  for (std::size_t column = 0; column < row.size(); ++column) {
    json[columns.at(column)] = CellJson(row[column]);
  }
  return json;
}

std::string RowJsonLine(const std::vector<std::string>& columns, const Cells& row) {
  return JsonLine(RowJson(columns, row)) + "\n";
}

std::string CsvHead(const std::vector<std::string>& columns, Reader reader) {
  std::string line;
  for (const std::string& column : columns) {
    line += (line.empty() ? "" : ",") + CsvField(column, false, reader);
  }
  return line + "\r\n";
}

std::string CsvLine(const Cells& row, Reader reader) {
  std::string line;
  bool first = true;
  for (const Cell& cell : row) {
    line += first ? "" : ",";
    first = false;
    if (cell.type == Cell::Type::kText) {
      line += CsvField(cell.text, cell.text.empty(), reader);
    } else if (cell.type != Cell::Type::kNull) {
      line += CellText(cell);  // digits
    }
  }
  return line + "\r\n";
}

std::string CellText(const Cell& cell) {
  switch (cell.type) {
    case Cell::Type::kNull:
      return "NULL";
    case Cell::Type::kReal:
      return std::isfinite(RealOf(cell)) ? Json(RealOf(cell)).dump() : NameOfInfinity(RealOf(cell));
    case Cell::Type::kBlob:
      return "X'" + cell.text + "'";
    default:
      return cell.text;
  }
}

}  // namespace corvo::telemetry::host
