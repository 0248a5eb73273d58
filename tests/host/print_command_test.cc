#include <gmock/gmock.h>

#include <sstream>

#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Words = std::vector<std::string>;

/// Rows that a test writes into the table of the catalogue that Cache.db has.
class PrintCommand : public RunTest {
 protected:
  void SetUp() override { std::filesystem::create_directory(data_); }

  /// @param rows as SQL values, from the oldest on.
  void Write(const std::string& columns, const std::string& rows) {
    Database database(File("Cache.db"));
    database.Run("CREATE TABLE CollectorCache (" + columns + ")");
    if (!rows.empty()) {
      database.Run("INSERT INTO CollectorCache VALUES " + rows);
    }
  }

  [[nodiscard]] HostRun PrintIt(const Words& more = {}) const {
    Words words = {"print", "collectorcache", "--data-dir", data_};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }
};

TEST_F(PrintCommand, ShowsTheNewestTenRowsFirst) {
  Write("time TEXT", "");
  Database(File("Cache.db"))
      .Run(
          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 25) INSERT INTO CollectorCache "
          "SELECT 'row ' || i FROM n");
  const HostRun run = PrintIt();
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(run.out, StartsWith("rowid  time\n   25  row 25\n   24  row 24\n"));
  EXPECT_THAT(run.out, HasSubstr("\n   16  row 16\n\nThe newest 10 rows of CollectorCache in Cache.db.\n"));
}

TEST_F(PrintCommand, ShowsTheOldestRowsOnRequest) {
  Write("time TEXT", "('a'), ('b'), ('c')");
  EXPECT_THAT(PrintIt({"--oldest", "--limit", "2"}).out,
              StartsWith("rowid  time\n    1  a\n    2  b\n\nThe oldest 2 rows of CollectorCache in Cache.db.\n"));
}

TEST_F(PrintCommand, SaysWhenThatIsAll) {
  Write("time TEXT", "('a'), ('b')");
  EXPECT_THAT(PrintIt().out, HasSubstr("All 2 rows of CollectorCache in Cache.db, newest first.\n"));
}

TEST_F(PrintCommand, OfATableWithoutRowsSaysSo) {
  Write("time TEXT", "");
  EXPECT_EQ(PrintIt().out, "CollectorCache in Cache.db has no rows.\n");
  EXPECT_EQ(PrintIt({"--format", "csv"}).out, "rowid,time\r\n");
  EXPECT_EQ(PrintIt({"--format", "jsonl"}).out, "");
  EXPECT_EQ(PrintIt({"--json"}).Json()["rows"], nlohmann::json::array());
}

TEST_F(PrintCommand, KeepsTypesInItsDocument) {
  Write("time TEXT, value",
        "('t', NULL), ('t', 9007199254740993), ('t', 0.1), ('t', 9e999), ('t', 'text'), ('t', x'00ff')");
  const nlohmann::json document = PrintIt({"--json", "--oldest"}).Json();
  EXPECT_EQ(document["table"], "CollectorCache");
  EXPECT_EQ(document["database"], "Cache");
  EXPECT_EQ(document["columns"], nlohmann::json({"rowid", "time", "value"}));
  std::vector<nlohmann::json> values;
  for (const auto& row : document["rows"]) {
    values.push_back(row["value"]);
  }
  EXPECT_EQ(values, (std::vector<nlohmann::json>{
                        nullptr, 9007199254740993, 0.1, {{"real", "Infinity"}}, "text", {{"blob", "00FF"}}}));
}

TEST_F(PrintCommand, WritesAnObjectALine) {
  Write("time TEXT, value", "('a', -1e999), ('line\nbreak', 12)");
  EXPECT_EQ(PrintIt({"--format", "jsonl"}).out,
            "{\"rowid\":2,\"time\":\"line\\nbreak\",\"value\":12}\n"
            "{\"rowid\":1,\"time\":\"a\",\"value\":{\"real\":\"-Infinity\"}}\n");
}

// C1, DEL, a turn of the direction, a separator of lines.
TEST_F(PrintCommand, EscapesInJsonWhatCouldSpeakToATerminalAndNoLetter) {
  const std::string hostile =
      "\xc2\x9b"
      "31m\x7f\u202e\u2028 Ger\u00e4t \u65e5";
  Write("time TEXT, value", "('a', '" + hostile + "')");
  for (const std::vector<std::string>& form : {std::vector<std::string>{"--json"}, {"--format", "jsonl"}}) {
    const HostRun run = PrintIt(form);
    EXPECT_THAT(run.out, HasSubstr("\"\\u009b31m\\u007f\\u202e\\u2028 Ger\u00e4t \u65e5\""));
  }
  EXPECT_EQ(PrintIt({"--json"}).Json()["rows"][0]["value"], hostile);
  EXPECT_THAT(PrintIt({"--format", "csv"}).out, HasSubstr(hostile));
}

TEST_F(PrintCommand, WritesCsvThatSpreadsheetsRead) {
  Write("time TEXT, value", "('a,b', 'say \"yes\"'), ('', NULL), ('=1+1', x'0a')");
  EXPECT_EQ(PrintIt({"--format", "csv", "--oldest"}).out,
            "rowid,time,value\r\n1,\"a,b\",\"say \"\"yes\"\"\"\r\n2,\"\",\r\n3,=1+1,X'0A'\r\n");
}

