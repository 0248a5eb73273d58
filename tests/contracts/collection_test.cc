#include "contracts/collection.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "test_contracts.pb.h"

namespace corvo::test {
namespace {

using google::protobuf::Message;
using telemetry::common::collection::Collection;
using telemetry::common::collection::ContractsCollection;
using telemetry::common::collection::DatabasesCollection;

template <class T>
class CollectionOf : public testing::Test {
 protected:
  T collection;
  PlainSamples first;
  PlainEvents second;
  Limited third;
};

using Types = testing::Types<Collection<Message*, std::vector<Message*>>, ContractsCollection, DatabasesCollection>;
TYPED_TEST_SUITE(CollectionOf, Types);

TYPED_TEST(CollectionOf, HasNothingAtFirst) {
  EXPECT_FALSE(this->collection.HasMore());
  EXPECT_EQ(this->collection.Next(), nullptr);
  EXPECT_EQ(this->collection.Next(), nullptr);
}

TYPED_TEST(CollectionOf, HandsOutTheElementsInInsertionOrder) {
  for (Message* message : {static_cast<Message*>(&this->first), static_cast<Message*>(&this->second)}) {
    this->collection.Add(message);
  }
  EXPECT_EQ(this->collection.Next(), &this->first);
  EXPECT_TRUE(this->collection.HasMore());
  EXPECT_EQ(this->collection.Next(), &this->second);
  EXPECT_FALSE(this->collection.HasMore());
}

TYPED_TEST(CollectionOf, HandsOutNothingBehindTheLastElement) {
  this->collection.Add(&this->first);
  static_cast<void>(this->collection.Next());
  EXPECT_EQ(this->collection.Next(), nullptr);
  EXPECT_EQ(this->collection.Next(), nullptr);
  EXPECT_FALSE(this->collection.HasMore());
}

TYPED_TEST(CollectionOf, AddingRewindsToTheFirstElement) {
  this->collection.Add(&this->first);
  this->collection.Add(&this->second);
  static_cast<void>(this->collection.Next());
  static_cast<void>(this->collection.Next());
  this->collection.Add(&this->third);
  EXPECT_TRUE(this->collection.HasMore());
  EXPECT_EQ(this->collection.Next(), &this->first);
  EXPECT_EQ(this->collection.Next(), &this->second);
  EXPECT_EQ(this->collection.Next(), &this->third);
}

TYPED_TEST(CollectionOf, RewindStartsOver) {
  this->collection.Add(&this->first);
  static_cast<void>(this->collection.Next());
  this->collection.Rewind();
  EXPECT_TRUE(this->collection.HasMore());
  EXPECT_EQ(this->collection.Next(), &this->first);
}

TYPED_TEST(CollectionOf, RewindingAnEmptyOneLeavesItEmpty) {
  this->collection.Rewind();
  EXPECT_FALSE(this->collection.HasMore());
  EXPECT_EQ(this->collection.Next(), nullptr);
}

TYPED_TEST(CollectionOf, KeepsAnElementAddedTwiceTwice) {
  this->collection.Add(&this->first);
  this->collection.Add(&this->first);
  EXPECT_EQ(this->collection.Next(), &this->first);
  EXPECT_EQ(this->collection.Next(), &this->first);
  EXPECT_FALSE(this->collection.HasMore());
}

TYPED_TEST(CollectionOf, StaysCorrectWhileItGrows) {
  constexpr int kCount = 1000;
  for (int index = 0; index < kCount; ++index) {
    this->collection.Add(index % 2 == 0 ? static_cast<Message*>(&this->first) : &this->second);
  }
  int count = 0;
  while (this->collection.HasMore()) {
    EXPECT_EQ(this->collection.Next(), count % 2 == 0 ? static_cast<Message*>(&this->first) : &this->second);
    ++count;
  }
  EXPECT_EQ(count, kCount);
}

TEST(Collection, NeverDeletesItsMessages) {
  PlainSamples message;
  message.set_time("kept");
  {
    ContractsCollection collection;
    collection.Add(&message);
  }
  EXPECT_EQ(message.time(), "kept");
}

TEST(Collection, DerivedListsAddNothingButTheirType) {
  using Base = Collection<Message*, std::vector<Message*>>;
  static_assert(std::is_base_of_v<Base, ContractsCollection> && std::is_base_of_v<Base, DatabasesCollection>);
  static_assert(!std::is_same_v<ContractsCollection, DatabasesCollection>);
  static_assert(std::has_virtual_destructor_v<Base>);
  EXPECT_EQ(sizeof(ContractsCollection), sizeof(Base));
  EXPECT_EQ(sizeof(DatabasesCollection), sizeof(Base));
}

}  // namespace
}  // namespace corvo::test
