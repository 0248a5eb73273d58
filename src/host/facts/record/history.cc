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

struct Entry {
  std::string line;
  RunRecord run;
};

// The file is written anew when it holds a quarter more than what is kept, so that this is seldom.
constexpr std::size_t kMostBytesInFile = kMostBytes / 4 * 5;
constexpr std::size_t kMostRunsInFile = kMostRuns / 4 * 5;

std::string ReadFile(const std::filesystem::path& directory) {
  return ReadOwnFile(directory / kHistoryFile, kMostBytesRead).value_or("");
}

std::vector<Entry> EntriesOf(const std::string& content) {
  std::vector<Entry> entries;
  for (std::string_view rest = content; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    if (auto run = ReadHistoryLine(line)) {
      entries.push_back({std::string(line), *std::move(run)});
    }
  }
  return entries;
}

/// The newest always stays.
std::vector<Entry>::const_iterator FirstThatStays(const std::vector<Entry>& entries) {
  if (entries.empty()) {
    return entries.end();
  }
  auto first = entries.end() - 1;
  for (std::size_t bytes = first->line.size() + 1; first != entries.begin(); --first) {
    bytes += std::prev(first)->line.size() + 1;
    if (bytes > kMostBytes || static_cast<std::size_t>(entries.end() - first) == kMostRuns) {
      break;
    }
  }
  return first;
}

std::string Joined(std::vector<Entry>::const_iterator first, std::vector<Entry>::const_iterator end) {
  std::string content;
  for (; first != end; ++first) {
    content += first->line + "\n";
  }
  return content;
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

void AddToHistory(const std::filesystem::path& directory, const RunRecord& run) {
  const std::filesystem::path file = directory / kHistoryFile;
  const std::string former = ReadFile(directory);
  std::vector<Entry> entries = EntriesOf(former);
  const std::string line = HistoryLine(run);
  // With a torn line, or one that is no record, the file is not what its records come to.
  const bool all_records = Joined(entries.begin(), entries.end()) == former;
  const bool has_room = entries.size() < kMostRunsInFile && former.size() + line.size() < kMostBytesInFile;
  if (all_records && has_room && AppendToOwnFile(file, line + "\n")) {
    return;
  }
  entries.push_back({line, {}});
  ReplaceOwnFile(file, Joined(FirstThatStays(entries), entries.end()));
}

std::vector<RunRecord> ReadHistory(const std::filesystem::path& directory) {
  const std::vector<Entry> entries = EntriesOf(ReadFile(directory));
  std::vector<RunRecord> runs;
  for (auto entry = FirstThatStays(entries); entry != entries.end(); ++entry) {
    runs.push_back(entry->run);
  }
  return runs;
}

}  // namespace corvo::telemetry::host
