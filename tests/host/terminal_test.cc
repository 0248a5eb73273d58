#include <gmock/gmock.h>

#include "host/run_fixture.h"

namespace corvo::test {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST_F(RunTest, ProgressAndColourStayAwayFromFiles) {
  Generate();
  const HostRun run = Run({}, {"TERM=xterm", "NO_COLOR="});
  EXPECT_EQ(run.err, "");
  EXPECT_THAT(run.out, Not(HasSubstr("\x1b")));
}

}  // namespace
}  // namespace corvo::test
