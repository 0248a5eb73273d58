// A storage leaves alone the locks that the rest of the process holds on its database: the system drops all of them
// when any file of it is closed that SQLite does not know for a database.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

/// Where SQLite locks a database (https://www.sqlite.org/fileformat2.html#the_lock_byte_page), and the index of its
/// log.
constexpr off_t kLocksOfAFile = 1 << 30;
constexpr off_t kLocksOfAnIndex = 120;

/// Whether another process has locked anything from there on; for a child of that process.
bool IsLockedElsewhere(const std::string& file, off_t begin) {
  const int descriptor = open(file.c_str(), O_RDWR | O_CLOEXEC);
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_start = begin;
  const bool known = fcntl(descriptor, F_GETLK, &lock) == 0;
  close(descriptor);
  return known && lock.l_type != F_UNLCK;
}

using KeptLocks = StorageTest;

TEST_F(KeptLocks, OfATransactionOutliveAnotherStorage) {
  CreateSamples(3);
  Database writer(file_);
  writer.Run("BEGIN IMMEDIATE");

  { const TelemetryStorage another(file_.c_str(), ""); }

  EXPECT_EXIT(std::_Exit(IsLockedElsewhere(file_, kLocksOfAFile) ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(KeptLocks, OfAReaderOfALogOutliveAnotherStorage) {
  CreateSamples(3);
  Database reader(file_);
  reader.Run("PRAGMA journal_mode=WAL; BEGIN; SELECT * FROM Samples");

  { const TelemetryStorage another(file_.c_str(), ""); }

  EXPECT_EXIT(std::_Exit(IsLockedElsewhere(file_, kLocksOfAFile) ? 0 : 1), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(std::_Exit(IsLockedElsewhere(file_ + "-shm", kLocksOfAnIndex) ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace corvo::test
