#pragma once

namespace corvo::test {

/// A table that collectors write into while passes run.
struct CrowdedTable {
  const char* database;
  const char* journal_mode;
  const char* table;
};

inline constexpr CrowdedTable kCrowdedTables[] = {{"DeviceProfileEvents", "WAL", "OsEvents"},
                                                  {"DeviceUsage", "DELETE", "PowerEvents"},
                                                  {"HealthLog", "WAL", "BatteryStatus"},
                                                  {"PerformanceSamples", "DELETE", "EnergyEmiSamples"}};

inline constexpr int kCollectors = 3;

/// Each of these tables may keep 45,000 rows: all rounds of all collectors stay below.
inline constexpr int kMaxRounds = 10'000;

}  // namespace corvo::test
