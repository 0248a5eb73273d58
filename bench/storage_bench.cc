// Compares, on copies of one database: deletion under each mode of secure_delete, and compaction with and without its
// guard. Takes the number of rows (default 200,000) and of rounds (default 7).

#include <fmt/core.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "storage/storage_options.h"
#include "storage/telemetry_storage.h"

namespace {

namespace fs = std::filesystem;
using Task = std::function<void(const fs::path&)>;

void RunSql(const fs::path& file, const std::string& sql) {
  sqlite3* handle = nullptr;
  int code = sqlite3_open(file.string().c_str(), &handle);
  if (code == SQLITE_OK) {
    code = sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr);
  }
  const std::string message = sqlite3_errmsg(handle);
  sqlite3_close(handle);
  if (code != SQLITE_OK) {
    throw std::runtime_error(message);
  }
}

void CreateSample(const fs::path& file, int rows) {
  RunSql(file, fmt::format("CREATE TABLE Samples(time TEXT, a TEXT, b REAL);"
                           "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < {}) "
                           "INSERT INTO Samples SELECT datetime(i * 60, 'unixepoch'), hex(randomblob(60)), i FROM n;",
                           rows));
}

Task DeleteHalf(const std::string& mode) {
  return [mode](const fs::path& file) {
    RunSql(file,
           "PRAGMA secure_delete=" + mode + "; DELETE FROM Samples WHERE rowid <= (SELECT COUNT(*) / 2 FROM Samples);");
  };
}

Task Compact(bool guard) {
  return [guard](const fs::path& file) {
    corvo::shared::StorageOptions options;
    options.check_soundness = guard;
    corvo::shared::SetStorageOptions(options);
    corvo::shared::TelemetryStorage storage(file.string().c_str(), "");
    const auto error = storage.Execute(new corvo::shared::SqlCommand("VACUUM;"), false);
    if (error.Failed()) {
      throw std::runtime_error(error.what);
    }
  };
}

double Seconds(const Task& task, const fs::path& sample, const fs::path& copy) {
  fs::copy_file(sample, copy, fs::copy_options::overwrite_existing);
  const auto start = std::chrono::steady_clock::now();
  task(copy);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

/// Runs the tasks in turn, so that a slow moment of the machine meets all of them, and prints each against the first.
void Compare(const std::string& title, const std::vector<std::pair<std::string, Task>>& tasks, const fs::path& sample,
             int rounds) {
  const fs::path copy = sample.string() + ".copy";
  std::map<std::string, std::vector<double>> seconds;
  for (int round = 0; round < rounds; ++round) {
    for (const auto& [name, task] : tasks) {
      seconds[name].push_back(Seconds(task, sample, copy));
    }
  }
  fmt::print("{}\n", title);
  const double base = Median(seconds[tasks.front().first]);
  for (const auto& [name, task] : tasks) {
    const double median = Median(seconds[name]);
    fmt::print("  {:<8}{:8.1f} ms  x {:.2f}\n", name, median * 1000, median / base);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int rows = argc > 1 ? std::atoi(argv[1]) : 200'000;
  const int rounds = argc > 2 ? std::atoi(argv[2]) : 7;
  const fs::path directory = fs::temp_directory_path() / "corvo-storage-bench";
  fs::remove_all(directory);
  fs::create_directory(directory);
  const fs::path sample = directory / "Sample.db";
  try {
    CreateSample(sample, rows);
    fmt::print("{} rows, {:.1f} MB, medians of {} rounds\n", rows, static_cast<double>(fs::file_size(sample)) / 1e6,
               rounds);
    Compare("deleting half of the rows, secure_delete",
            {{"off", DeleteHalf("OFF")}, {"fast", DeleteHalf("FAST")}, {"on", DeleteHalf("ON")}}, sample, rounds);
    Compare("compaction, guard", {{"off", Compact(false)}, {"on", Compact(true)}}, sample, rounds);
  } catch (const std::exception& e) {
    fmt::print(stderr, "storage_bench: {}\n", e.what());
    return EXIT_FAILURE;
  }
  fs::remove_all(directory);
  return EXIT_SUCCESS;
}
