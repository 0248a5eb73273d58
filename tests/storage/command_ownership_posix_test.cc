// A command that was handed over is deleted exactly once, also when memory runs out on the way. On Windows a library
// allocates for itself, whatever operator new the program has.
#include <sqlite3.h>

#include "storage/storage_fixture.h"
#include "support/allocation_failure.h"

namespace corvo::test {
namespace {

using shared::ICommand;

/// Counts the deletions of each command.
class CountedCommand : public ICommand {
 public:
  explicit CountedCommand(int& deletions) : deletions_(deletions) {}
  ~CountedCommand() override { ++deletions_; }

  [[nodiscard]] const char* GetSqlStatement() const override { return "SELECT id, v FROM Samples"; }
  [[nodiscard]] shared::Rows GetResults() const override { return {}; }
  void Execute(const char* /*statement*/, bool /*flag*/, const char** /*parameters*/, const int& /*count*/) override {}
  void Execute(const char* /*statement*/, const char** /*parameters*/, const int& /*count*/) override {}
  [[nodiscard]] bool HasNext() const override { return false; }
  Error Next() override { return {}; }
  [[nodiscard]] Error GetLastError() const override { return {}; }

 private:
  int& deletions_;
};

constexpr int kCommands = 20;

class CommandOwnership : public StorageTest {
 protected:
  CommandOwnership() { CreateSamples(3); }

  /// Hands a list of new commands to a storage while its `index`th allocation fails, and says whether it was reached.
  bool ExecuteListWithFailure(int index) {
    std::vector<int> deletions(kCommands);
    std::vector<ICommand*> list;
    for (int& count : deletions) {
      list.push_back(new CountedCommand(count));
    }
    list.push_back(list.front());
    bool happened = false;
    {
      TelemetryStorage storage(file_.c_str(), "");
      Error error;
      {
        const AllocationFailure failure(index);
        error = storage.Execute(list.data(), static_cast<int>(list.size()), false);
        happened = AllocationFailure::Happened();
      }
      if (!happened) {
        EXPECT_THAT(error, Succeeded());
        EXPECT_EQ(deletions, std::vector<int>(kCommands)) << "their results are still to be read";
      }
    }
    EXPECT_EQ(deletions, std::vector<int>(kCommands, 1)) << "allocation " << index;
    return happened;
  }
};

TEST_F(CommandOwnership, OfAListHoldsWhicheverAllocationFails) {
  int failures = 0;
  while (ExecuteListWithFailure(failures) && !HasFailure()) {
    ++failures;
  }

  EXPECT_GT(failures, 10);
}

TEST_F(CommandOwnership, OfOneCommandAfterTheOtherHoldsWhicheverAllocationFails) {
  bool happened = true;
  for (int index = 0; happened && !HasFailure(); ++index) {
    std::vector<int> deletions(kCommands);
    happened = false;
    {
      TelemetryStorage storage(file_.c_str(), "");
      for (int& count : deletions) {
        auto* command = new CountedCommand(count);
        const AllocationFailure failure(index);
        static_cast<void>(storage.Execute(command, false));
        happened = happened || AllocationFailure::Happened();
      }
    }
    EXPECT_EQ(deletions, std::vector<int>(kCommands, 1)) << "allocation " << index;
  }
}

}  // namespace
}  // namespace corvo::test
