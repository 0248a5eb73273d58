#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "host/samples/database_writer.h"
#include "host/samples/generation_plan.h"

namespace google::protobuf {
class FieldDescriptor;
}

namespace corvo::telemetry::host {

/// The columns of a type's table, from its fields.
[[nodiscard]] std::vector<ColumnPlan> ColumnsOf(const google::protobuf::Descriptor& type);

/// Makes up the rows of one table, oldest first. The same seed gives the same rows on every platform.
class RowSource {
 public:
  /// @param now end of the time that the rows of `Row` cover, in seconds since 1970-01-01 UTC.
  RowSource(const TablePlan& plan, std::int64_t now, std::uint64_t seed);

  /// The values of the row with this index.
  [[nodiscard]] std::vector<Value> Row(std::int64_t index);

  /// The values of a row of this time, in seconds since 1970-01-01 UTC.
  [[nodiscard]] std::vector<Value> RowOf(std::int64_t time);

 private:
  std::int64_t Below(std::int64_t bound);
  Value MakeValue(const google::protobuf::FieldDescriptor& field, std::int64_t time);
  std::string MakeText(const std::string& field);
  std::int64_t MakeNumber(const std::string& field, std::int64_t time);
  double MakeReal(const std::string& field);

  TablePlan plan_;
  std::int64_t now_;
  // The standard fixes what this engine yields, but not what the standard distributions make of it.
  std::mt19937_64 random_;
};

}  // namespace corvo::telemetry::host
