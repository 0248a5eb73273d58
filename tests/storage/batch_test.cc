// Lists of commands: order, first failure, ownership.
#include <sqlite3.h>

#include <stdexcept>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using shared::ICommand;
using testing::StartsWith;

/// A command of somebody else's making that counts its deletions.
class ForeignCommand : public ICommand {
 public:
  ForeignCommand(const char* sql, int& deleted) : sql_(sql), deleted_(deleted) {}
  ~ForeignCommand() override { ++deleted_; }

  [[nodiscard]] const char* GetSqlStatement() const override { return sql_; }
  [[nodiscard]] shared::Rows GetResults() const override { return {}; }
  void Execute(const char* /*statement*/, bool /*flag*/, const char** /*parameters*/, const int& /*count*/) override {}
  void Execute(const char* /*statement*/, const char** /*parameters*/, const int& /*count*/) override {}
  [[nodiscard]] bool HasNext() const override { return false; }
  Error Next() override { return {}; }
  [[nodiscard]] Error GetLastError() const override { return {}; }

 private:
  const char* sql_;
  int& deleted_;
};

class ThrowingCommand : public ForeignCommand {
 public:
  using ForeignCommand::ForeignCommand;
  [[nodiscard]] const char* GetSqlStatement() const override { throw std::runtime_error("no text today"); }
};

class Batch : public StorageTest {
 protected:
  Batch() { CreateSamples(3); }

  Error Execute(TelemetryStorage& storage, std::vector<ICommand*> list) {
    return storage.Execute(list.data(), static_cast<int>(list.size()), false);
  }

  int deleted_ = 0;
};

TEST_F(Batch, RunsInListOrder) {
  TelemetryStorage storage(file_.c_str(), "");
  auto* before = new SqlCommand("SELECT COUNT(*) FROM Samples");
  auto* after = new SqlCommand("SELECT COUNT(*) FROM Samples");

  ASSERT_THAT(Execute(storage, {before, new SqlCommand("DELETE FROM Samples WHERE id = 1"), after}), Succeeded());

  EXPECT_EQ(Texts(before->GetResults()), (std::vector<Row>{{"3"}}));
  EXPECT_EQ(Texts(after->GetResults()), (std::vector<Row>{{"2"}}));
}

TEST_F(Batch, StopsAtTheFirstFailureAndKeepsWhatWasDone) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(Execute(storage, {new SqlCommand("DELETE FROM Samples WHERE id = 1"), new SqlCommand("DELETE FROM No"),
                                new SqlCommand("DELETE FROM Samples")}),
              FailsWith(SQLITE_ERROR, "no such table: No"));

  EXPECT_EQ(Database(file_).Query("SELECT id FROM Samples"), (std::vector<Row>{{"2"}, {"3"}}));
}

TEST_F(Batch, DeletesEveryCommandOnceWithTheStorageRunOrNot) {
  {
    TelemetryStorage storage(file_.c_str(), "");
    ASSERT_TRUE(Execute(storage, {new ForeignCommand("SELECT 1", deleted_), new ForeignCommand("nonsense", deleted_),
                                  new ForeignCommand("SELECT 1", deleted_)})
                    .Failed());
    ASSERT_THAT(storage.Execute(new ForeignCommand("SELECT 1", deleted_), false), Succeeded());
    EXPECT_EQ(deleted_, 0);
  }

  EXPECT_EQ(deleted_, 4);
}

TEST_F(Batch, DeletesACommandOnceHoweverOftenItWasGiven) {
  {
    TelemetryStorage storage(file_.c_str(), "");
    auto* command = new ForeignCommand("SELECT 1", deleted_);
    ASSERT_THAT(Execute(storage, {command, command}), Succeeded());
    ASSERT_THAT(storage.Execute(command, false), Succeeded());
  }

  EXPECT_EQ(deleted_, 1);
}

TEST_F(Batch, BelongsToAStorageThatCouldNotOpen) {
  {
    TelemetryStorage storage("", "");
    EXPECT_TRUE(Execute(storage, {new ForeignCommand("SELECT 1", deleted_)}).Failed());
  }

  EXPECT_EQ(deleted_, 1);
}

TEST_F(Batch, RunsAForeignCommandByItsText) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(storage.Execute(new ForeignCommand("DELETE FROM Samples", deleted_), false), Succeeded());

  EXPECT_EQ(Database(file_).Count("Samples"), 0);
}

TEST_F(Batch, RefusesAForeignCommandWithoutText) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(storage.Execute(new ForeignCommand(nullptr, deleted_), false),
              FailsWith(SQLITE_MISUSE, StartsWith("bad parameter or other API misuse: no statement")));
}

TEST_F(Batch, TurnsAnExceptionIntoARecord) {
  TelemetryStorage storage(file_.c_str(), "");

  const Error error = storage.Execute(new ThrowingCommand("", deleted_), false);

  EXPECT_EQ(error.category, telemetry::common::EC_Std);
  EXPECT_EQ(error.what, "no text today");
  EXPECT_EQ(storage.GetLastError().what, "no text today");
}

TEST_F(Batch, RefusesWhatIsNoListOfCommands) {
  TelemetryStorage storage(file_.c_str(), "");
  ICommand* one[] = {nullptr};
  const auto refused = FailsWith(SQLITE_MISUSE, StartsWith("bad parameter or other API misuse: no "));

  EXPECT_THAT(storage.Execute(nullptr, 1, false), refused);
  EXPECT_THAT(storage.Execute(one, -1, false), refused);
  EXPECT_THAT(storage.Execute(one, 1, false), refused);
  EXPECT_THAT(storage.Execute(static_cast<ICommand*>(nullptr), false), refused);
}

TEST_F(Batch, StopsAtAMissingCommandAndOwnsTheRest) {
  {
    TelemetryStorage storage(file_.c_str(), "");
    EXPECT_TRUE(Execute(storage, {new ForeignCommand("DELETE FROM Samples WHERE id = 1", deleted_), nullptr,
                                  new ForeignCommand("DELETE FROM Samples", deleted_)})
                    .Failed());
  }

  EXPECT_EQ(deleted_, 2);
  EXPECT_EQ(Database(file_).Count("Samples"), 2);
}

TEST_F(Batch, WithoutCommandsSucceeds) {
  TelemetryStorage storage(file_.c_str(), "");

  EXPECT_THAT(Execute(storage, {}), Succeeded());
}

}  // namespace
}  // namespace corvo::test
