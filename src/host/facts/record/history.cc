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

// The file is written anew when it holds a quarter more than what is kept, so that this is seldom.
constexpr std::size_t kMostBytesInFile = kMostBytes / 4 * 5;
constexpr std::size_t kMostRunsInFile = kMostRuns / 4 * 5;

using Lines = std::vector<std::string>;

std::string ReadFile(const std::filesystem::path& directory) {
  return ReadOwnFile(directory / kHistoryFile, kMostBytesRead).value_or("");
}

Lines LinesOf(const std::string& content) {
  Lines lines;
  for (std::string_view rest = content; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    lines.emplace_back(line);
  }
  return lines;
}

/// The newest always stays.
Lines::const_iterator FirstThatStays(const Lines& lines) {
  if (lines.empty()) {
    return lines.end();
  }
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
                          .compaction_seconds = database.compaction_seconds,
                          .compacted_bytes = database.compacted_bytes,
                          .not_compacted = database.not_compacted ? database.not_compacted->reason : ""};
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
  const std::filesystem::path file = directory / kHistoryFile;
  const std::string former = ReadFile(directory);
  Lines lines = LinesOf(former);
  const std::string line = HistoryLine(run);
  const bool torn = !former.empty() && former.back() != '\n';
  const bool has_room = lines.size() < kMostRunsInFile && former.size() + line.size() < kMostBytesInFile;
  if (!torn && has_room && AppendToOwnFile(file, line + "\n")) {
    return;
  }
  lines.push_back(line);
  std::string content;
  for (auto kept = FirstThatStays(lines); kept != lines.end(); ++kept) {
    content += *kept + "\n";
  }
  ReplaceOwnFile(file, content);
}

std::vector<RunRecord> ReadHistory(const std::filesystem::path& directory) {
  const Lines lines = LinesOf(ReadFile(directory));
  std::vector<RunRecord> runs;
  for (auto line = FirstThatStays(lines); line != lines.end(); ++line) {
    if (auto run = ReadHistoryLine(*line)) {
      runs.push_back(*std::move(run));
    }
  }
  return runs;
}

}  // namespace corvo::telemetry::host
