// Rules that every data contract keeps, so that a pass can clean its table.

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "contracts/catalogue.h"
#include "contracts/lookups.h"
#include "support/patterns.h"

namespace corvo::test {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using telemetry::contract::storage::persistance;
using telemetry::contract::storage::PersistanceMessageOptions;
using telemetry::contract::storage::TableOptions;
using telemetry::contracts::ContractCatalogue;
using telemetry::contracts::DatabaseCatalogue;
using telemetry::contracts::GetPersistance;
using telemetry::contracts::GetTableName;

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) { return std::tolower(letter); });
  return text;
}

std::vector<const Message*> ContractsOf(const Message& database) {
  std::vector<const Message*> contracts;
  for (const Message* contract : ContractCatalogue()) {
    if (GetPersistance(*contract).database() == GetPersistance(database).database()) {
      contracts.push_back(contract);
    }
  }
  return contracts;
}

/// One catalogued type, shown by its name.
struct Type {
  const Message* message;

  friend void PrintTo(const Type& type, std::ostream* stream) { *stream << type.message->GetDescriptor()->name(); }
};

std::vector<Type> Types(const std::vector<Message*>& catalogue) {
  std::vector<Type> types;
  for (const Message* message : catalogue) {
    types.push_back({message});
  }
  return types;
}

class DataContract : public testing::TestWithParam<Type> {
 protected:
  const google::protobuf::Descriptor& type_ = *GetParam().message->GetDescriptor();
  const PersistanceMessageOptions& options_ = GetPersistance(*GetParam().message);
};

TEST_P(DataContract, BeginsWithTheTimeThatExpiryReads) {
  ASSERT_GT(type_.field_count(), 0);
  EXPECT_EQ(type_.field(0)->name(), "time");
  EXPECT_EQ(type_.field(0)->number(), 1);
  EXPECT_EQ(type_.field(0)->type(), FieldDescriptor::TYPE_STRING);
}

TEST_P(DataContract, HasFurtherFieldsThatMakeColumns) {
  EXPECT_GE(type_.field_count(), 5);
  EXPECT_LE(type_.field_count(), 10);
  for (int index = 0; index < type_.field_count(); ++index) {
    EXPECT_FALSE(type_.field(index)->is_repeated()) << type_.field(index)->name();
    EXPECT_NE(type_.field(index)->cpp_type(), FieldDescriptor::CPPTYPE_MESSAGE) << type_.field(index)->name();
  }
}

TEST_P(DataContract, SaysWhereItsRowsAreKept) {
  EXPECT_TRUE(type_.options().HasExtension(persistance));
  EXPECT_TRUE(options_.has_database_options());
  EXPECT_TRUE(options_.has_table_options());
  EXPECT_NE(Lower(options_.database()), "state");
}

TEST_P(DataContract, RepeatsTheSizeLimitOfItsDatabase) {
  const auto& databases = DatabaseCatalogue();
  const auto database = std::find_if(databases.begin(), databases.end(), [this](const Message* candidate) {
    return GetPersistance(*candidate).database() == options_.database();
  });
  ASSERT_NE(database, databases.end()) << options_.database();
  EXPECT_EQ(options_.database_options().max_size_mb(), GetPersistance(**database).database_options().max_size_mb());
}

TEST_P(DataContract, HasATableNameThatNeedsNoQuotes) {
  EXPECT_THAT(GetTableName(GetParam().message), MatchesPattern("[A-Za-z][A-Za-z0-9_]*"));
}

INSTANTIATE_TEST_SUITE_P(All, DataContract, testing::ValuesIn(Types(ContractCatalogue())));

class DatabaseContract : public testing::TestWithParam<Type> {};

TEST_P(DatabaseContract, IsNamedAfterTheDatabaseAndHasNoFields) {
  EXPECT_EQ(GetParam().message->GetDescriptor()->name(), GetPersistance(*GetParam().message).database());
  EXPECT_EQ(GetParam().message->GetDescriptor()->field_count(), 0);
}

TEST_P(DatabaseContract, HasTablesWhoseNamesDifferInMoreThanLetterCase) {
  const auto contracts = ContractsOf(*GetParam().message);
  std::set<std::string> names;
  for (const Message* contract : contracts) {
    names.insert(Lower(GetTableName(contract)));
  }
  EXPECT_FALSE(names.empty());
  EXPECT_EQ(names.size(), contracts.size());
}

// A pass writes the last contract's options over those of the first, for later passes of the same process.
TEST_P(DatabaseContract, EndsWithAContractWhoseOptionsDoTheFirstTableNoHarm) {
  const auto contracts = ContractsOf(*GetParam().message);
  const TableOptions& first = GetPersistance(*contracts.front()).table_options();
  const TableOptions& last = GetPersistance(*contracts.back()).table_options();
  const auto no_stricter = [](std::uint32_t written, std::uint32_t own) {
    return written == 0 || (own != 0 && written >= own);
  };
  EXPECT_EQ(first.table_name(), last.table_name());
  EXPECT_TRUE(no_stricter(last.max_rows(), first.max_rows()));
  EXPECT_TRUE(no_stricter(last.retention_days(), first.retention_days()));
}

INSTANTIATE_TEST_SUITE_P(All, DatabaseContract, testing::ValuesIn(Types(DatabaseCatalogue())));

TEST(DataContracts, UseAnExtensionNumberOfTheRangeForUseWithinAnOrganisation) {
  EXPECT_GE(persistance.number(), 50'000);
  EXPECT_LE(persistance.number(), 99'999);
}

TEST(DataContracts, LeaveOutEachKindOfLimitSomewhere) {
  const auto some = [](const auto& limit) {
    return std::any_of(ContractCatalogue().begin(), ContractCatalogue().end(),
                       [&limit](const Message* contract) { return limit(GetPersistance(*contract)) == 0; });
  };
  EXPECT_TRUE(some([](const auto& options) { return options.table_options().max_rows(); }));
  EXPECT_TRUE(some([](const auto& options) { return options.table_options().retention_days(); }));
  EXPECT_TRUE(some([](const auto& options) { return options.database_options().max_size_mb(); }));
}

}  // namespace
}  // namespace corvo::test
