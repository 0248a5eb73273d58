#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/conditions.h"
#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

const Answer kHoldsDatabases = {2, "already holds databases"};

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

Condition Mode(const char* name, const char* what, mode_t mode, const Answer& run, const Answer& generate) {
  return {name,
          [what, mode](const std::string& data) {
            Fill(data);
            ASSERT_EQ(chmod((data + what).c_str(), mode), 0);
          },
          run,
          generate,
          {0, "CollectorCache"},
          AsOrdinaryUser()};
}

INSTANTIATE_TEST_SUITE_P(
    Posix, EachCommand,
    testing::Values(
        Mode("UnreadableDatabase", "/HealthLog.db", 0, {1, "not cleaned: HealthLog (permission denied)"},
             kHoldsDatabases),
        Mode("ReadOnlyDatabase", "/HealthLog.db", 0444, {1, "not cleaned: HealthLog (permission denied)"},
             kHoldsDatabases),
        Mode("ReadOnlyDirectory", "", 0555, {10, "ermission denied"}, kHoldsDatabases),
        Mode("DirectoryWithoutPermission", "", 0, {10, "ermission denied"}, {2, "ermission denied"}),
        Condition{"ForeignDirectory",
                  &GiveAway,
                  {10, geteuid() == 0 ? "belongs to another user" : "ermission denied"},
                  {2, geteuid() == 0 ? "already holds databases" : "ermission denied"}},
        Condition{"PathTooLongForSqlite", &MoveFarAway, {1, "too long for SQLite"}, kHoldsDatabases},
        Condition{"HostileNames",
                  [](const std::string& data) {
                    Fill(data);
                    Database(data + "/Cache.db")
                        .Run(
                            "DROP TABLE CollectorCache; CREATE TABLE CollectorCache (stamp TEXT); "
                            "CREATE TABLE \"\x1b[2J\" (time TEXT)");
                    fs::create_directory(data + "/\x1b[31mred.db");
                  },
                  {1, "not cleaned: Cache (CollectorCache has no column time)"},
                  kHoldsDatabases},
        Condition{
            "FullDisk", &Fill, {1, "not cleaned: "}, kHoldsDatabases, {0, "CollectorCache"}, Shell("ulimit -f 100")},
        Condition{"ClosedStreams", &Fill, {1, ""}, {2, ""}, {1, ""}, Shell("exec >&- 2>&-")}),
    NameOfCondition);

}  // namespace
}  // namespace corvo::test
