// Side files that lead elsewhere, or change between a look and the opening.
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "storage/file_watch.h"
#include "storage/side_file_samples.h"
#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;

class SymbolicSideFile : public StorageTest, public testing::WithParamInterface<std::tuple<const char*, bool>> {};

TEST_P(SymbolicSideFile, IsNotFollowed) {
  const auto& [suffix, dangling] = GetParam();
  CreateSamples(3);
  const std::string before = Content(file_);
  const std::string other = dir_ / "Precious.bin";
  const std::string content(40'000, 'x');
  if (!dangling) {
    Write(other, content);
  }
  std::filesystem::create_symlink(other, file_ + suffix);

  for (const char* statement : {"SELECT COUNT(*) FROM Samples", "DELETE FROM Samples", "VACUUM;"}) {
    TelemetryStorage storage(file_.c_str(), "");
    EXPECT_THAT(RunSql(storage, statement), FailsWith(SQLITE_CANTOPEN, HasSubstr(std::string("Test.db") + suffix)));
  }

  EXPECT_EQ(std::filesystem::exists(other), !dangling);
  EXPECT_EQ(Content(other), dangling ? "" : content);
  EXPECT_TRUE(std::filesystem::is_symlink(file_ + suffix));
  EXPECT_EQ(Content(file_), before);
}

INSTANTIATE_TEST_SUITE_P(SideFiles, SymbolicSideFile,
                         testing::Combine(testing::Values("-journal", "-wal", "-shm"), testing::Bool()),
                         [](const auto& test_case) {
                           return std::string(std::get<0>(test_case.param)).substr(1) +
                                  (std::get<1>(test_case.param) ? "_Dangling" : "");
                         });

/// What takes the place of a side file after the storage has looked at it.
struct Replacement {
  const char* name;
  void (*make)(const std::string& path, const std::string& other);

  friend void PrintTo(const Replacement& value, std::ostream* stream) { *stream << value.name; }
};

void MakeFifo(const std::string& path, const std::string& /*other*/) { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); }
void MakeHardLink(const std::string& path, const std::string& other) { std::filesystem::create_hard_link(other, path); }
void MakeSymbolicLink(const std::string& path, const std::string& other) {
  std::filesystem::create_symlink(other, path);
}

class SwappedSideFile : public StorageTest, public testing::WithParamInterface<std::tuple<const char*, Replacement>> {
 protected:
  /// Runs a statement in a thread of its own, and lets go a thread that waits for somebody to write into a FIFO.
  Error RunWithoutWaiting(const std::string& sql, const std::string& fifo) {
    auto result = std::async(std::launch::async, [&] {
      TelemetryStorage storage(file_.c_str(), "");
      return RunSql(storage, sql);
    });
    if (result.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
      ADD_FAILURE() << "waits for a writer";
      close(open(fifo.c_str(), O_WRONLY | O_NONBLOCK));
    }
    return result.get();
  }
};

TEST_P(SwappedSideFile, IsNotUsed) {
  const auto& [suffix, replacement] = GetParam();
  CreateSamples(3);
  Database(file_).Run(std::string("PRAGMA journal_mode=") + (suffix == std::string("-wal") ? "WAL" : "DELETE"));
  const std::string other = dir_ / "Precious.bin";
  const std::string content(40'000, 'x');
  Write(other, content);
  const std::string side_file = file_ + suffix;
  Write(side_file, "x");
  bool swapped = false;
  const FileWatch watch([&, replacement = replacement](const FileCall& call) {
    if (!swapped && call.operation == "open" && call.path == side_file) {
      swapped = true;
      std::filesystem::remove(side_file);
      replacement.make(side_file, other);
    }
  });

  const Error error = RunWithoutWaiting("SELECT COUNT(*) FROM Samples", side_file);

  ASSERT_TRUE(swapped);
  EXPECT_THAT(error, FailsWith(SQLITE_CANTOPEN, testing::_));
  EXPECT_EQ(Content(other), content);
  EXPECT_TRUE(std::filesystem::exists(std::filesystem::symlink_status(side_file)));
}

INSTANTIATE_TEST_SUITE_P(SideFiles, SwappedSideFile,
                         testing::Combine(testing::Values("-journal", "-wal"),
                                          testing::Values(Replacement{"Fifo", MakeFifo},
                                                          Replacement{"HardLink", MakeHardLink},
                                                          Replacement{"SymbolicLink", MakeSymbolicLink})),
                         [](const auto& test_case) {
                           return std::string(std::get<0>(test_case.param)).substr(1) + "_" +
                                  std::get<1>(test_case.param).name;
                         });

using ReplacedSideFile = StorageTest;

TEST_F(ReplacedSideFile, IsNotUsedThoughItIsAnOrdinaryFile) {
  CreateSamples(3);
  Database(file_).Run("PRAGMA journal_mode=WAL");
  const std::string side_file = file_ + "-wal";
  Write(side_file, "x");
  const std::string other = dir_ / "Other.bin";
  Write(other, "y");
  const FileWatch watch([&](const FileCall& call) {
    if (call.operation == "open" && call.path == side_file && std::filesystem::exists(other)) {
      std::filesystem::rename(other, side_file);
    }
  });
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(RunSql(storage, "SELECT COUNT(*) FROM Samples"),
              FailsWith(SQLITE_CANTOPEN, HasSubstr("replaced while it was opened")));

  EXPECT_FALSE(std::filesystem::exists(other)) << "nothing was replaced";
  EXPECT_EQ(Content(side_file), "y");
}

/// A FIFO that comes and goes under the name of a side file. A thread that waits for its writer can be let go.
class RestlessFifo {
 public:
  explicit RestlessFifo(std::string place) : place_(std::move(place)), aside_(place_ + ".aside") {
    if (mkfifo(aside_.c_str(), 0600) != 0) {
      throw std::runtime_error("no FIFO");
    }
  }

  void ComeAndGo() const {
    std::error_code ignored;
    std::filesystem::rename(aside_, place_, ignored);
    std::filesystem::rename(place_, aside_, ignored);
  }

  void LetGo() const { close(open(aside_.c_str(), O_WRONLY | O_NONBLOCK)); }

 private:
  std::string place_;
  std::string aside_;
};

class RacingSideFile : public StorageTest, public testing::WithParamInterface<const char*> {};

TEST_P(RacingSideFile, NeverMakesACountWait) {
  CreateSamples(3);
  const RestlessFifo fifo(file_ + GetParam());
  constexpr int kOpenings = 300;
  auto results = std::async(std::launch::async, [this] {
    std::vector<Error> all;
    for (int opening = 0; opening < kOpenings; ++opening) {
      TelemetryStorage storage(file_.c_str(), "");
      all.push_back(RunSql(storage, "SELECT COUNT(*) FROM Samples"));
    }
    return all;
  });

  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (results.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
    fifo.ComeAndGo();
    if (std::chrono::steady_clock::now() > deadline) {
      ADD_FAILURE() << "waits for a writer";
      while (results.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        fifo.LetGo();
      }
    }
  }

  for (const Error& error : results.get()) {
    EXPECT_THAT(error, testing::AnyOf(Succeeded(), FailsWith(SQLITE_CANTOPEN, testing::_)));
  }
}

INSTANTIATE_TEST_SUITE_P(SideFiles, RacingSideFile, testing::Values("-journal", "-wal", "-shm"),
                         [](const auto& test_case) { return std::string(test_case.param).substr(1); });

}  // namespace
}  // namespace corvo::test
