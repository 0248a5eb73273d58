#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/pass/directory_run.h"
#include "host/pass/plan.h"
#include "plugin/data_cleanup_plugin.h"
#include "storage/storage_options.h"
#include "support/environment.h"
#include "support/temp_dir.h"

namespace corvo::test {

/// Where the copies of plans go while the object lives; alone, so that what is left of them can be seen.
class PlaceOfPlans {
 public:
  PlaceOfPlans() { SetEnvironment("SQLITE_TMPDIR", folder_.Path().string().c_str()); }
  PlaceOfPlans(const PlaceOfPlans&) = delete;
  PlaceOfPlans& operator=(const PlaceOfPlans&) = delete;
  ~PlaceOfPlans() { SetEnvironment("SQLITE_TMPDIR", nullptr); }

  [[nodiscard]] const std::filesystem::path& Path() const { return folder_.Path(); }
  [[nodiscard]] bool IsEmpty() const { return std::filesystem::is_empty(folder_.Path()); }

 private:
  TempDir folder_;
};

/// The content and the time of last change of every file of a directory.
using DirectoryContent = std::map<std::string, std::pair<std::string, std::filesystem::file_time_type>>;
[[nodiscard]] DirectoryContent ContentOf(const std::filesystem::path& directory);

/// Names what differs.
void ExpectEqual(const DirectoryContent& now, const DirectoryContent& before);

/// All of a report that a plan and the run after it have in common, a line a fact.
[[nodiscard]] std::vector<std::string> Facts(const telemetry::host::RunReport& report);

/// Plans and runs with the module in this process, on its clock. Plans must leave the directory as it is, and nothing
/// where their copies were.
class PlanTest : public testing::Test {
 protected:
  [[nodiscard]] telemetry::host::RunReport PlanUntouching(const telemetry::host::DirectoryRun& run);
  [[nodiscard]] telemetry::host::RunReport Run(const telemetry::host::DirectoryRun& run);

  PlaceOfPlans place_;
  telemetry::plugin::DataCleanupPlugin module_;
};

}  // namespace corvo::test
