#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/conditions.h"
#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

/// A user without the rights over all files that root has: root without them, or whoever runs the tests.
std::vector<std::string> AsOrdinaryUser() {
  if (geteuid() != 0) {
    return {};
  }
  return {"setpriv", "--bounding-set", "-dac_override,-dac_read_search", "--"};
}

std::vector<std::string> Shell(const std::string& before) { return {"sh", "-c", before + "; exec \"$0\" \"$@\""}; }

void Fill(const std::string& data) {
  ASSERT_EQ(RunHost({"generate", "--data-dir", data, "--scale", "0.01"}).exit_code, 0);
  ASSERT_EQ(chmod(data.c_str(), 0755), 0);
}

/// Of another user for root; of root for everybody else.
void GiveAway(const std::string& data) {
  if (geteuid() != 0) {
    fs::create_directory_symlink("/usr/share", data);
    return;
  }
  Fill(data);
  constexpr uid_t kSomebody = 4711;
  ASSERT_EQ(chown(data.c_str(), kSomebody, kSomebody), 0);
}

/// Where SQLite cannot open it by its real path, though the link's is short.
void MoveFarAway(const std::string& data) {
  Fill(data);
  fs::path far = fs::path(data).parent_path();
  for (int folder = 0; folder < 5; ++folder) {
    far /= std::string(100, 'x');
  }
  fs::create_directories(far);
  fs::rename(data, far / "data");
  fs::create_directory_symlink(far / "data", data);
}

void Close(const std::string& file, mode_t mode) { ASSERT_EQ(chmod(file.c_str(), mode), 0); }

/// Databases of which one, or the directory, has a mode; seen by a user whom modes bind.
Condition Mode(const char* name, const char* what, mode_t mode, const Answers& answers) {
  return {.name = name,
          .prepare =
              [what, mode](const std::string& data) {
                Fill(data);
                Close(data + what, mode);
              },
          .answers = answers,
          .through = AsOrdinaryUser(),
          .table = "BatteryStatus"};
}

void UseHostileNames(const std::string& data) {
  Fill(data);
  Database(data + "/Cache.db")
      .Run(
          "DROP TABLE CollectorCache; CREATE TABLE CollectorCache (stamp TEXT); "
          "CREATE TABLE \"\x1b[2J\" (time TEXT)");
  fs::create_directory(data + "/\x1b[31mred.db");
}

const Answers kUnreadable = {{"explain", {1, "cannot be explained: permission denied"}},
                             {"plan", {1, "not cleaned: HealthLog (permission denied)"}},
                             {"report", {1, "permission denied"}},
                             {"run", {1, "not cleaned: HealthLog (permission denied)"}},
                             {"status", {1, "HealthLog cannot be read: permission denied"}},
                             {"verify", {3, "cannot be looked at: permission denied"}}};

void LinkToNothing(const std::string& data) {
  Fill(data);
  fs::remove(data + "/HealthLog.db");
  fs::create_symlink("/missing/HealthLog.db", data + "/HealthLog.db");
}

const Answers kLinkToNothing = {
    {"explain", {1, "a link to /missing/HealthLog.db, which is not there. Bring back what the link leads to"}},
    {"plan", {1, "not cleaned: HealthLog (a link to /missing/HealthLog.db, which is not there)"}},
    {"report", {1, "a link to /missing/HealthLog.db, which is not there"}},
    {"run", {1, "not cleaned: HealthLog (a link to /missing/HealthLog.db, which is not there)"}},
    {"status", {1, "HealthLog cannot be read: a link to /missing/HealthLog.db"}},
    {"verify", {3, "cannot be looked at: a link to /missing/HealthLog.db"}}};

const Answers kReadOnlyDatabase = {{"plan", {1, "not cleaned: HealthLog (permission denied)"}},
                                   {"run", {1, "not cleaned: HealthLog (permission denied)"}}};

const Answers kReadOnlyDirectory = {{"plan", {1, "nothing may be written in its folder"}},
                                    {"run", {10, "ermission denied"}}};

