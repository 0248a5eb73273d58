#include <gtest/gtest.h>

#include "cleanup/data_cleanup.h"
#include "cleanup/engine_fixture.h"
#include "contracts/rules.h"
#include "support/fake_clock.h"
#include "support/local_zone.h"
#include "support/statement_log.h"

namespace corvo::test {
namespace {

class CutoffInZone : public EngineTest, public testing::WithParamInterface<const char*> {};

TEST_P(CutoffInZone, IsUtc) {
  const LocalZone zone(GetParam());
  EXPECT_EQ(telemetry::contracts::CutoffText(FakeClock::kStart), "2024-05-02T00:00:00+00:00");
}

TEST_P(CutoffInZone, IsSentInUtc) {
  CreateDatabase("Log", "Samples", 1);
  auto* samples = contracts.Make("Samples", {.database = "Log"});
  const LocalZone zone(GetParam());
  const StatementLog statements;
  EXPECT_THAT(DataCleanup::DeleteExpiredRows(samples, 1), Succeeded());
  EXPECT_THAT(statements.Sql(), testing::ElementsAre("DELETE FROM Samples WHERE datetime(time) < "
                                                     "datetime('2024-05-01T00:00:00+00:00');"));
}

// Ahead of UTC by five and a half hours, behind it by eight, and ahead by more than half a day.
INSTANTIATE_TEST_SUITE_P(Zones, CutoffInZone, testing::Values("XXX-5:30", "YYY8", "ZZZ-14"));

}  // namespace
}  // namespace corvo::test
