#include "contracts/lookups.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "contracts/catalogue.h"
#include "corvo/telemetry/contract/storage/databases.pb.h"
#include "corvo/telemetry/contract/storage/device_profile.pb.h"
#include "storage/database_name.h"
#include "storage/storage_options.h"
#include "support/database.h"
#include "support/log_capture.h"
#include "support/temp_dir.h"
#include "test_contracts.pb.h"

namespace corvo::test {
namespace {

using google::protobuf::Message;
using shared::RemoveDatabaseExtension;
using telemetry::contract::storage::device_profile::HwBattery;
using telemetry::contracts::ContractCatalogue;
using telemetry::contracts::DatabaseCatalogue;
using telemetry::contracts::GetDatabaseName;
using telemetry::contracts::GetPersistance;
using telemetry::contracts::GetTableName;

struct NameCase {
  const Message* contract;
  const char* name;

  friend void PrintTo(const NameCase& value, std::ostream* stream) { *stream << value.name; }
};

class TableNameOf : public testing::TestWithParam<NameCase> {};

TEST_P(TableNameOf, IsTheOptionElseTheShortTypeName) { EXPECT_EQ(GetTableName(GetParam().contract), GetParam().name); }

INSTANTIATE_TEST_SUITE_P(, TableNameOf,
                         testing::Values(NameCase{nullptr, ""}, NameCase{&NoOptions::default_instance(), "NoOptions"},
                                         NameCase{&EmptyOptions::default_instance(), "EmptyOptions"},
                                         NameCase{&PlainSamples::default_instance(), "PlainSamples"},
                                         NameCase{&EmptyTableName::default_instance(), "EmptyTableName"},
                                         NameCase{&NamedTable::default_instance(), "Explicit_Table"},
                                         NameCase{&NoDatabase::default_instance(), "Homeless"},
                                         NameCase{&HwBattery::default_instance(), "HwBattery"}));

TEST(GetTableName, DoesNotReadTheMessagesFields) {
  PlainSamples message;
  message.set_time("2024-05-01T12:30:00+00:00");
  EXPECT_EQ(GetTableName(&message), "PlainSamples");
}

/// A data directory with nothing in it.
class GetDatabaseNameTest : public testing::Test {
 protected:
  GetDatabaseNameTest() { shared::SetDataDirectory(directory.Path().string()); }
  ~GetDatabaseNameTest() override { shared::SetDataDirectory(""); }

  void CreateDatabase(const std::string& file) const {
    Database(directory / file).Run("CREATE TABLE IF NOT EXISTS t(c)");
  }