/// By every command that works on the directory.
Answers Denied() {
  Answers answers = {{"generate", {2, "ermission denied"}}};
  for (const char* command : {"explain", "history", "plan", "print", "report", "run", "status", "verify"}) {
    answers[command] = {10, "ermission denied"};
  }
  return answers;
}

/// Root reads what belongs to others, but does not clean it; others are shown a directory of root's without databases.
Answers Foreign() {
  if (geteuid() == 0) {
    return {{"run", {10, "belongs to another user"}}};
  }
  return {{"explain", {0, "has no file yet"}}, {"generate", {2, "ermission denied"}},
          {"plan", {0, "Nothing to clean"}},   {"print", {1, "there is no Cache.db"}},
          {"run", {10, "ermission denied"}},   {"status", {0, "Nothing to show"}},
          {"verify", {0, "Nothing to verify"}}};
}

const Answers kPathTooLong = {{"explain", {1, "its path is too long for SQLite"}},
                              {"plan", {1, "too long for SQLite"}},
                              {"print", {1, "too long for SQLite"}},
                              {"report", {1, "too long for SQLite"}},
                              {"run", {1, "too long for SQLite"}},
                              {"status", {1, "HealthLog cannot be read: its path is too long for SQLite"}},
                              {"verify", {1, "cannot be looked at: its path is too long for SQLite"}}};

const Answers kHostileNames = {{"explain", {1, "cannot be explained: CollectorCache has no column time"}},
                               {"plan", {1, "not cleaned: Cache (CollectorCache has no column time)"}},
                               {"print", {0, "no rows"}},
                               {"run", {1, "not cleaned: Cache (CollectorCache has no column time)"}},
                               {"status", {0, "Cache is left alone by runs: CollectorCache has no column time"}}};

const Answers kFullDisk = {
    {"plan", {1, "not cleaned: "}}, {"report", {1, "cannot write the page"}}, {"run", {1, "not cleaned: "}}};

/// Nobody can read an answer, so the exit code alone tells.
const Answers kMute = {{"contracts", {1, ""}}, {"explain", {1, ""}}, {"generate", {2, ""}}, {"history", {1, ""}},
                       {"plan", {1, ""}},      {"print", {1, ""}},   {"report", {1, ""}},   {"run", {1, ""}},
                       {"status", {1, ""}},    {"verify", {3, ""}}};

INSTANTIATE_TEST_SUITE_P(
    Posix, EachCommand,
    testing::Combine(testing::Values(Mode("UnreadableDatabase", "/HealthLog.db", 0, kUnreadable),
                                     Mode("ReadOnlyDatabase", "/HealthLog.db", 0444, kReadOnlyDatabase),
                                     Mode("ReadOnlyDirectory", "", 0555, kReadOnlyDirectory),
                                     Mode("DirectoryWithoutPermission", "", 0, Denied()),
                                     Condition{"ForeignDirectory", &GiveAway, Foreign()},
                                     Condition{"PathTooLongForSqlite", &MoveFarAway, kPathTooLong},
                                     Condition{"LinkToNothing", &LinkToNothing, kLinkToNothing, {}, "BatteryStatus"},
                                     Condition{"HostileNames", &UseHostileNames, kHostileNames},
                                     Condition{"FullDisk", &Fill, kFullDisk, Shell("ulimit -f 100")},
                                     Condition{"ClosedStreams", &Fill, kMute, Shell("exec >&- 2>&-")}),
                     testing::ValuesIn(Commands())),
    NameOfCase);

// A sanitizer opens files of its own.
#ifndef CORVO_SANITIZED
/// Enough for those that open one database at a time for reading.
const Answers kFewFiles = {{"plan", {1, "not cleaned: Cache (this program has as many files open as it may)"}},
                           {"run", {1, "not cleaned: Cache (this program has as many files open as it may)"}}};

INSTANTIATE_TEST_SUITE_P(PosixWithFewFiles, EachCommand,
                         testing::Combine(testing::Values(Condition{"FewFiles", &Fill, kFewFiles,
                                                                    Shell("exec 3>&- 4>&-; ulimit -n 5")}),
                                          testing::ValuesIn(Commands())),
                         NameOfCase);
#endif

}  // namespace
}  // namespace corvo::test
