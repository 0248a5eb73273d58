// The order of a command's virtual operations is binary contract. Read from the raw table, by position; a destructor
// takes two slots here.
#include <optional>

#include "storage/storage_fixture.h"

namespace corvo::test {
namespace {

using shared::ICommand;
using shared::Rows;

template <class Function>
Function* Slot(const ICommand* command, std::size_t index) {
  void* const* table = *reinterpret_cast<void* const* const*>(command);
  return reinterpret_cast<Function*>(table[index]);
}

class CommandSlots : public StorageTest {
 protected:
  CommandSlots() {
    CreateSamples(2);
    EXPECT_THAT(storage_.emplace(file_.c_str(), "").Execute(command_, false), Succeeded());
  }

  std::optional<TelemetryStorage> storage_;
  ICommand* command_ = new SqlCommand("SELECT id FROM Samples");
};

TEST_F(CommandSlots, BeginWithStatementAndResults) {
  EXPECT_STREQ(Slot<const char*(const ICommand*)>(command_, 0)(command_), "SELECT id FROM Samples");
  EXPECT_EQ(Slot<Rows(const ICommand*)>(command_, 1)(command_).count, 2);
}

TEST_F(CommandSlots, ContinueWithTheTwoFormsOfExecute) {
  const int count = 1;
  const char* one[] = {"1"};
  Slot<void(ICommand*, const char*, bool, const char**, const int&)>(command_, 2)(command_, "SELECT ?1, 'third slot'",
                                                                                  false, one, count);
  EXPECT_EQ(Texts(command_->GetResults()), (std::vector<Row>{{"1", "third slot"}}));

  Slot<void(ICommand*, const char*, const char**, const int&)>(command_, 3)(command_, "SELECT ?1, 'fourth slot'", one,
                                                                            count);
  EXPECT_EQ(Texts(command_->GetResults()), (std::vector<Row>{{"1", "fourth slot"}}));
}

TEST_F(CommandSlots, ContinueWithHasNextAndNext) {
  auto* has_next = Slot<bool(const ICommand*)>(command_, 4);
  auto* next = Slot<Error(ICommand*)>(command_, 5);

  EXPECT_TRUE(has_next(command_));
  EXPECT_THAT(next(command_), Succeeded());
  EXPECT_THAT(next(command_), Succeeded());
  EXPECT_FALSE(has_next(command_));
}

TEST_F(CommandSlots, EndWithTheDestructorAndTheLastError) {
  command_->Execute("SELECT id FROM Missing", nullptr, 0);
  EXPECT_EQ(Slot<Error(const ICommand*)>(command_, 8)(command_).what, "no such table: Missing");

  // The deleting destructor; a leak or a second deletion is the sanitizer's to see.
  ICommand* own = new SqlCommand("SELECT 1");
  Slot<void(ICommand*)>(own, 7)(own);
}

}  // namespace
}  // namespace corvo::test