TEST_F(PrintCommand, ReadsTextsWithZeroBytesAndWhatIsNoUtf8) {
  Write("time TEXT, value", "('a' || char(0) || 'b', CAST(x'41ff42' AS TEXT))");
  const nlohmann::json row = PrintIt({"--json"}).Json()["rows"][0];
  EXPECT_EQ(row["time"], std::string("a\0b", 3));
  EXPECT_EQ(row["value"],
            "A\xef\xbf\xbd"
            "B");
  EXPECT_THAT(PrintIt().out, HasSubstr("a\\x00b  A\\xffB"));
}

TEST_F(PrintCommand, NamesTheColumnsThatHaveNoPlace) {
  std::string columns = "time TEXT";
  std::string values = "'2024-05-01T00:00:00+00:00'";
  for (int number = 1; number <= 9; ++number) {
    columns += ", column_number_" + std::to_string(number);
    values += ", 'some longer text, which is cut before it takes all the place'";
  }
  Write(columns, "(" + values + ")");
  const HostRun run = PrintIt();
  EXPECT_THAT(run.out, HasSubstr("2024-05-01T00:00:00+00:00"));
  EXPECT_THAT(run.out, HasSubstr("columns left out: column_number_"));
  std::istringstream lines(run.out);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 80U + 3 * 2) << line;  // two marks of three bytes each stand for what was cut
  }
}

TEST_F(PrintCommand, CutsWithWhatTheReaderCanShow) {
  Write("time TEXT, value", "('2024-05-01T00:00:00+00:00', '" + std::string(100, 'x') + "')");
  for (const auto& [locale, end] : {std::pair("C", "x...\n"), std::pair("C.UTF-8", "x…\n")}) {
    EXPECT_THAT(RunHost({"print", "CollectorCache", "--data-dir", data_}, {std::string("LC_ALL=") + locale}).out,
                HasSubstr(end));
  }
}

TEST_F(PrintCommand, TellsARowidFromAColumnThatIsOne) {
  Write("rowid INTEGER PRIMARY KEY, time TEXT", "(7, 'a')");
  EXPECT_EQ(PrintIt({"--json"}).Json()["columns"], nlohmann::json({"rowid", "time"}));
}

struct Refused {
  const char* schema;
  const char* answer;
};

class PrintOfWhatIsNoTable : public PrintCommand, public testing::WithParamInterface<Refused> {};

TEST_P(PrintOfWhatIsNoTable, SaysWhyNot) {
  Database(File("Cache.db")).Run(GetParam().schema);
  const HostRun run = PrintIt();
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.err, HasSubstr("Cache.db: " + std::string(GetParam().answer)));
  EXPECT_EQ(PrintIt({"--json"}).Json()["result"]["code"], 1);
}

INSTANTIATE_TEST_SUITE_P(
    All, PrintOfWhatIsNoTable,
    testing::Values(
        Refused{"CREATE TABLE Other (a)", "it has no table CollectorCache"},
        Refused{"CREATE VIEW CollectorCache AS SELECT 1 AS time", "CollectorCache is a view"},
        Refused{"CREATE VIRTUAL TABLE CollectorCache USING fts5(time)", "CollectorCache is a virtual table"},
        Refused{"CREATE TABLE CollectorCache (time TEXT PRIMARY KEY) WITHOUT ROWID", "CollectorCache has no"},
        Refused{"CREATE TABLE CollectorCache (time TEXT, rowid)", "CollectorCache has an ordinary column"}));

TEST_F(PrintCommand, OfAMissingDatabaseSaysSo) {
  const HostRun run = PrintIt();
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.err, HasSubstr("there is no Cache.db in " + data_));
}

TEST_F(PrintCommand, ChangesNothingWhileACollectorWrites) {
  Write("time TEXT", "('a')");
  Database collector(File("Cache.db"));
  collector.Run(
      "PRAGMA journal_mode=WAL; INSERT INTO CollectorCache VALUES ('b'); BEGIN; INSERT INTO CollectorCache "
      "VALUES ('unfinished')");
  EXPECT_THAT(PrintIt().out, StartsWith("rowid  time\n    2  b\n    1  a\n"));
}

// More than one answer of the storage library holds.
TEST_F(PrintCommand, ReadsLargeRowsOneByOneUpToWhatADocumentHolds) {
  Write("time TEXT, value", "");
  Database(File("Cache.db"))
      .Run(
          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 14) INSERT INTO CollectorCache "
          "SELECT 'a', zeroblob(10000000) FROM n");
  const HostRun run = PrintIt({"--json", "--limit", "14"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.err, HasSubstr("too large for one document"));
}

TEST_F(PrintCommand, RefusesAFormatBesideItsDocument) {
  EXPECT_EQ(PrintIt({"--json", "--format", "csv"}).exit_code, 2);
  EXPECT_EQ(PrintIt({"--limit", "100001"}).exit_code, 2);
}

}  // namespace
}  // namespace corvo::test
