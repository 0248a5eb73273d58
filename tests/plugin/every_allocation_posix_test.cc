// A program of its own: every allocation of a whole pass fails once, whoever makes it. Every so many of them unless
// CORVO_EVERY_ALLOCATION is set, which takes some minutes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <ostream>
#include <tuple>

#include "plugin/data_cleanup_plugin.h"
#include "support/allocation_failure.h"
#include "support/contract_factory.h"
#include "support/database.h"
#include "support/environment.h"
#include "support/log_capture.h"
#include "support/temp_dir.h"
#include "support/test_catalogue.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using testing::AnyOf;

/// Rows of both tables: 1 to 4 have expired.
constexpr const char* kRows =
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20) INSERT INTO Samples "
    "SELECT iif(i < 5, '2000', '2100') || '-01-01T00:00:00+00:00', i FROM n";

// What is left of them, as the first value and how many.
constexpr const char* kUntouched = "1 20";
constexpr const char* kExpired = "5 16";
constexpr const char* kCleanBySize = "6 15";  // of 1 MB at a limit of 1 MB, a tenth
constexpr const char* kCleanByRows = "12 9";  // of a limit of 10, nine tenths

/// Does not allocate.
class FixedBuffer : public shared::plugin::PluginBufferAllocator {
 public:
  [[nodiscard]] char* Allocate(std::size_t size) const override { return size <= sizeof(buffer_) ? buffer_ : nullptr; }

 private:
  mutable char buffer_[4096] = {};
};

/// What a pass reported, and what it left in the two databases.
struct Outcome {
  std::string report;  ///< empty when there was none
  std::string log;
  std::string usage;

  [[nodiscard]] bool ReportsSuccess() const { return report.find("EC_NoError") != std::string::npos; }
  bool operator==(const Outcome&) const = default;
  friend void PrintTo(const Outcome& value, std::ostream* stream) {
    *stream << value.report << ", Log " << value.log << ", Usage " << value.usage;
  }
};

struct Ending {
  const char* name;
  void (*prepare)(const fs::path& usage);

  friend void PrintTo(const Ending& value, std::ostream* stream) { *stream << value.name; }
};

void Nothing(const fs::path& /*usage*/) {}
void RemoveTheTimes(const fs::path& usage) { Database(usage).Run("ALTER TABLE Samples RENAME COLUMN time TO moment"); }
void Damage(const fs::path& usage) { std::ofstream(usage) << std::string(4096, 'x'); }

const Ending kEndings[] = {{"Success", Nothing}, {"FailedStatement", RemoveTheTimes}, {"DamagedFile", Damage}};

class EveryAllocation : public testing::TestWithParam<std::tuple<Ending, bool>> {
 protected:
  EveryAllocation() {
    SetEnvironment("CORVO_TELEMETRY_DATA_DIR", directory.Path().string().c_str());
    for (const char* name : {"Log.db", "Usage.db"}) {
      Database(originals.Path() / name).Run(std::string("CREATE TABLE Samples (time TEXT, value);") + kRows);
    }
    fs::resize_file(originals.Path() / "Log.db", 1'000'000);
    std::get<Ending>(GetParam()).prepare(originals.Path() / "Usage.db");
    catalogue.contracts = {
        contracts.Make("InLog", {.database = "Log", .table = "Samples", .retention_days = 1, .max_size_mb = 1}),
        contracts.Make("InUsage", {.database = "Usage", .table = "Samples", .max_rows = 10, .retention_days = 1})};
    catalogue.databases = {contracts.Make("Log", {.database = "Log", .max_size_mb = 1}),
                           contracts.Make("Usage", {.database = "Usage"})};
  }
  ~EveryAllocation() override { SetEnvironment("CORVO_TELEMETRY_DATA_DIR", nullptr); }

  /// A pass over fresh copies of the databases in which the allocation of this index fails.
  [[nodiscard]] Outcome Run(int index) {
    for (const auto& entry : fs::directory_iterator(directory.Path())) {
      fs::remove(entry);
    }
    fs::copy(originals.Path(), directory.Path());
    const FixedBuffer buffer;
    char* output = nullptr;
    {
      std::optional<LogCapture> log;
      if (std::get<bool>(GetParam())) {
        log.emplace(plog::info);
      }
      const AllocationFailure failure(index);
      module.Execute(nullptr, output, buffer);
    }
    return {output != nullptr ? output : "", RowsLeft("Log.db"), RowsLeft("Usage.db")};
  }

  TempDir originals;
  TempDir directory;
  ContractFactory contracts;
  TestCatalogue catalogue;
  telemetry::plugin::DataCleanupPlugin module;

 private:
  [[nodiscard]] std::string RowsLeft(const char* file) const {
    try {
      const Row row = Database(directory.Path() / file).Query("SELECT min(value), count(*) FROM Samples").at(0);
      return row.at(0) + " " + row.at(1);
    } catch (const std::runtime_error& e) {
      return e.what();
    }
  }
};

constexpr int kNever = std::numeric_limits<int>::max();

int Step() { return std::getenv("CORVO_EVERY_ALLOCATION") != nullptr ? 1 : 41; }

void ExpectHonest(const Outcome& outcome, const Outcome& whole) {
  EXPECT_THAT(outcome.log, AnyOf(kUntouched, kExpired, kCleanBySize));
  EXPECT_THAT(outcome.usage, AnyOf(kUntouched, kExpired, kCleanByRows, whole.usage));
  if (outcome.ReportsSuccess()) {
    EXPECT_THAT(outcome.usage, AnyOf(kUntouched, whole.ReportsSuccess() ? kCleanByRows : whole.usage));
  }
}

// The process lives, no row goes that a whole pass keeps, and the next pass is as if nothing had been. A success leaves
// out what the pass cannot know of: a database, or a size limit, whose name could not be looked up.
TEST_P(EveryAllocation, MayFailOnce) {
  const Outcome whole = Run(kNever);
  ASSERT_EQ(whole.log, kCleanBySize);
  int failures = 0;
  for (int index = 0;; index += Step()) {
    const Outcome outcome = Run(index);
    if (!AllocationFailure::Happened()) {
      break;
    }
    ++failures;
    SCOPED_TRACE("allocation " + std::to_string(index));
    ExpectHonest(outcome, whole);
    ASSERT_EQ(Run(kNever), whole) << "of the next pass";
  }
  EXPECT_GT(failures, 10);
}

INSTANTIATE_TEST_SUITE_P(, EveryAllocation, testing::Combine(testing::ValuesIn(kEndings), testing::Bool()),
                         [](const auto& test_case) {
                           return std::string(std::get<Ending>(test_case.param).name) +
                                  (std::get<bool>(test_case.param) ? "WithALogger" : "WithoutALogger");
                         });

}  // namespace
}  // namespace corvo::test
