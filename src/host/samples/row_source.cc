#include "host/samples/row_source.h"

#include <fmt/core.h>
#include <google/protobuf/descriptor.h>

#include <array>

#include "common/timestamp.h"
#include "host/show/time_text.h"

namespace corvo::telemetry::host {
namespace {

using google::protobuf::FieldDescriptor;

constexpr std::array kWords = {"amber", "balanced", "cold",  "docked",  "idle",    "internal", "left",  "main",
                               "north", "primary",  "quiet", "resumed", "standby", "turbo",    "upper", "warm"};

bool Contains(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

const char* SqlType(const FieldDescriptor& field) {
  switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING:
      return "TEXT";
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return "REAL";
    default:
      return "INTEGER";
  }
}

// The tables of one run differ from each other, too.
std::uint64_t TableSeed(const std::string& table, std::uint64_t seed) {
  for (const char letter : table) {
    seed = seed * 31 + static_cast<unsigned char>(letter);
  }
  return seed;
}

}  // namespace

std::vector<ColumnPlan> ColumnsOf(const google::protobuf::Descriptor& type) {
  std::vector<ColumnPlan> columns;
  columns.reserve(static_cast<std::size_t>(type.field_count()));
  for (int index = 0; index < type.field_count(); ++index) {
    columns.push_back({type.field(index)->name(), SqlType(*type.field(index))});
  }
  return columns;
}

RowSource::RowSource(const TablePlan& plan, std::int64_t now, std::uint64_t seed)
    : plan_(plan), now_(now), random_(TableSeed(plan.table, seed)) {}

std::vector<Value> RowSource::Row(std::int64_t index) {
  const std::int64_t first = now_ - plan_.span_s;
  const std::int64_t start = first + plan_.span_s * index / plan_.rows;
  const std::int64_t end = first + plan_.span_s * (index + 1) / plan_.rows;
  return RowOf(start + Below(end - start));
}

std::vector<Value> RowSource::RowOf(std::int64_t time) {
  std::vector<Value> values = {TimeText(time)};
  for (int field = 1; field < plan_.type->field_count(); ++field) {
    values.push_back(MakeValue(*plan_.type->field(field), time));
  }
  return values;
}

std::int64_t RowSource::Below(std::int64_t bound) {
  return bound < 2 ? 0 : static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(bound));
}

Value RowSource::MakeValue(const FieldDescriptor& field, std::int64_t time) {
  switch (field.cpp_type()) {
    case FieldDescriptor::CPPTYPE_STRING:
      return MakeText(field.name());
    case FieldDescriptor::CPPTYPE_DOUBLE:
      return MakeReal(field.name());
    case FieldDescriptor::CPPTYPE_BOOL:
      return Below(2);
    default:
      return MakeNumber(field.name(), time);
  }
}

std::string RowSource::MakeText(const std::string& field) {
  std::string text;
  if (Contains(field, "version")) {
    // One by one: compilers differ in the order in which they evaluate arguments.
    const std::int64_t patch = Below(1000);
    const std::int64_t minor = Below(30);
    const std::int64_t major = Below(10);
    text = fmt::format("{}.{}.{}", major, minor, patch);
  } else if (Contains(field, "_id") || Contains(field, "serial")) {
    text = fmt::format("{:08X}", Below(4'294'967'296));
  } else {
    text = kWords.at(static_cast<std::size_t>(Below(kWords.size())));
  }
  while (text.size() < plan_.text_length) {
    text += fmt::format(" {}", kWords.at(static_cast<std::size_t>(Below(kWords.size()))));
  }
  return text;
}

std::int64_t RowSource::MakeNumber(const std::string& field, std::int64_t time) {
  if (Contains(field, "_at") || Contains(field, "_start")) {
    return time - Below(common::kSecondsPerDay);
  }
  return Below(Contains(field, "percent") ? 101 : 100'000);
}

double RowSource::MakeReal(const std::string& field) {
  const std::int64_t tenths = Contains(field, "percent") ? Below(1001) : 200 + Below(700);
  return static_cast<double>(tenths) / 10;
}

}  // namespace corvo::telemetry::host
