#include "host/conditions.h"

#include <filesystem>
#include <fstream>
#include <memory>

#include "support/database.h"

namespace corvo::test {
namespace {

namespace fs = std::filesystem;

void Fill(const std::string& data) {
  ASSERT_EQ(RunHost({"generate", "--data-dir", data, "--scale", "0.01"}).exit_code, 0);
}

const Answer kHoldsDatabases = {2, "already holds databases"};

TEST_P(EachCommand, RunsOrSaysWhyNot) {
  Expect({"run", "--data-dir", data_, "--busy-timeout", "0"}, GetParam().run);
  ExpectJson({"run", "--data-dir", data_, "--busy-timeout", "0"}, GetParam().run);
}

TEST_P(EachCommand, GeneratesOrSaysWhyNot) {
  Expect({"generate", "--data-dir", data_, "--scale", "0.01"}, GetParam().generate);
}

TEST_P(EachCommand, ShowsTheContracts) { Expect({"contracts"}, GetParam().contracts); }

/// Held until the next one is taken or the test program ends.
void Lock(const std::string& data) {
  static std::unique_ptr<Database> holder;
  Fill(data);
  holder = std::make_unique<Database>(fs::path(data) / "Cache.db");
  holder->Run("BEGIN EXCLUSIVE");
}

INSTANTIATE_TEST_SUITE_P(
    Anywhere, EachCommand,
    testing::Values(Condition{"NoDirectory", [](const std::string&) {}, {10, "does not exist"}, {0, "Generated"}},
                    Condition{"EmptyDirectory",
                              [](const std::string& data) { fs::create_directory(data); },
                              {0, "Nothing to clean"},
                              {0, "Generated"}},
                    Condition{"AFileInItsPlace",
                              [](const std::string& data) { std::ofstream(data) << "text"; },
                              {10, "is not a directory"},
                              {2, "data"}},
                    Condition{"DamagedDatabase",
                              [](const std::string& data) {
                                Fill(data);
                                std::ofstream(fs::path(data) / "Cache.db", std::ios::trunc)
                                    << "no database, but long enough for one";
                              },
                              {1, "not cleaned: Cache (damaged: file is not a database)"},
                              kHoldsDatabases},
                    Condition{"LockedDatabase",
                              &Lock,
                              {1, "not cleaned: Cache (another program holds it locked)"},
                              kHoldsDatabases}),
    NameOfCondition);

}  // namespace
}  // namespace corvo::test
