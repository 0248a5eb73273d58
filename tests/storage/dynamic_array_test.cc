// The container of results.
#include <gtest/gtest.h>

#include <memory>
#include <type_traits>
#include <utility>

#include "storage/results.h"

namespace corvo::test {
namespace {

using shared::Column;
using shared::DynamicArray;

TEST(DynamicArray, HasThatManyValueInitialisedElements) {
  const DynamicArray<int> array(3);

  EXPECT_EQ(array.count, 3);
  EXPECT_EQ(array[0], 0);
  EXPECT_EQ(array[2], 0);
  EXPECT_EQ(&array[1], array.elements + 1);
}

TEST(DynamicArray, OfNoSizeIsEmpty) {
  EXPECT_EQ(DynamicArray<int>().count, 0);
  EXPECT_EQ(DynamicArray<int>(0).count, 0);
  EXPECT_EQ(DynamicArray<int>(-1).count, 0);
}

TEST(DynamicArray, IsReadInARangeBasedFor) {
  const DynamicArray<int> array(3);
  int seen = 0;

  for (const int& element : array) {
    EXPECT_EQ(&element, &array[seen++]);
  }

  EXPECT_EQ(seen, 3);
  EXPECT_EQ(array.size(), 3);
}

TEST(DynamicArray, OfNoSizeHasNoRange) {
  const DynamicArray<int> array;

  EXPECT_EQ(array.begin(), array.end());
  EXPECT_EQ(array.size(), 0);
}

TEST(DynamicArray, OfRowsBeginsWithEmptyRows) {
  const DynamicArray<DynamicArray<Column>> rows(1);

  EXPECT_EQ(rows[0].count, 0);
}

TEST(DynamicArray, KeepsItsElementsOnceForAllCopies) {
  const DynamicArray<int> array(1);
  DynamicArray<int> copy;

  copy = array;

  EXPECT_EQ(&copy[0], &array[0]);
}

TEST(DynamicArray, HandsOutNothingThatCouldChangeACopy) {
  const DynamicArray<int> array(1);

  static_assert(std::is_same_v<decltype(array[0]), const int&>);
  static_assert(std::is_same_v<decltype(array.elements), const int*>);
}

TEST(DynamicArray, KeepsItsElementsUntilTheLastCopyIsGone) {
  std::shared_ptr<std::shared_ptr<int>[]> elements(new std::shared_ptr<int>[1]);
  elements[0] = std::make_shared<int>(7);
  const std::weak_ptr<int> element = elements[0];
  std::shared_ptr<int>* const first = elements.get();
  DynamicArray<std::shared_ptr<int>> array(std::move(elements), first, 1);

  DynamicArray<std::shared_ptr<int>> copy(array);
  array = DynamicArray<std::shared_ptr<int>>();
  EXPECT_FALSE(element.expired());
  copy = DynamicArray<std::shared_ptr<int>>();
  EXPECT_TRUE(element.expired());
}

TEST(DynamicArray, IsEmptyAfterItsElementsMovedAway) {
  DynamicArray<int> array(2);
  DynamicArray<int> moved(std::move(array));
  EXPECT_EQ(array.count, 0);  // NOLINT(bugprone-use-after-move): what is tested
  EXPECT_EQ(array.elements, nullptr);

  array = std::move(moved);
  EXPECT_EQ(array.count, 2);
  EXPECT_EQ(moved.count, 0);  // NOLINT(bugprone-use-after-move): what is tested
}

TEST(Column, ReadsAsEmptyTextByDefault) { EXPECT_STREQ(Column().GetColumnValue(), ""); }

}  // namespace
}  // namespace corvo::test
