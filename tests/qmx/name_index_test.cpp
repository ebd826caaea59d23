// Tests the index of a growing list: it finds the first of equal names, for any number of names, and after it was cleared.
#include "qmx/name_index.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class NameIndexTest : public ::testing::Test {
 protected:
  bool Add(const std::string& name) {
    names_.push_back(name);
    const auto position = static_cast<std::uint32_t>(names_.size() - 1);
    return index_.Add(name, position, [this](std::uint32_t at) { return std::string_view(names_[at]); });
  }

  std::optional<std::uint32_t> Find(const std::string& name) const {
    return index_.Find(name, [this](std::uint32_t at) { return std::string_view(names_[at]); });
  }

  std::vector<std::string> names_;
  qmx::NameIndex index_;
};

TEST_F(NameIndexTest, FindsFirst) {
  EXPECT_TRUE(Add("b"));
  EXPECT_TRUE(Add("a"));
  EXPECT_FALSE(Add("b"));
  EXPECT_TRUE(Add(""));
  EXPECT_FALSE(Add(""));
  EXPECT_EQ(Find("b"), 0u);
  EXPECT_EQ(Find("a"), 1u);
  EXPECT_EQ(Find(""), 3u);
  EXPECT_EQ(Find("c"), std::nullopt);
  EXPECT_EQ(Find("aa"), std::nullopt);
}

TEST_F(NameIndexTest, GrowsWithoutLosingNames) {
  for (std::uint32_t i = 0; i < 10'000; ++i) ASSERT_TRUE(Add("name" + std::to_string(i)));
  for (std::uint32_t i = 0; i < 10'000; ++i) ASSERT_EQ(Find("name" + std::to_string(i)), i);
  EXPECT_EQ(Find("name10000"), std::nullopt);
  EXPECT_FALSE(Add("name7"));
  EXPECT_EQ(Find("name7"), 7u);
}

TEST_F(NameIndexTest, ForgetsAllNames) {
  for (int i = 0; i < 1'000; ++i) Add("name" + std::to_string(i));
  index_.Clear();
  names_.clear();
  EXPECT_EQ(Find("name7"), std::nullopt);
  EXPECT_TRUE(Add("name7"));
  EXPECT_EQ(Find("name7"), 0u);
}

}  // namespace
