#include "host/show/status/status_text.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>

#include "host/show/text_table.h"

namespace corvo::telemetry::host {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr std::int64_t kNow = 1'714'608'000;

TableState Table(const std::string& name, std::int64_t rows) {
  TableState table{.contract = {.type = "",
                                .name = name,
                                .table = name,
                                .database = "",
                                .max_rows = 50'000,
                                .retention_days = 365,
                                .max_size_mb = 100,
                                .descriptor = nullptr}};
  table.rows = rows;
  table.oldest = kNow - 123'456'789;
  table.newest = kNow;
  table.rows_per_day = 12'345;
  table.days_to_row_limit = 1234.5;
  return table;
}

/// Everything that a database can say at once, in long words.
DatabaseState FullDatabase(const std::string& name) {
  DatabaseState database{.name = name, .path = name + ".db", .max_size_mb = 1000};
  database.file_bytes = 123'400'000;
  database.live_bytes = 123'300'000;
  database.free_bytes = 999'000;
  database.wal_bytes = 888'800;
  database.engine_mb = 4000;
  database.trim_factor = 3.1;
  for (int number = 0; number < 7; ++number) {
    TableState table = Table("StorageNVMEHealthLog" + std::to_string(number), 12'345'678);
    for (auto odd : {&TableState::no_time, &TableState::unreadable, &TableState::future, &TableState::ancient}) {
      table.*odd = {.rows = 123'456, .rowid = 1'234'567, .sample = std::string(100, 'x')};
    }
    table.next_pass = {.expired = 1'000'000, .row_limit = 2'000'000, .size_limit = 3'000'000};
    database.tables.push_back(table);
  }
  return database;
}

/// The lines that tell of the log of a database.
std::string TextWithLog(std::int64_t bytes) {
  DirectoryState state{.directory = "/data", .directory_source = "default", .now = kNow};
  state.databases = {
      {.name = "HealthLog", .path = "HealthLog.db", .file_bytes = 5'000'000, .wal_bytes = bytes, .page_bytes = 4'096}};
  return StatusText(state, false, {.width = 80});
}

TEST(StatusOfALog, TellsOfOneThatGrewFarBeyondWhatSqliteMakesIt) {
  EXPECT_THAT(TextWithLog(25'000'000), HasSubstr("HealthLog: the log holds 25.0 MB beside 5.0 MB: it grows while"));
}

TEST(StatusOfALog, SaysNothingOfAnOrdinaryOne) {
  EXPECT_THAT(TextWithLog(1'100 * 4'096), Not(HasSubstr("the log holds")));
}

DirectoryState FullDirectory() {
  DirectoryState state{.directory = "/data", .directory_source = "default", .now = kNow};
  for (const char* name : {"A", "B", "C", "D", "DeviceProfileEvents"}) {
    state.databases.push_back(FullDatabase(name));
  }
  return state;
}

std::vector<std::string> Lines(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

TEST(StatusText, FitsTheWidthWhateverThereIsToSay) {
  for (const std::size_t width : {80U, 100U, 200U}) {
    for (const bool all : {false, true}) {
      for (const std::string& line : Lines(StatusText(FullDirectory(), all, {.width = width, .blocks = true}))) {
        EXPECT_LE(TextWidth(line), width) << line;
      }
    }
  }
}

TEST(StatusText, FitsOneScreenForFiveDatabases) {
  DirectoryState state = FullDirectory();
  for (DatabaseState& database : state.databases) {
    database.trim_factor = 0;
  }
  EXPECT_LE(Lines(StatusText(state, false, {})).size(), 23U);
}

TEST(StatusText, ShowsEveryTableWhenAskedTo) {
  const std::string text = StatusText(FullDirectory(), true, {});
  for (const char* table : {"StorageNVMEHealthLog0", "StorageNVMEHealthLog6"}) {
    EXPECT_THAT(text, HasSubstr(table));
  }
  EXPECT_THAT(text, HasSubstr("No time, never expires: 123,456 rows; StorageNVMEHealthLog3 row 1234567: xxx"));
}

TEST(StatusText, ShowsThoseFirstThatComeNearestToALimit) {
  DirectoryState state{.directory = "/data", .directory_source = "default", .now = kNow};
  state.databases.push_back({.name = "A", .path = "A.db", .max_size_mb = 100});
  state.databases[0].tables = {Table("Low", 10), Table("High", 49'000)};
  for (TableState& table : state.databases[0].tables) {
    table.oldest = kNow;
  }
  state.databases[0].tables[0].oldest = kNow - 364 * 86'400;  // as it is wherever rows expire day by day
  const std::string text = StatusText(state, false, {});
  EXPECT_LT(text.find("High"), text.find("Low"));
  EXPECT_THAT(text, HasSubstr("49,000/50,000"));
  EXPECT_THAT(text, HasSubstr("A run now would delete nothing.\nAll is within its limits.\n"));
}

TEST(StatusText, CallsNothingWithinItsLimitsThatARunTakes) {
  DirectoryState state{.directory = "/data", .directory_source = "default", .now = kNow};
  state.databases.push_back({.name = "A", .path = "A.db", .max_size_mb = 100});
  state.databases[0].tables = {Table("Full", 46'000)};
  state.databases[0].tables[0].oldest = kNow;
  state.databases[0].tables[0].next_pass = {.row_limit = 1'000};
  const std::string text = StatusText(state, false, {.width = 200});
  EXPECT_THAT(text, Not(HasSubstr("All is within its limits")));
  EXPECT_THAT(text, HasSubstr("\nNothing needs attention: a run takes rows when they expire, and from nine tenths"));
}

TEST(StatusText, LetsNoSampleSpeakToTheTerminal) {
  DirectoryState state = FullDirectory();
  state.databases[0].tables[0].no_time.sample = "\x1b[2J\xff\n";
  const std::string text = StatusText(state, true, {.width = 120});
  EXPECT_THAT(text, Not(HasSubstr("\x1b")));
  EXPECT_THAT(text, HasSubstr(R"(\x1b[2J\xff\n)"));
}

TEST(StatusText, NamesWhatCannotBeReadOrCleanedAndWhatIsNotThere) {
  DirectoryState state = FullDirectory();
  state.databases[0].problem = Problem{Problem::Kind::kBusy, "another program holds it locked", {}};
  state.databases[1].tables[0].problem = "Boot is a view";
  state.databases[2].missing = true;
  for (const std::size_t unknown : {0U, 2U}) {
    state.databases[unknown].engine_mb = 0;
  }
  const std::string text = StatusText(state, false, {});
  EXPECT_THAT(text, HasSubstr("A cannot be read: another program holds it locked\n"));
  EXPECT_THAT(text, HasSubstr("B is left alone by runs: Boot is a view\n"));
  EXPECT_THAT(text, HasSubstr("Databases without a file, which is no failure: C\n"));
  EXPECT_THAT(text, HasSubstr("1 database not readable, 3 databases over the size limit"));
}

}  // namespace
}  // namespace corvo::telemetry::host