  TempDir directory;
};

TEST_F(GetDatabaseNameTest, OfNullIsEmpty) { EXPECT_EQ(GetDatabaseName(nullptr), ""); }

TEST_F(GetDatabaseNameTest, IsTheStoragesNameWithoutExtension) {
  CreateDatabase("Plain.db");
  EXPECT_EQ(GetDatabaseName(&PlainSamples::default_instance()), "Plain");
  EXPECT_EQ(GetDatabaseName(&NamedTable::default_instance()), "Plain");
}

TEST_F(GetDatabaseNameTest, KeepsTheLetterCaseOfTheOption) {
  CreateDatabase("MixedCase.db");
  EXPECT_EQ(GetDatabaseName(&CaseA::default_instance()), "MixedCase");
}

TEST_F(GetDatabaseNameTest, IsTheShortTypeNameWhenTheFileIsMissing) {
  EXPECT_EQ(GetDatabaseName(&PlainSamples::default_instance()), "PlainSamples");
  EXPECT_EQ(GetDatabaseName(&HwBattery::default_instance()), "HwBattery");
  EXPECT_EQ(GetDatabaseName(&telemetry::contract::storage::Cache::default_instance()), "Cache");
}

TEST_F(GetDatabaseNameTest, IsTheShortTypeNameWhenNoDatabaseIsNamed) {
  CreateDatabase("NoDatabase.db");
  EXPECT_EQ(GetDatabaseName(&NoOptions::default_instance()), "NoOptions");
  EXPECT_EQ(GetDatabaseName(&EmptyOptions::default_instance()), "EmptyOptions");
  EXPECT_EQ(GetDatabaseName(&NoDatabase::default_instance()), "NoDatabase");
}

TEST_F(GetDatabaseNameTest, IsTheShortTypeNameWhenTheFileCannotBeOpened) {
  std::filesystem::create_directory(directory / "Plain.db");
  EXPECT_EQ(GetDatabaseName(&PlainSamples::default_instance()), "PlainSamples");
}

TEST_F(GetDatabaseNameTest, FallsBackWithoutALogRecord) {
  const LogCapture log;
  static_cast<void>(GetDatabaseName(&PlainSamples::default_instance()));
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(GetDatabaseNameTest, CreatesNoFile) {
  static_cast<void>(GetDatabaseName(&PlainSamples::default_instance()));
  EXPECT_TRUE(std::filesystem::is_empty(directory.Path()));
}

// The storage appends ".db" to whatever the option says, and only that one is cut off again.
TEST_F(GetDatabaseNameTest, CutsOffOneExtensionOnly) {
  CreateDatabase("a.db.db");
  CreateDatabase("a.db.db.db");
  EXPECT_EQ(GetDatabaseName(&DatabaseWithExtension::default_instance()), "a.db");
  EXPECT_EQ(GetDatabaseName(&DatabaseWithTwoExtensions::default_instance()), "a.db.db");
}

TEST_F(GetDatabaseNameTest, KeepsNamesThatLookLikeAnExtension) {
  CreateDatabase("HealthLog.DB.db");
  CreateDatabase(".DB.db");
  CreateDatabase(".db.db");
  EXPECT_EQ(GetDatabaseName(&DatabaseWithUpperExtension::default_instance()), "HealthLog.DB");
  EXPECT_EQ(GetDatabaseName(&DatabaseIsUpperExtension::default_instance()), ".DB");
  EXPECT_EQ(GetDatabaseName(&DatabaseIsExtension::default_instance()), ".db");
}

TEST_F(GetDatabaseNameTest, OfTheDatabaseCatalogueAreTheTypeNames) {
  for (const bool files_exist : {false, true}) {
    for (const Message* message : DatabaseCatalogue()) {
      EXPECT_EQ(GetDatabaseName(message), message->GetDescriptor()->name()) << "files exist: " << files_exist;
      CreateDatabase(message->GetDescriptor()->name() + ".db");
    }
  }
}

TEST_F(GetDatabaseNameTest, OfTheContractCatalogueAreTheirDatabasesOnceTheFilesExist) {
  for (const Message* message : DatabaseCatalogue()) {
    CreateDatabase(message->GetDescriptor()->name() + ".db");
  }
  for (const Message* message : ContractCatalogue()) {
    EXPECT_EQ(GetDatabaseName(message), GetPersistance(*message).database()) << message->GetDescriptor()->name();
  }
}

struct ExtensionCase {
  const char* name;
  const char* expected;

  friend void PrintTo(const ExtensionCase& value, std::ostream* stream) { *stream << value.name; }
};

class DatabaseExtension : public testing::TestWithParam<ExtensionCase> {};

TEST_P(DatabaseExtension, IsCutOffOnceAtTheEndOfALongerName) {
  EXPECT_EQ(RemoveDatabaseExtension(GetParam().name), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(, DatabaseExtension,
                         testing::Values(ExtensionCase{"HealthLog.db", "HealthLog"},
                                         ExtensionCase{"HealthLog.DB", "HealthLog.DB"},
                                         ExtensionCase{"HealthLog.Db", "HealthLog.Db"},
                                         ExtensionCase{"a.db.db", "a.db"}, ExtensionCase{".db", ".db"},
                                         ExtensionCase{"x.db", "x"}, ExtensionCase{".db.db", ".db"},
                                         ExtensionCase{"db", "db"}, ExtensionCase{"", ""},
                                         ExtensionCase{"HealthLog", "HealthLog"}, ExtensionCase{"a.db ", "a.db "},
                                         ExtensionCase{"a.db.bak", "a.db.bak"}, ExtensionCase{"a_db", "a_db"}));

}  // namespace
}  // namespace corvo::test
