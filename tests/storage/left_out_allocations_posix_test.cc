// A program of its own: every allocation of a compaction that is left out fails once, whoever makes it.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

#include "storage/result_code.h"
#include "storage/statement_observer.h"
#include "storage/storage_fixture.h"
#include "support/allocation_failure.h"

namespace corvo::test {
namespace {

using shared::StorageOptions;

class Witness : public shared::StatementObserver {
 public:
  void OnEnd(const shared::StatementRecord& statement) noexcept override {
    left_out = statement.left_out != nullptr;
    failed = statement.result.Failed();
  }

  bool left_out = false;
  bool failed = false;
};

std::string Content(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class LeftOutWithoutMemory : public StorageTest, public testing::WithParamInterface<bool> {};

/// Whether the compaction succeeded when the allocation of this index failed.
bool SucceedsWithout(const std::string& file, int index) {
  TelemetryStorage storage(file.c_str(), "");
  auto* command = new SqlCommand("VACUUM;");
  const AllocationFailure failure(index);
  return !storage.Execute(command, false).Failed();
}

TEST_P(LeftOutWithoutMemory, IsLeftOutOrFailsAndNeverWrites) {
  CreateSamples(100);
  const std::string before = Content(file_);
  StorageOptions options = shared::GetStorageOptions();
  options.compact_when_free = 100;
  options.count_unused_bytes = GetParam();
  shared::SetStorageOptions(options);
  const auto witness = std::make_shared<Witness>();
  const shared::StatementObserverScope scope(witness);
  int failures = 0;
  for (int index = 0;; ++index) {
    const bool succeeds = SucceedsWithout(file_, index);
    const bool reached = AllocationFailure::Happened();
    EXPECT_EQ(witness->left_out, succeeds) << "allocation " << index;
    EXPECT_EQ(witness->failed, !succeeds) << "allocation " << index;
    ASSERT_EQ(Content(file_), before) << "allocation " << index;
    if (!reached) {
      break;
    }
    ++failures;
  }
  EXPECT_GT(failures, 10);
}

INSTANTIATE_TEST_SUITE_P(LeftOut, LeftOutWithoutMemory, testing::Bool(),
                         [](const auto& test_case) { return test_case.param ? "WithUnusedBytes" : "ByFreePages"; });

}  // namespace
}  // namespace corvo::test
