#include <gtest/gtest.h>

#include "common/error.h"
#include "support/own_slot_itanium.h"

namespace corvo::test {
namespace {

struct Derived : telemetry::common::Error {
  virtual void Own() {}
};

// Hosts hold records that the libraries made, and the other way round.
TEST(ErrorSlots, AreThoseOfItsDestructorAlone) { EXPECT_EQ(SlotOf(&Derived::Own), 2U); }

}  // namespace
}  // namespace corvo::test
