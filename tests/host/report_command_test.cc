#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "host/run_fixture.h"
#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Report : public RunTest {
 protected:
  HostRun Write(const std::string& file, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> words = {"report", "--data-dir", data_, "--html", file};
    words.insert(words.end(), more.begin(), more.end());
    return RunHost(words);
  }

  static std::string Content(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
  }

  [[nodiscard]] std::size_t Entries() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_.Path()), fs::directory_iterator()));
  }

  void ExpectRefusal(const std::string& file, const char* reason) const {
    const HostRun run = Write(file);
    EXPECT_EQ(run.exit_code, 2) << run.err;
    EXPECT_THAT(run.err, HasSubstr(reason));
  }

  std::string page_ = folder_ / "page.html";
};

TEST_F(Report, WritesOnePageAndSaysWhich) {
  Generate();
  const HostRun run = Write(page_);
  EXPECT_EQ(run.exit_code, 0) << run.err;
  EXPECT_THAT(run.out, AllOf(HasSubstr("Wrote a page on the status"), HasSubstr("page.html")));
  EXPECT_THAT(Content(page_), AllOf(HasSubstr("<title>Status of the databases"), HasSubstr("CollectorCache")));
  EXPECT_EQ(Entries(), 2U);  // the data and the page
}

TEST_F(Report, AnswersInJsonWithPathAndBytes) {
  Generate();
  const nlohmann::json document = Write(page_, {"--json"}).Json();
  EXPECT_EQ(document["kind"], "report");
  EXPECT_EQ(document["of"], "status");
  EXPECT_EQ(document["bytes"], fs::file_size(page_));
  EXPECT_TRUE(fs::equivalent(document["path"].get<std::string>(), page_));
  EXPECT_EQ(document["gaps"], nlohmann::json::array());
}

TEST_F(Report, ReplacesAFormerPage) {
  Generate();
  std::ofstream(page_) << "former";
  EXPECT_EQ(Write(page_).exit_code, 0);
  EXPECT_TRUE(Content(page_).starts_with("<!DOCTYPE html>"));
}

TEST_F(Report, OfAPlanShowsWhatARunWouldDoAndLeavesTheDatabases) {
  Generate();
  const std::string before = Content(File("Cache.db"));
  EXPECT_EQ(Write(page_, {"--of", "plan"}).exit_code, 0);
  EXPECT_THAT(Content(page_), HasSubstr("What a run would do now"));
  EXPECT_EQ(Content(File("Cache.db")), before);
}

TEST_F(Report, OfARunNeedsOneThatIsRecorded) {
  Generate();
  const HostRun none = Write(page_, {"--of", "run"});
  EXPECT_EQ(none.exit_code, 1);
  EXPECT_THAT(none.err, HasSubstr("no run of this directory is recorded yet"));
  EXPECT_FALSE(fs::exists(page_));
  ASSERT_EQ(Run().exit_code, 0);
  EXPECT_EQ(Write(page_, {"--of", "run"}).exit_code, 0);
  EXPECT_THAT(Content(page_), AllOf(HasSubstr("What the run did"), HasSubstr("Compaction")));
}

TEST_F(Report, TellsOfTheNamedDatabasesAlone) {
  Generate();
  ASSERT_EQ(Run().exit_code, 0);
  for (const char* of : {"status", "plan", "run"}) {
    EXPECT_EQ(Write(page_, {"--of", of, "--database", "Cache"}).exit_code, 0);
    EXPECT_THAT(Content(page_),
                AllOf(HasSubstr("data-database=\"Cache\""), Not(HasSubstr("data-database=\"HealthLog\""))));
  }
}

TEST_F(Report, NamesADatabaseThatItCannotRead) {
  Generate();
  std::ofstream(File("Cache.db"), std::ios::trunc) << "no database, but long enough for one";
  const HostRun run = Write(page_);
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_THAT(run.out, HasSubstr("Cache cannot be read: damaged"));
  EXPECT_THAT(Content(page_), HasSubstr("Cache.db: damaged"));
}

TEST_F(Report, EscapesWhatRowsHold) {
  Generate();
  Database(File("Cache.db")).Run("INSERT INTO CollectorCache (time) VALUES ('<script>alert(1)</script>\"''')");
  EXPECT_EQ(Write(page_).exit_code, 0);
  EXPECT_THAT(Content(page_),
              AllOf(HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt;&quot;&apos;"), Not(HasSubstr("<script"))));
}

TEST_F(Report, IsNotWrittenOverDatabases) {
  Generate();
  const std::string before = Content(File("Cache.db"));
  ExpectRefusal(File("Cache.db").string(), "it is a database");
  for (const char* name : {"cache.DB-wal", "DeviceUsage.db", "HealthLog.db-journal", ".corvo-telemetry-host.history"}) {
    ExpectRefusal(File(name).string(), "the name belongs to a database or to this program");
  }
  fs::copy_file(File("Cache.db"), folder_ / "copy.db");
  ExpectRefusal(folder_ / "copy.db", "it is a database");
  EXPECT_EQ(Content(File("Cache.db")), before);
}

TEST_F(Report, IsWrittenToAFileOnly) {
  Generate();
  ExpectRefusal(data_, "it is a directory");
  ExpectRefusal(data_ + "/", "it is a directory");
  ExpectRefusal(folder_ / "missing/page.html", "its directory does not exist");
  ExpectRefusal("-", "not written to standard output");
  EXPECT_EQ(RunHost({"report", "--data-dir", data_}).exit_code, 2);
}

}  // namespace
}  // namespace corvo::test
