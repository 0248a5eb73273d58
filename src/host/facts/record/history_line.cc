#include "host/facts/record/history_line.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "common/text.h"

namespace corvo::telemetry::host {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::int64_t kVersion = 1;
constexpr std::size_t kLongestText = 500;      // a message can hold whatever a file does
constexpr std::size_t kLongestLine = 100'000;  // no run of this catalogue comes near

// No count of rows or bytes of this world, so small that sums of them fit their type.
constexpr std::int64_t kMostOfAnything = 1'000'000'000'000'000;
constexpr double kFastest = 1e15;
constexpr std::int64_t kEndOfTime = 253'402'300'799;  // of the year 9999

std::string Shortened(const std::string& text) { return common::ValidUtf8(text.substr(0, kLongestText)); }

template <class Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json ToJson(const TableRecord& table) {
  return {{"table", table.table},
          {"rows_before", OrNull(table.rows_before)},
          {"rows_after", OrNull(table.rows_after)},
          {"expired", table.deleted.expired},
          {"row_limit", table.deleted.row_limit},
          {"size_limit", table.deleted.size_limit},
          {"last_rowid", OrNull(table.last_rowid)},
          {"seconds", table.seconds}};
}

Json ToJson(const DatabaseRecord& database) {
  Json tables = Json::array();
  for (const TableRecord& table : database.tables) {
    tables.push_back(ToJson(table));
  }
  return {{"name", database.name},
          {"problem", Shortened(database.problem)},
          {"bytes_before", database.bytes_before},
          {"bytes_after", database.bytes_after},
          {"compaction_seconds", database.compaction_seconds},
          {"compacted_bytes", database.compacted_bytes},
          {"not_compacted", Shortened(database.not_compacted)},
          {"tables", std::move(tables)}};
}

// Reading: anything may stand there, and what is no record throws.

std::int64_t Number(const Json& object, const char* name, std::int64_t lowest, std::int64_t highest) {
  const Json& member = object.at(name);
  const bool is_number = member.is_number_unsigned() ? member.get<std::uint64_t>() <= std::uint64_t{INT64_MAX}
                                                     : member.is_number_integer();
  const std::int64_t number = is_number ? member.get<std::int64_t>() : 0;
  if (!is_number || number < lowest || number > highest) {
    throw std::out_of_range(name);
  }
  return number;
}

std::int64_t Count(const Json& object, const char* name) { return Number(object, name, 0, kMostOfAnything); }

template <class Read>
std::optional<std::int64_t> UnlessNull(const Json& object, const char* name, const Read& read) {
  return object.at(name).is_null() ? std::nullopt : std::optional<std::int64_t>(read(object, name));
}

std::int64_t Rowid(const Json& object, const char* name) { return Number(object, name, INT64_MIN, INT64_MAX); }

double Seconds(const Json& object, const char* name) {
  return std::clamp(object.at(name).get<double>(), 0.0, static_cast<double>(kEndOfTime));
}

TableRecord ReadTable(const Json& object) {
  return {.table = object.at("table").get<std::string>(),
          .rows_before = UnlessNull(object, "rows_before", &Count),
          .rows_after = UnlessNull(object, "rows_after", &Count),
          .deleted = {.expired = Count(object, "expired"),
                      .row_limit = Count(object, "row_limit"),
                      .size_limit = Count(object, "size_limit")},
          .last_rowid = UnlessNull(object, "last_rowid", &Rowid),
          .seconds = Seconds(object, "seconds")};
}

DatabaseRecord ReadDatabase(const Json& object) {
  DatabaseRecord database{.name = object.at("name").get<std::string>(),
                          .problem = object.at("problem").get<std::string>(),
                          .bytes_before = Count(object, "bytes_before"),
                          .bytes_after = Count(object, "bytes_after"),
                          .compaction_seconds = Seconds(object, "compaction_seconds")};
  // Lines of former releases have neither, nor what the run says of compaction.
  if (object.contains("compacted_bytes")) {
    database.compacted_bytes = Count(object, "compacted_bytes");
    database.not_compacted = object.at("not_compacted").get<std::string>();
  }
  for (const Json& table : object.at("tables")) {
    database.tables.push_back(ReadTable(table));
  }
  return database;
}

RunRecord ReadRun(const Json& object) {
  static_cast<void>(Number(object, "version", kVersion, kVersion));
  RunRecord run{.start = Number(object, "start", 0, kEndOfTime),
                .end = Number(object, "end", 0, kEndOfTime),
                .seconds = Seconds(object, "seconds"),
                .result = object.at("result").get<std::string>(),
                .signal = static_cast<int>(Number(object, "signal", 0, 255))};
  if (object.contains("compaction_rate")) {
    run.compaction_rate = std::clamp(object.at("compaction_rate").get<double>(), 0.0, kFastest);
    run.compaction_optional = object.at("compaction_optional").get<bool>();
  }
  for (const Json& database : object.at("databases")) {
    run.databases.push_back(ReadDatabase(database));
  }
  return run;
}

}  // namespace

std::string HistoryLine(const RunRecord& run) {
  Json databases = Json::array();
  for (const DatabaseRecord& database : run.databases) {
    databases.push_back(ToJson(database));
  }
  const Json record = {{"version", kVersion},
                       {"start", run.start},
                       {"end", run.end},
                       {"seconds", run.seconds},
                       {"result", Shortened(run.result)},
                       {"signal", run.signal},
                       {"compaction_rate", run.compaction_rate},
                       {"compaction_optional", run.compaction_optional},
                       {"databases", std::move(databases)}};
  return record.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<RunRecord> ReadHistoryLine(std::string_view line) {
  if (line.size() > kLongestLine) {
    return std::nullopt;
  }
  try {
    return ReadRun(Json::parse(line));
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace corvo::telemetry::host
