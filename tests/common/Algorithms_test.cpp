#include "common/Algorithms.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

using Entry = std::pair<std::string, int>;

bool ByName(const Entry& left, const Entry& right) { return left.first < right.first; }

int NameAgainstKey(const std::string& key, const Entry& entry) { return entry.first.compare(key); }

TEST(InsertSorted, KeepsTheListInOrderWhateverTheOrderOfArrival) {
  std::list<Entry> list;
  for (const char* name : {"m", "a", "z", "f"}) insert_sorted(list, Entry(name, 0), ByName);
  std::string names;
  for (const auto& entry : list) names += entry.first;
  EXPECT_EQ(names, "afmz");
}

TEST(InsertSorted, PutsAnEqualElementBehindItsEquals) {
  std::list<Entry> list;
  for (int i = 0; i < 3; ++i) insert_sorted(list, Entry("b", i), ByName);
  insert_sorted(list, Entry("a", 9), ByName);
  std::vector<int> numbers;
  for (const auto& entry : list) numbers.push_back(entry.second);
  EXPECT_EQ(numbers, (std::vector<int>{9, 0, 1, 2}));
}

TEST(InsertSorted, ReturnsThePlaceOfTheNewElement) {
  std::list<Entry> list{{"a", 0}, {"c", 0}};
  const auto place = insert_sorted(list, Entry("b", 7), ByName);
  EXPECT_EQ(place->second, 7);
  EXPECT_EQ(std::distance(list.begin(), place), 1);
}

TEST(BinarySearch, OfAnEmptyListIsTheEnd) {
  std::list<Entry> list;
  EXPECT_EQ(::binary_search(list, std::string("a"), NameAgainstKey), list.end());
}

TEST(BinarySearch, FindsEveryElementAndNothingElse) {
  std::list<Entry> list{{"b", 1}, {"d", 2}, {"f", 3}};
  for (const auto& entry : list) {
    const auto found = ::binary_search(list, entry.first, NameAgainstKey);
    ASSERT_NE(found, list.end()) << entry.first;
    EXPECT_EQ(found->second, entry.second);
  }
  for (const char* missing : {"", "a", "c", "e", "g", "bb"})
    EXPECT_EQ(::binary_search(list, std::string(missing), NameAgainstKey), list.end()) << missing;
}

TEST(BinarySearch, FindsTheLastOfEquals) {
  std::list<Entry> list{{"b", 1}, {"b", 2}, {"c", 3}};
  EXPECT_EQ(::binary_search(list, std::string("b"), NameAgainstKey)->second, 2);
}

TEST(BinarySearch, WithoutAComparatorUsesTheElementsOwnOrder) {
  std::list<int> list{1, 3, 5};
  EXPECT_EQ(*::binary_search(list, 3), 3);
  for (const int missing : {0, 2, 4, 6}) EXPECT_EQ(::binary_search(list, missing), list.end()) << missing;
  std::list<int> empty;
  EXPECT_EQ(::binary_search(empty, 3), empty.end());
}

}  // namespace
