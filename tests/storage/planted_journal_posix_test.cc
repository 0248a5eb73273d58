// Journals that name what is no file: opening a FIFO to read it waits for a writer that never comes.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>

#include "storage/side_file_samples.h"
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

class PlantedSpecialJournal : public StorageTest {
 protected:
  void Plant(const std::string& victim) {
    CreateSamples(3);
    Database database(file_);
    Write(file_ + "-journal", JournalOfSeveralDatabases(database, victim));
  }

  std::string victim_ = dir_ / "victim";
};

TEST_F(PlantedSpecialJournal, ThatNamesAFifoDoesNotWaitForItsWriter) {
  ASSERT_EQ(mkfifo(victim_.c_str(), 0600), 0);
  Plant(victim_);

  auto result = std::async(std::launch::async, [this] {
    TelemetryStorage storage(file_.c_str(), "");
    return RunSql(storage, "SELECT COUNT(*) FROM Samples");
  });

  if (result.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
    ADD_FAILURE() << "waits for a writer";
    close(open(victim_.c_str(), O_WRONLY | O_NONBLOCK));
  }
  EXPECT_THAT(result.get().what, HasSubstr("transaction over several databases"));
  EXPECT_TRUE(std::filesystem::is_fifo(victim_));
}

TEST_F(PlantedSpecialJournal, ThatNamesADeviceLeavesItsNode) {
  std::filesystem::create_symlink("/dev/zero", victim_);
  Plant(victim_);
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Samples").what, HasSubstr("transaction over several databases"));

  EXPECT_TRUE(std::filesystem::is_symlink(victim_));
}

}  // namespace
}  // namespace corvo::test
