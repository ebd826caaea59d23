// Tests the index of a growing list: it finds the first of equal names, for any number of names, and after it was cleared. Also
// tests NameFinder and HaveUniqueNames, which use it.
#include "base/name_index.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <set>
#include <string>

#include "base/keyed_hash.h"
#include "base/name_finder.h"

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
  korvel::NameIndex index_;
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

struct Named {
  std::string name;
};

// The first searches read the list, later ones the index.
TEST(NameFinder, FindsFirstByScanAndByIndex) {
  const std::vector<Named> items{{"b"}, {"a"}, {"b"}, {""}};
  korvel::NameFinder finder(items);
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(finder.Find("a"), 1u) << i;
    EXPECT_EQ(finder.Find("b"), 0u) << i;
    EXPECT_EQ(finder.Find(""), 3u) << i;
    EXPECT_EQ(finder.Find("c"), korvel::kNowhere) << i;
  }
}

TEST(NameFinder, FindsNothingInEmptyList) {
  const std::vector<Named> items;
  korvel::NameFinder finder(items);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(finder.Find(""), korvel::kNowhere) << i;
}

TEST(HaveUniqueNames, ComparesAllNames) {
  std::vector<Named> items;
  EXPECT_TRUE(korvel::HaveUniqueNames(items));
  for (int i = 0; i < 1'000; ++i) items.push_back({"name" + std::to_string(i)});
  EXPECT_TRUE(korvel::HaveUniqueNames(items));
  items.push_back({"name0"});
  EXPECT_FALSE(korvel::HaveUniqueNames(items));
}

// Names that collide under one seed do not collide under another, so a file cannot be written for a seed that nobody knows.
TEST(KeyedHash, DependsOnSeedAndText) {
  std::set<std::uint64_t> hashes;
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    for (const char* text : {"", "a", "b", "sixteen bytes ..", "a text that is longer than sixteen bytes"}) {
      EXPECT_TRUE(hashes.insert(korvel::HashWithSeed(text, seed)).second) << text << " with seed " << seed;
    }
  }
  EXPECT_NE(korvel::KeyedHash("a"), korvel::KeyedHash("b"));
}

// The hash of a name in a process of its own.
std::string HashInAnotherProcess() {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe");
  // Shards are those of this process.
  const std::string command =
      "env -u GTEST_TOTAL_SHARDS -u GTEST_SHARD_INDEX " + program + " --gtest_filter=KeyedHash.StaysTheSameInARun";
  std::FILE* const pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return "";
  std::string output;
  char block[256];
  while (const std::size_t size = std::fread(block, 1, sizeof block, pipe)) output.append(block, size);
  ::pclose(pipe);
  const std::size_t begin = output.find("hash ");
  return begin == std::string::npos ? "" : output.substr(begin, output.find('\n', begin) - begin);
}

TEST(KeyedHash, StaysTheSameInARun) {
  EXPECT_EQ(korvel::KeyedHash("name"), korvel::KeyedHash("name"));
  std::printf("hash %016llx\n", static_cast<unsigned long long>(korvel::KeyedHash("name")));
}

TEST(KeyedHash, DiffersFromRunToRun) {
  const std::string first = HashInAnotherProcess();
  EXPECT_EQ(first.size(), 21u) << first;
  EXPECT_NE(first, HashInAnotherProcess());
}

}  // namespace
