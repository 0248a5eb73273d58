#include "host/plan_fixture.h"

#include <fstream>
#include <sstream>

#include "common/error.h"
#include "common/text.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;
using telemetry::host::DatabaseReport;
using telemetry::host::PassOutcome;
using telemetry::host::RunReport;
using telemetry::host::TableReport;

std::string Text(const std::optional<std::int64_t>& number) { return number ? std::to_string(*number) : "none"; }

std::string Fact(const DatabaseReport& database) {
  const std::string problem = !database.problem ? ""
                                                : std::to_string(static_cast<int>(database.problem->kind)) + " " +
                                                      database.problem->reason + " " +
                                                      telemetry::common::ErrorText(database.problem->record);
  return database.name + " " + telemetry::common::Utf8(database.path) + " " + std::to_string(database.bytes_before) +
         " " + std::to_string(database.bytes_after) + " " + problem;
}

std::string Fact(const TableReport& table) {
  return table.table + (table.missing ? " missing " : " ") + Text(table.rows_before) + " " + Text(table.rows_after) +
         " " + std::to_string(table.deleted.expired) + " " + std::to_string(table.deleted.row_limit) + " " +
         std::to_string(table.deleted.size_limit) + " " + Text(table.last_rowid) + " " + table.problem;
}

std::string Fact(const PassOutcome& pass) {
  const std::string failure = !pass.failure ? ""
                                            : pass.failure->database + " " + pass.failure->sql + " " +
                                                  telemetry::common::ErrorText(pass.failure->result);
  return pass.database + " " + std::to_string(pass.rows_deleted) + " " + telemetry::common::ErrorText(pass.result) +
         " " + failure;
}

}  // namespace

DirectoryContent ContentOf(const fs::path& directory) {
  DirectoryContent content;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    std::ostringstream bytes;
    bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
    content[entry.path().filename().string()] = {bytes.str(), entry.last_write_time()};
  }
  return content;
}

std::vector<std::string> Facts(const RunReport& report) {
  std::vector<std::string> facts = {telemetry::common::Utf8(report.directory), report.directory_source};
  for (const DatabaseReport& database : report.databases) {
    facts.push_back(Fact(database));
    for (const TableReport& table : database.tables) {
      facts.push_back(Fact(table));
    }
  }
  for (const PassOutcome& pass : report.passes) {
    facts.push_back(Fact(pass));
  }
  return facts;
}

void ExpectEqual(const DirectoryContent& now, const DirectoryContent& before) {
  for (const auto& [name, file] : now) {
    const auto former = before.find(name);
    if (former == before.end()) {
      ADD_FAILURE() << name << " is new";
    } else {
      EXPECT_TRUE(file.first == former->second.first) << name << " has another content";
      EXPECT_TRUE(file.second == former->second.second) << name << " has another time";
    }
  }
  EXPECT_EQ(now.size(), before.size());
}

RunReport PlanTest::PlanUntouching(const telemetry::host::DirectoryRun& run) {
  const shared::StorageOptionsScope kept(shared::GetStorageOptions());
  shared::SetDataDirectory(run.directory.string());
  const DirectoryContent before = ContentOf(run.directory);
  RunReport plan = telemetry::host::Plan(module_, run);
  ExpectEqual(ContentOf(run.directory), before);
  EXPECT_TRUE(place_.IsEmpty());
  return plan;
}

RunReport PlanTest::Run(const telemetry::host::DirectoryRun& run) {
  const shared::StorageOptionsScope kept(shared::GetStorageOptions());
  shared::SetDataDirectory(run.directory.string());
  return telemetry::host::Run(module_, run);
}

}  // namespace corvo::test
