#include "vendelo-sdl2/TMappedData.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using vendelo_sdl2::TMappedData;

namespace {

// Makes numbers; 0 for a name that cannot be made.
class Numbers : public TMappedData<int> {
 public:
  int CreateNew(const std::string& name) override {
    asked.push_back(name);
    return failing ? 0 : static_cast<int>(asked.size());
  }
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const Element& element : mMappedData) all.push_back(element.Name);
    return all;
  }
  std::vector<std::string> asked;
  bool failing = false;
};

using Names = std::vector<std::string>;

TEST(MappedData, MakesEachThingOnce) {
  Numbers numbers;
  EXPECT_EQ(1, numbers.GetData("b"));
  EXPECT_EQ(2, numbers.GetData("a"));
  EXPECT_EQ(1, numbers.GetData("b"));
  EXPECT_EQ(2, numbers.GetData("a"));
  EXPECT_EQ((Names{"b", "a"}), numbers.asked);
}

TEST(MappedData, KeepsNamesInTheOrderOfTheirBytes) {
  Numbers numbers;
  for (const char* name : {"b", "", "a", "B", "ab", "\xc4\x8d", "Z"}) numbers.GetData(name);
  EXPECT_EQ((Names{"", "B", "Z", "a", "ab", "b", "\xc4\x8d"}), numbers.names());
}

TEST(MappedData, AFailureIsTriedAgainAndAddsAnElementEachTime) {
  Numbers numbers;
  numbers.failing = true;
  EXPECT_EQ(0, numbers.GetData("a"));
  EXPECT_EQ(0, numbers.GetData("a"));
  EXPECT_EQ((Names{"a", "a"}), numbers.names());
  numbers.failing = false;
  EXPECT_EQ(3, numbers.GetData("a"));
  EXPECT_EQ((Names{"a", "a", "a"}), numbers.names());
  EXPECT_EQ(3, numbers.GetData("a"));  // the last of that name counts
  EXPECT_EQ(3u, numbers.asked.size());
}

TEST(MappedData, InsertGoesBehindEqualNamesAndFindTakesTheLast) {
  Numbers::List list;
  Numbers::insert(list, {"m", 1});
  Numbers::insert(list, {"m", 2});
  Numbers::insert(list, {"c", 3});
  std::vector<int> data;
  for (const auto& element : list) data.push_back(element.Data);
  EXPECT_EQ((std::vector<int>{3, 1, 2}), data);
  EXPECT_EQ(2, Numbers::find(list, "m")->Data);
  EXPECT_EQ(list.end(), Numbers::find(list, "a"));
  EXPECT_EQ(list.end(), Numbers::find(list, "d"));
  EXPECT_EQ(list.end(), Numbers::find(list, "z"));
  Numbers::insert(list, {"m", 0});
  EXPECT_EQ(list.end(), Numbers::find(list, "m"));  // nothing counts as not found
  Numbers::List empty;
  EXPECT_EQ(empty.end(), Numbers::find(empty, "a"));
}

}  // namespace
