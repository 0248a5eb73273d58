// A program of its own: the module object over a collector that notes what a run does with it, in place of the real
// one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "cleanup/data_cleanup.h"
#include "plugin/data_cleanup_plugin.h"
#include "support/buffer_allocator.h"

namespace corvo::test {
namespace {

/// What the collectors of this process met, in order.
struct Notes {
  std::vector<const char*> inputs;   ///< pointers as they came
  std::vector<double> trim_margins;  ///< of each run
  int destroyed = 0;
};
Notes notes;

}  // namespace
}  // namespace corvo::test

DataCleanup::~DataCleanup() { ++corvo::test::notes.destroyed; }

void DataCleanup::Configure(const char* input) { corvo::test::notes.inputs.push_back(input); }

corvo::telemetry::common::Error DataCleanup::ReadSource() {
  corvo::test::notes.trim_margins.push_back(trimMarginPercent);
  trimMarginPercent = 50.0;  // of this collector alone
  return {};
}

namespace corvo::test {
namespace {

using telemetry::plugin::DataCleanupPlugin;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

class CollectorOfARun : public testing::Test {
 protected:
  CollectorOfARun() { notes = {}; }

  void Run(const char* input) { module.Execute(input, output, allocator); }

  DataCleanupPlugin module;
  BufferAllocator allocator;
  char* output = nullptr;
};

TEST_F(CollectorOfARun, GetsTheInputAsGiven) {
  const char text[] = "not\xFFtext";
  Run(text);
  Run(nullptr);
  EXPECT_THAT(notes.inputs, ElementsAre(text, nullptr));
}

TEST_F(CollectorOfARun, GetsTheInputOfTheOlderFormAsGiven) {
  const char text[] = "input";
  char buffer[] = "########";
  module.Execute(text, buffer);
  EXPECT_THAT(notes.inputs, ElementsAre(text));
}

TEST_F(CollectorOfARun, IsAFreshOneEveryTime) {
  for (int run = 0; run < 3; ++run) {
    Run("input");
  }
  EXPECT_THAT(notes.trim_margins, AllOf(SizeIs(3), Each(10.0)));
}

TEST_F(CollectorOfARun, IsGoneWhenTheRunEnds) {
  Run("input");
  EXPECT_EQ(notes.destroyed, 1);
  Run("input");
  EXPECT_EQ(notes.destroyed, 2);
}

}  // namespace
}  // namespace corvo::test
