// Entries of a file system that are no files: opening one can wait for ever.
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <ostream>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using testing::EndsWith;

void MakeFifo(const std::string& path) { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); }

void MakeDeviceLink(const std::string& path) { std::filesystem::create_symlink("/dev/zero", path); }

void MakeSocket(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof(address.sun_path));
  std::memcpy(address.sun_path, path.c_str(), path.size());
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  close(socket);
}

struct Kind {
  const char* name;
  void (*make)(const std::string& path);

  friend void PrintTo(const Kind& value, std::ostream* stream) { *stream << value.name; }
};

class SpecialFiles : public StorageTest, public testing::WithParamInterface<Kind> {};

TEST_P(SpecialFiles, AreRefusedAtOnceInTheDatabasesPlace) {
  GetParam().make(file_);

  TelemetryStorage storage(file_.c_str(), "");

  const auto refused = FailsWith(SQLITE_CANTOPEN, "unable to open database file: " + file_ + ": not a regular file");
  EXPECT_THAT(storage.GetLastError(), refused);
  EXPECT_THAT(RunSql(storage, "SELECT COUNT(*) FROM sqlite_schema"), refused);
}

TEST_P(SpecialFiles, AreRefusedAtOnceInAJournalsPlace) {
  CreateSamples(1);
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    GetParam().make(file_ + suffix);

    TelemetryStorage storage(file_.c_str(), "");

    EXPECT_THAT(RunSql(storage, "SELECT * FROM Samples"), FailsWith(SQLITE_CANTOPEN, EndsWith("not a regular file")));
    std::filesystem::remove(file_ + suffix);
  }
}

INSTANTIATE_TEST_SUITE_P(Opening, SpecialFiles,
                         testing::Values(Kind{"Fifo", MakeFifo}, Kind{"Device", MakeDeviceLink},
                                         Kind{"Socket", MakeSocket}),
                         [](const auto& kind) { return kind.param.name; });

class UriNames : public StorageTest, public testing::WithParamInterface<const char*> {};

TEST_P(UriNames, ArePlainFileNames) {
  shared::SetDataDirectory(dir_.Path().string());
  Database(dir_.Path() / "plain.db").Run("CREATE TABLE Found(x)");
  std::filesystem::rename(dir_.Path() / "plain.db", dir_.Path() / GetParam());

  TelemetryStorage storage(GetParam(), "");

  EXPECT_THAT(RunSql(storage, "DELETE FROM Found"), Succeeded());
}

TEST_P(UriNames, OpenNothingElseWhenMissing) {
  shared::SetDataDirectory(dir_.Path().string());

  TelemetryStorage storage(GetParam(), "");

  EXPECT_THAT(RunSql(storage, "CREATE TABLE T(x)"), FailsWith(SQLITE_CANTOPEN, EndsWith("no such file")));
}

INSTANTIATE_TEST_SUITE_P(Opening, UriNames,
                         testing::Values("file:x?mode=memory", "file:x.db?vfs=none", "file:x.db", ":memory:"));

}  // namespace
}  // namespace corvo::test
