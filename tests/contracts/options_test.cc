#include <gtest/gtest.h>

#include "contracts/lookups.h"
#include "test_contracts.pb.h"

namespace corvo::test {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using telemetry::contract::storage::DatabaseOptions;
using telemetry::contract::storage::PersistanceMessageOptions;
using telemetry::contract::storage::TableOptions;
using telemetry::contracts::GetPersistance;
using telemetry::contracts::GetTableName;

constexpr std::uint32_t kWidest = 4294967295U;

struct OptionsCase {
  const Message* contract;
  const char* database;
  std::uint32_t max_size_mb;
  const char* table_name;
  std::uint32_t max_rows;
  std::uint32_t retention_days;

  friend void PrintTo(const OptionsCase& value, std::ostream* stream) {
    *stream << value.contract->GetDescriptor()->name();
  }
};

class ContractOptionsOf : public testing::TestWithParam<OptionsCase> {};

TEST_P(ContractOptionsOf, ReadAsWrittenAndElseEmptyAndZero) {
  const OptionsCase& expected = GetParam();
  const PersistanceMessageOptions& options = GetPersistance(*expected.contract);
  EXPECT_EQ(options.database(), expected.database);
  EXPECT_EQ(options.database_options().max_size_mb(), expected.max_size_mb);
  EXPECT_EQ(options.table_options().table_name(), expected.table_name);
  EXPECT_EQ(options.table_options().max_rows(), expected.max_rows);
  EXPECT_EQ(options.table_options().retention_days(), expected.retention_days);
}

INSTANTIATE_TEST_SUITE_P(
    , ContractOptionsOf,
    testing::Values(OptionsCase{&NoOptions::default_instance(), "", 0, "", 0, 0},
                    OptionsCase{&EmptyOptions::default_instance(), "", 0, "", 0, 0},
                    OptionsCase{&NoDatabase::default_instance(), "", 0, "Homeless", 0, 0},
                    OptionsCase{&PlainSamples::default_instance(), "Plain", 0, "", 0, 0},
                    OptionsCase{&NamedTable::default_instance(), "Plain", 0, "Explicit_Table", 0, 0},
                    OptionsCase{&Limited::default_instance(), "Limited", 0, "", 1000, 0},
                    OptionsCase{&WidestLimit::default_instance(), "Limited", 0, "", kWidest, 0},
                    OptionsCase{&Expiring::default_instance(), "Expiring", 0, "", 0, 30},
                    OptionsCase{&WidestRetention::default_instance(), "Expiring", 0, "", 0, kWidest},
                    OptionsCase{&Sized1::default_instance(), "Sized", 1, "First", 11, 21}));

TEST(ContractOptions, OfATypeWithoutTheOptionAreTheDefaultInstance) {
  EXPECT_EQ(&GetPersistance(NoOptions()), &PersistanceMessageOptions::default_instance());
  EXPECT_EQ(&GetPersistance(NoOptions()).table_options(), &TableOptions::default_instance());
}

TEST(ContractOptions, WithoutAPartReadThatPartsDefaultInstance) {
  const PlainSamples plain;
  const PersistanceMessageOptions& options = GetPersistance(plain);
  EXPECT_EQ(&options.database_options(), &DatabaseOptions::default_instance());
  EXPECT_EQ(&options.table_options(), &TableOptions::default_instance());
}

TEST(ContractOptions, AreTheTypesOwnAndNoCopies) {
  const Limited one;
  const Limited other;
  EXPECT_EQ(&GetPersistance(one), &GetPersistance(other));
  EXPECT_NE(&GetPersistance(one), &GetPersistance(Expiring()));
}

TEST(ContractOptions, AreReadAfreshOnEveryLookup) {
  const Sized1 message;
  auto& shared = const_cast<PersistanceMessageOptions&>(GetPersistance(message));
  const PersistanceMessageOptions former = shared;
  ASSERT_EQ(GetTableName(&message), "First");
  shared.CopyFrom(GetPersistance(Sized3()));
  EXPECT_EQ(GetTableName(&message), "Third");
  EXPECT_EQ(GetPersistance(Sized1()).table_options().max_rows(), 13U);
  shared = former;
  EXPECT_EQ(GetTableName(&message), "First");
}

TEST(ContractOptions, NumbersAreUnsigned32Bit) {
  for (const auto* type : {DatabaseOptions::descriptor(), TableOptions::descriptor()}) {
    for (int index = 0; index < type->field_count(); ++index) {
      if (type->field(index)->cpp_type() != FieldDescriptor::CPPTYPE_STRING) {
        EXPECT_EQ(type->field(index)->type(), FieldDescriptor::TYPE_UINT32) << type->field(index)->full_name();
      }
    }
  }
}

TEST(ContractOptions, ListTheRowLimitBeforeTheRetention) {
  const auto* type = TableOptions::descriptor();
  EXPECT_LT(type->FindFieldByName("max_rows")->index(), type->FindFieldByName("retention_days")->index());
}

}  // namespace
}  // namespace corvo::test
