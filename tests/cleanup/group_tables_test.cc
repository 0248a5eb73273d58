#include <gtest/gtest.h>

#include "cleanup/database_map.h"
#include "cleanup/engine_fixture.h"
#include "contracts/catalogue.h"

namespace corvo::test {
namespace {

using google::protobuf::Message;
using telemetry::cleanup::GroupTablesByDatabase;
using telemetry::common::collection::ContractsCollection;
using testing::ElementsAre;
using testing::IsSupersetOf;

class GroupTables : public EngineTest {
 protected:
  DatabaseMap Group(const std::vector<Message*>& messages) {
    ContractsCollection collection;
    for (Message* message : messages) {
      collection.Add(message);
    }
    DatabaseMap map;
    GroupTablesByDatabase(collection, map);
    return map;
  }

  Message* Contract(const std::string& type, const std::string& database) {
    return contracts.Make(type, {.database = database});
  }

  static std::vector<std::string> Keys(const DatabaseMap& map) {
    std::vector<std::string> keys;
    for (const auto& [key, entry] : map) {
      keys.push_back(key);
    }
    return keys;
  }
};

TEST_F(GroupTables, NoContractsMakeNoDatabases) { EXPECT_TRUE(Group({}).empty()); }

class ExcludedName : public GroupTables, public testing::WithParamInterface<const char*> {};

TEST_P(ExcludedName, IsNeverCleaned) { EXPECT_TRUE(Group({Contract("A", GetParam())}).empty()); }

INSTANTIATE_TEST_SUITE_P(Spellings, ExcludedName, testing::Values("State", "STATE", "state", "sTaTe"));

class SimilarName : public GroupTables, public testing::WithParamInterface<const char*> {};

TEST_P(SimilarName, IsCleaned) { EXPECT_EQ(Group({Contract("A", GetParam())}).size(), 1U); }

INSTANTIATE_TEST_SUITE_P(Spellings, SimilarName, testing::Values("States", "Stat", "State ", " state", "state.db"));

TEST_F(GroupTables, NamesThatDifferInCaseOnlyShareAnEntry) {
  auto* a = Contract("A", "HealthLog");
  auto* b = Contract("B", "HEALTHlog");
  const DatabaseMap map = Group({a, b});
  EXPECT_THAT(Keys(map), ElementsAre("healthlog"));
  EXPECT_THAT(map.at("healthlog").contracts, ElementsAre(a, b));
}

TEST_F(GroupTables, TypesWithoutADatabaseShareTheEmptyKey) {
  auto* a = contracts.MakeWithoutOptions("A");
  auto* b = Contract("B", "");
  const DatabaseMap map = Group({a, b});
  EXPECT_THAT(Keys(map), ElementsAre(""));
  EXPECT_THAT(map.at("").contracts, ElementsAre(a, b));
}

TEST_F(GroupTables, KeysAscendByBytesAndContractsKeepTheirOrder) {
  auto* a = Contract("A", "b");
  auto* c = Contract("C", "b");
  const DatabaseMap map =
      Group({a, Contract("B", "a_"), c, Contract("D", "ab"), Contract("E", "A"), Contract("F", "\xC3\xA4")});
  EXPECT_THAT(Keys(map), ElementsAre("a", "a_", "ab", "b", "\xC3\xA4"));
  EXPECT_THAT(map.at("b").contracts, ElementsAre(a, c));
}

TEST_F(GroupTables, KeyEndsAtAZeroByte) {
  EXPECT_THAT(Keys(Group({Contract("A", std::string("Log\0more", 8))})), ElementsAre("log"));
}

TEST_F(GroupTables, ConsumesTheCollectionFromItsCursorOn) {
  ContractsCollection collection;
  collection.Add(Contract("A", "one"));
  collection.Add(Contract("B", "two"));
  static_cast<void>(collection.Next());
  DatabaseMap map;
  GroupTablesByDatabase(collection, map);
  EXPECT_THAT(Keys(map), ElementsAre("two"));
  EXPECT_FALSE(collection.HasMore());
}

TEST_F(GroupTables, AddsToWhatTheMapHolds) {
  DatabaseMap map{{"log", {7, {nullptr}}}};
  ContractsCollection collection;
  auto* a = Contract("A", "Log");
  collection.Add(a);
  GroupTablesByDatabase(collection, map);
  EXPECT_EQ(map.at("log").max_size_mb, 0U);
  EXPECT_THAT(map.at("log").contracts, ElementsAre(nullptr, a));
}

TEST_F(GroupTables, LimitIsThatOfTheDatabaseOfTheSameNameInStorage) {
  CreateDatabase("HealthLog", "T", 0);
  EXPECT_EQ(Group({Contract("A", "HealthLog")}).at("healthlog").max_size_mb, 100U);
}

TEST_F(GroupTables, ContractsOwnSizeLimitDoesNotCount) {
  CreateDatabase("HealthLog", "T", 0);
  auto* a = contracts.Make("A", {.database = "HealthLog", .max_size_mb = 5});
  EXPECT_EQ(Group({a}).at("healthlog").max_size_mb, 100U);
}

TEST_F(GroupTables, DatabaseUnknownToTheCatalogueHasNoLimit) {
  CreateDatabase("Private", "T", 0);
  auto* a = contracts.Make("A", {.database = "Private", .max_size_mb = 5});
  EXPECT_EQ(Group({a}).at("private").max_size_mb, 0U);
}

TEST_F(GroupTables, NamesAreMatchedWithTheirCase) {
  CreateDatabase("HealthLog", "T", 0);
  CreateDatabase("healthlog", "T", 0);
  EXPECT_EQ(Group({Contract("A", "healthlog")}).at("healthlog").max_size_mb, 0U);
}

TEST_F(GroupTables, LastContractOfADatabaseDecidesItsLimit) {
  CreateDatabase("HealthLog", "T", 0);
  CreateDatabase("healthlog", "T", 0);
  auto* known = Contract("A", "HealthLog");
  auto* unknown = Contract("B", "healthlog");
  EXPECT_EQ(Group({known, unknown}).at("healthlog").max_size_mb, 0U);
  EXPECT_EQ(Group({unknown, known}).at("healthlog").max_size_mb, 100U);
}

TEST_F(GroupTables, MissingDatabaseCountsUnderTheNameOfTheType) {
  // Neither file exists, so both the contract and the database of that name go by the name of their types.
  EXPECT_EQ(Group({Contract("Cache", "Private")}).at("private").max_size_mb, 20U);
  EXPECT_EQ(Group({Contract("A", "HealthLog")}).at("healthlog").max_size_mb, 0U);
}

TEST_F(GroupTables, WholeCatalogueMakesItsDatabasesWithTheirLimits) {
  for (const Message* database : telemetry::contracts::DatabaseCatalogue()) {
    CreateDatabase(database->GetDescriptor()->name(), "T", 0);
  }
  std::vector<std::pair<std::string, std::uint32_t>> limits;
  for (const auto& [key, entry] : Group(telemetry::contracts::ContractCatalogue())) {
    limits.emplace_back(key, entry.max_size_mb);
  }
  EXPECT_EQ(limits.size(), telemetry::contracts::DatabaseCatalogue().size());
  EXPECT_THAT(limits, IsSupersetOf({std::pair("cache", 20U), std::pair("deviceprofile", 50U),
                                    std::pair("deviceprofileevents", 20U), std::pair("deviceusage", 0U),
                                    std::pair("healthlog", 100U), std::pair("performancesamples", 200U)}));
}

}  // namespace
}  // namespace corvo::test
