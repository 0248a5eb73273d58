#include <gtest/gtest.h>
#include <plog/Init.h>

#include "common/log.h"

namespace corvo::test {
namespace {

using telemetry::common::DefaultLogger;
using telemetry::common::LogAdmits;

// A program of its own: once there is a logger, it stays.
TEST(NoLogger, NothingIsAdmittedEvaluatedOrCreated) {
  int evaluated = 0;
  CORVO_LOG(plog::fatal, "Tag") << ++evaluated;
  EXPECT_EQ(evaluated, 0);
  EXPECT_FALSE(LogAdmits(plog::fatal));
  EXPECT_FALSE(LogAdmits(plog::none));
  EXPECT_EQ(DefaultLogger(), nullptr);
}

// A host may use plog's own functions: the libraries see the logger all the same.
TEST(NoLogger, OneMadeWithPlogsOwnFunctionsIsTheProcessesLogger) {
  plog::init(plog::info);
  EXPECT_EQ(DefaultLogger(), plog::get());
  EXPECT_TRUE(LogAdmits(plog::info));
  EXPECT_FALSE(LogAdmits(plog::debug));
}

}  // namespace
}  // namespace corvo::test
