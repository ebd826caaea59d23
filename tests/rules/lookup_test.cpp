// Class Lookup, which all rules use for searches, and the index of long lists.
#include "common/lookup.h"

#include <algorithm>
#include <climits>
#include <random>
#include <set>

#include "common/meta_view.h"
#include "rules/rule_test.h"

namespace rules {
namespace {

Library Mall() {
  return Of({{.fields = {{.name = "uid%d", .id = 4}, {.name = "zone", .id = 0}, {.name = "area", .id = 4}, {.name = "tail"}}}});
}

TEST(Position, IsMinusOneIfMissing) {
  const Schema schema = Mall().Build();
  const LPQMXMETA meta = schema.Meta();
  const int count = korvel::EntryCount(meta);
  korvel::Lookup lookup(std::pmr::get_default_resource());
  EXPECT_EQ(lookup.PositionByName(meta, count, "far"), -1);
  EXPECT_EQ(lookup.PositionByName(meta, count, nullptr), -1);
  EXPECT_EQ(lookup.PositionBeforeMissing(meta, "far"), -1);
  EXPECT_EQ(lookup.PositionById(meta, count, 5), -1);
  EXPECT_EQ(lookup.PositionByIdAndName(meta, count, 5, "uid%d"), -1);
  EXPECT_EQ(lookup.PositionByIdAndName(meta, count, 4, "far"), -1);
  EXPECT_EQ(lookup.PositionByIdAndName(meta, count, 4, nullptr), -1);
}

TEST(Position, OfDuplicateIdIsThatOfTheName) {
  const Schema schema = Mall().Build();
  korvel::Lookup lookup(std::pmr::get_default_resource());
  EXPECT_EQ(lookup.PositionById(schema.Meta(), 4, 4), 0);
  EXPECT_EQ(lookup.PositionByIdAndName(schema.Meta(), 4, 4, "area"), 2);
}

// --- The index compared with a linear search, for random keys in random order ---

struct List {
  std::vector<std::string> names;  // an empty one means a missing name
  korvel::NameKey At(int i) const {
    const std::string& name = names[static_cast<std::size_t>(i)];
    return {name.empty() ? nullptr : name.c_str()};
  }
  int Walk(const std::string& wanted) const {
    const auto found = std::ranges::find(names, wanted);
    return found == names.end() ? -1 : static_cast<int>(found - names.begin());
  }
};

List RandomList(std::mt19937_64& random) {
  List list;
  const std::size_t count = 1 + random() % 60;
  const std::size_t different = 1 + random() % 60;
  for (std::size_t i = 0; i < count; ++i) {
    // Some are longer than the block size of the hash.
    const std::string number = std::to_string(random() % different);
    list.names.push_back(random() % 12 == 0 ? "" : random() % 2 == 0 ? "n" + number : "a_long_name_of_number_" + number);
  }
  return list;
}

TEST(KeyIndex, FindsFirstLikeLinearSearch) {
  std::mt19937_64 random(20261121);
  for (int round = 0; round < 2000; ++round) {
    const List list = RandomList(random);
    const auto count = static_cast<int>(list.names.size());
    const auto key_at = [&](int i) { return list.At(i); };
    const korvel::KeyIndex index(std::pmr::get_default_resource(), random() | 1, 0, count, key_at);
    std::set<std::string> different;
    std::size_t named = 0;
    for (const std::string& name : list.names) {
      if (name.empty()) continue;
      ASSERT_EQ(index.Find(korvel::NameKey{name.c_str()}, count, key_at), list.Walk(name)) << name;
      const std::string absent = "absent" + name;
      ASSERT_EQ(index.Find(korvel::NameKey{absent.c_str()}, count, key_at), -1);
      different.insert(name);
      ++named;
    }
    ASSERT_EQ(index.AllDiffer(), different.size() == named);
  }
}

TEST(KeyIndex, DistinguishesIdsFromMissingEntries) {
  const std::vector<korvel::IdKey> ids = {{0, false}, {INT_MIN}, {0}, {INT_MAX}, {0}};
  const auto count = static_cast<int>(ids.size());
  const auto key_at = [&](int i) { return ids[static_cast<std::size_t>(i)]; };
  const korvel::KeyIndex index(std::pmr::get_default_resource(), 1, 0, count, key_at);
  EXPECT_EQ(index.Find(korvel::IdKey{0}, count, key_at), 2);
  EXPECT_EQ(index.Find(korvel::IdKey{INT_MAX}, count, key_at), 3);
  EXPECT_EQ(index.Find(korvel::IdKey{INT_MIN}, count, key_at), 1);
  EXPECT_EQ(index.Find(korvel::IdKey{-1}, count, key_at), -1);
}

TEST(KeyIndex, OfPartContainsNoOtherItems) {
  const std::vector<korvel::IdKey> ids = {{7}, {8}, {7}, {9}, {8}, {6}};
  const auto key_at = [&](int i) { return ids[static_cast<std::size_t>(i)]; };
  const korvel::KeyIndex index(std::pmr::get_default_resource(), 1, 2, 5, key_at);
  EXPECT_EQ(index.Find(korvel::IdKey{7}, 5, key_at), 2);
  EXPECT_EQ(index.Find(korvel::IdKey{8}, 5, key_at), 4);
  EXPECT_EQ(index.Find(korvel::IdKey{8}, 4, key_at), -1);
  EXPECT_EQ(index.Find(korvel::IdKey{6}, 5, key_at), -1);
}

}  // namespace
}  // namespace rules
