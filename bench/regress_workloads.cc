// The workloads of bench/regress, one a run. Only the work itself is counted, when valgrind's tool callgrind looks on.

#include <fmt/core.h>
#include <google/protobuf/stubs/common.h>
#include <sqlite3.h>
#include <valgrind/callgrind.h>

#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include "cleanup/clock.h"
#include "cleanup/data_cleanup.h"
#include "cleanup/database_map.h"
#include "contracts/catalogue.h"
#include "host/facts/catalogue_view.h"
#include "host/show/run/run_json.h"
#include "storage/storage_options.h"
#include "storage/telemetry_storage.h"

// The engine's clock, at the end of the sample rows, so that every pass finds the same rows expired.
std::int64_t corvo::telemetry::cleanup::CurrentTime() {
  constexpr std::int64_t kMayDay2024 = 1'714'521'600;
  return kMayDay2024;
}

namespace corvo::telemetry {
namespace {

using shared::SqlCommand;
using shared::TelemetryStorage;

constexpr const char* kDatabase = "DeviceProfile.db";

void Require(const common::Error& error) {
  if (error.Failed()) {
    throw std::runtime_error(error.what);
  }
}

void Group() {
  common::collection::ContractsCollection contracts;
  for (auto* contract : contracts::ContractCatalogue()) {
    contracts.Add(contract);
  }
  cleanup::DatabaseMap map;
  cleanup::GroupTablesByDatabase(contracts, map);
}

void Open() {
  const TelemetryStorage storage(kDatabase, "");
  Require(storage.GetLastError());
}

void OpenAndAsk() {
  TelemetryStorage storage(kDatabase, "");
  Require(storage.Execute(new SqlCommand("SELECT COUNT(*) FROM FwBios"), false));
}

void CopyResults() {
  TelemetryStorage storage(kDatabase, "");
  Require(storage.Execute(new SqlCommand("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 20000) "
                                         "SELECT i, 'row ' || i, NULL FROM n"),
                          false));
}

void WriteRecord() {
  common::Error error;
  error.category = common::EC_Custom;
  error.code = SQLITE_BUSY;
  error.type = "sqlite3";
  error.what = "database is locked";
  static_cast<void>(common::ErrorText(error));
}

host::RunReport Report() {
  const host::CatalogueView catalogue = host::ReadCatalogue();
  host::RunReport report{.directory = "/data", .directory_source = "--data-dir", .databases = {}, .passes = {}};
  for (const host::DatabaseView& database : catalogue.databases) {
    host::DatabaseReport added{.name = database.database, .path = "/data/" + database.database, .tables = {}};
    for (const host::ContractView& contract : catalogue.Of(database.database)) {
      added.tables.push_back({.table = contract.table, .rows_before = 1000, .rows_after = 900, .deleted = {100, 0, 0}});
    }
    report.databases.push_back(std::move(added));
  }
  report.passes.push_back({.result = {}, .rows_deleted = 100});
  return report;
}

void WriteDocument() { static_cast<void>(host::RunDocument(Report())); }

void Clean() { Require(DataCleanup().ReadSource()); }

struct Workload {
  const char* name;
  int times;
  void (*work)();
};

constexpr Workload kWorkloads[] = {
    {"grouping", 1, &Group},      {"opening", 100, &Open},        {"query", 100, &OpenAndAsk},
    {"results", 1, &CopyResults}, {"record", 1000, &WriteRecord}, {"document", 10, &WriteDocument},
    {"pass", 1, &Clean},
};

void Run(const Workload& workload) {
  CALLGRIND_TOGGLE_COLLECT;
  for (int time = 0; time < workload.times; ++time) {
    workload.work();
  }
  CALLGRIND_TOGGLE_COLLECT;
}

/// On what the number of instructions depends, apart from our own code.
void PrintEnvironment() {
#if defined(__clang__)
  fmt::print("Clang {}", __clang_major__);
#elif defined(__GNUC__)
  fmt::print("GCC {}", __GNUC__);
#else
  fmt::print("another compiler");
#endif
  fmt::print(", SQLite {}, Protobuf {}\n", sqlite3_libversion(),
             google::protobuf::internal::VersionString(GOOGLE_PROTOBUF_VERSION));
}

int RunNamed(std::string_view name, const std::string& directory) {
  for (const Workload& workload : kWorkloads) {
    if (name == workload.name) {
      shared::SetDataDirectory(directory);
      Run(workload);
      return EXIT_SUCCESS;
    }
  }
  fmt::print(stderr, "regress_workloads: no workload is called {}\n", name);
  return EXIT_FAILURE;
}

}  // namespace
}  // namespace corvo::telemetry

// With a workload and a directory of samples it runs the workload; alone it prints the environment and all workloads.
int main(int argc, char** argv) {
  using namespace corvo::telemetry;
  if (argc == 3) {
    try {
      return RunNamed(argv[1], argv[2]);
    } catch (const std::exception& failure) {
      fmt::print(stderr, "regress_workloads: {}: {}\n", argv[1], failure.what());
      return EXIT_FAILURE;
    }
  }
  PrintEnvironment();
  for (const Workload& workload : kWorkloads) {
    fmt::print("{}\n", workload.name);
  }
  return EXIT_SUCCESS;
}
