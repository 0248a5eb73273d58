#include <gtest/gtest.h>

#include "contracts/collection.h"
#include "support/own_slot_itanium.h"

namespace corvo::test {
namespace {

using telemetry::common::collection::ContractsCollection;
using telemetry::common::collection::DatabasesCollection;
using telemetry::common::collection::MessageCollection;

template <class Base>
struct Derived : Base {
  virtual void Own() {}
};

TEST(CollectionSlots, AreThoseOfItsDestructorAlone) { EXPECT_EQ(SlotOf(&Derived<MessageCollection>::Own), 2U); }

TEST(CollectionSlots, OfTheDerivedListsAreNoMore) {
  EXPECT_EQ(SlotOf(&Derived<ContractsCollection>::Own), 2U);
  EXPECT_EQ(SlotOf(&Derived<DatabasesCollection>::Own), 2U);
}

}  // namespace
}  // namespace corvo::test
