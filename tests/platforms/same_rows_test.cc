#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <sstream>

#include "cleanup/data_cleanup.h"
#include "host/cli/commands.h"
#include "storage/storage_options.h"
#include "support/database.h"
#include "support/fake_clock.h"
#include "support/temp_dir.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kFnvStart = 14'695'981'039'346'656'037U;
constexpr std::uint64_t kFnvPrime = 1'099'511'628'211U;

/// FNV-1a over all values of a table, in rowid order.
std::uint64_t Digest(Database& database, const std::string& table) {
  std::uint64_t digest = kFnvStart;
  for (const Row& row : database.Query("SELECT rowid, * FROM " + table + " ORDER BY rowid")) {
    for (const std::string& value : row) {
      for (const char c : value + '\n') {
        digest = (digest ^ static_cast<unsigned char>(c)) * kFnvPrime;
      }
    }
  }
  return digest;
}

/// A line for each table: database, table, number of rows, digest of the rows.
std::vector<std::string> Dump(const fs::path& directory) {
  std::vector<std::string> lines;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    Database database(entry.path());
    for (const Row& table : database.Query("SELECT name FROM sqlite_schema WHERE type = 'table'")) {
      std::ostringstream line;
      line << entry.path().stem().string() << ' ' << table[0] << ' ' << database.Count(table[0]) << ' ' << std::hex
           << Digest(database, table[0]);
      lines.push_back(line.str());
    }
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::vector<std::string> Lines(const std::string& file) {
  std::vector<std::string> lines;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

void Write(const std::vector<std::string>& lines, const std::string& file) {
  std::ofstream stream(file, std::ios::binary);
  for (const std::string& line : lines) {
    stream << line << '\n';
  }
}

// The file was written by this test on Linux; a deliberate change of rules, limits, contracts or generator changes it.
TEST(SameRows, AreLeftByAPassOverTheSameDatabasesOnEveryPlatform) {
  const TempDir directory;
  const FakeClock clock(FakeClock::kStart);
  telemetry::host::GenerateCommand({.data_dir = directory.Path().string(), .seed = 7, .now = "2024-05-02"});
  const std::vector<std::string> before = Dump(directory.Path());
  shared::SetDataDirectory(directory.Path().string());

  DataCleanup collector;
  ASSERT_EQ(telemetry::common::ErrorText(collector.ReadSource()), R"({"category":"EC_NoError","code":0,"version":3})");
  shared::SetDataDirectory("");

  const std::vector<std::string> after = Dump(directory.Path());
  EXPECT_NE(after, before);
  Write(after, CORVO_ROWS_FOUND);
  EXPECT_EQ(after, Lines(CORVO_ROWS_LEFT)) << "when this is meant, copy " << CORVO_ROWS_FOUND << " over it";
}

}  // namespace
}  // namespace corvo::test
