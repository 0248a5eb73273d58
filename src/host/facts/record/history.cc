#include "host/facts/record/history.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "host/facts/record/history_line.h"
#include "host/platform/durable_file.h"

namespace corvo::telemetry::host {
namespace {

constexpr std::size_t kMostBytes = 1'000'000;
constexpr std::size_t kMostBytesRead = 4 * kMostBytes;  // of a file that is longer than any that was written here

/// The lines of the file, read by nobody yet.
std::vector<std::string> ReadLines(const std::filesystem::path& directory) {
  const std::string content = ReadOwnFile(directory / kHistoryFile, kMostBytesRead).value_or("");
  std::vector<std::string> lines;
  for (std::string_view rest = content; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    lines.emplace_back(line);
  }
  return lines;
}

/// The newest always stays.
std::vector<std::string>::const_iterator FirstThatStays(const std::vector<std::string>& lines) {
  auto first = lines.end() - 1;
  for (std::size_t bytes = first->size() + 1; first != lines.begin(); --first) {
    bytes += std::prev(first)->size() + 1;
    if (bytes > kMostBytes || static_cast<std::size_t>(lines.end() - first) == kMostRuns) {
      break;
    }
  }
  return first;
}

/// What the reasons of a run come to, in one line.
std::string ResultOf(const RunReport& report) {
  if (report.signal != 0) {
    return "interrupted";
  }
  for (const DatabaseReport& database : report.databases) {
    if (database.problem) {
      return database.name + ": " + database.problem->reason;
    }
  }
  const common::Error result = report.Result();
  return result.Failed() && result.what.empty() ? "the pass failed" : result.what;
}

}  // namespace

Deleted RunRecord::DeletedRows() const {
  Deleted sum;
  for (const DatabaseRecord& database : databases) {
    for (const TableRecord& table : database.tables) {
      sum.Add(table.deleted);
    }
  }
  return sum;
}

std::int64_t RunRecord::BytesFreed() const {
  std::int64_t sum = 0;
  for (const DatabaseRecord& database : databases) {
    sum += database.bytes_before - database.bytes_after;
  }
  return sum;
}

RunRecord RecordOf(const RunReport& report) {
  RunRecord run{.seconds = report.Seconds(), .result = ResultOf(report), .signal = report.signal};
  for (const DatabaseReport& database : report.databases) {
    DatabaseRecord record{.name = database.name,
                          .problem = database.problem ? database.problem->reason : "",
                          .bytes_before = database.bytes_before,
                          .bytes_after = database.bytes_after,
                          .compaction_seconds = database.compaction_seconds};
    for (const TableReport& table : database.tables) {
      record.tables.push_back({.table = table.table,
                               .rows_before = table.rows_before,
                               .rows_after = table.rows_after,
                               .deleted = table.deleted,
                               .last_rowid = table.last_rowid,
                               .seconds = table.seconds});
    }
    run.databases.push_back(std::move(record));
  }
  return run;
}

// Lines that are no record go with their age like the others: reading them all would be a good part of a small run.
void AddToHistory(const std::filesystem::path& directory, const RunRecord& run) {
  std::vector<std::string> lines = ReadLines(directory);
  lines.push_back(HistoryLine(run));
  std::string content;
  for (auto line = FirstThatStays(lines); line != lines.end(); ++line) {
    content += *line + "\n";
  }
  ReplaceOwnFile(directory / kHistoryFile, content);
}

std::vector<RunRecord> ReadHistory(const std::filesystem::path& directory) {
  std::vector<RunRecord> runs;
  for (const std::string& line : ReadLines(directory)) {
    if (auto run = ReadHistoryLine(line)) {
      runs.push_back(*std::move(run));
    }
  }
  return runs;
}

}  // namespace corvo::telemetry::host
