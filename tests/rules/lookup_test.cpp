// Class Lookup, which every search of a rule goes through, and the index of long lists.
#include "common/lookup.h"

#include <climits>
#include <random>

#include "common/meta_view.h"
#include "rules/rule_test.h"

namespace rules {
namespace {

Library Mall() {
  return Of({{.fields = {{.name = "uid%d", .id = 4}, {.name = "zone", .id = 0}, {.name = "area", .id = 4}, {.name = "tail"}}}});
}

TEST(Position, OfWhatIsNowhereIsMinusOne) {
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

TEST(Position, OfAnIdThatTwoHaveIsThatOfTheName) {
  const Schema schema = Mall().Build();
  korvel::Lookup lookup(std::pmr::get_default_resource());
  EXPECT_EQ(lookup.PositionById(schema.Meta(), 4, 4), 0);
  EXPECT_EQ(lookup.PositionByIdAndName(schema.Meta(), 4, 4, "area"), 2);
}

// --- The index against a walk, in random orders of random keys ---

struct List {
  std::vector<std::string> names;  // an empty one stands for a missing name
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
    // Some are longer than what is hashed at once.
    const std::string number = std::to_string(random() % different);
    list.names.push_back(random() % 12 == 0 ? "" : random() % 2 == 0 ? "n" + number : "a_long_name_of_number_" + number);
  }
  return list;
}

TEST(KeyIndex, FindsTheFirstAsAWalkDoes) {
  std::mt19937_64 random(20261121);
  for (int round = 0; round < 2000; ++round) {
    const List list = RandomList(random);
    const auto count = static_cast<int>(list.names.size());
    korvel::KeyIndex index(std::pmr::get_default_resource(), random() | 1, count);
    const auto key_at = [&](int i) { return list.At(i); };
    for (int i = 0; i < 2 * count; ++i) {
      const std::string& wanted = list.names[random() % list.names.size()];
      if (!wanted.empty()) {
        ASSERT_EQ(index.Find(korvel::NameKey{wanted.c_str()}, key_at), list.Walk(wanted)) << wanted;
      }
      const std::string absent = "absent" + std::to_string(i);
      ASSERT_EQ(index.Find(korvel::NameKey{absent.c_str()}, key_at), -1);
    }
  }
}

TEST(KeyIndex, KnowsWhetherAnItemIsTheFirstOfItsKey) {
  std::mt19937_64 random(20261121);
  for (int round = 0; round < 2000; ++round) {
    const List list = RandomList(random);
    const auto count = static_cast<int>(list.names.size());
    korvel::KeyIndex index(std::pmr::get_default_resource(), random() | 1, count);
    const auto key_at = [&](int i) { return list.At(i); };
    for (int i = 0; i < count && !list.names[static_cast<std::size_t>(i)].empty(); ++i) {
      ASSERT_EQ(index.IsFirst(i, key_at), list.Walk(list.names[static_cast<std::size_t>(i)]) == i);
    }
  }
}

TEST(KeyIndex, KeepsIdsApartFromMissingEntries) {
  const std::vector<korvel::IdKey> ids = {{0, false}, {INT_MIN}, {0}, {INT_MAX}, {0}};
  korvel::KeyIndex index(std::pmr::get_default_resource(), 1, static_cast<int>(ids.size()));
  const auto key_at = [&](int i) { return ids[static_cast<std::size_t>(i)]; };
  EXPECT_EQ(index.Find(korvel::IdKey{0}, key_at), 2);
  EXPECT_EQ(index.Find(korvel::IdKey{INT_MAX}, key_at), 3);
  EXPECT_EQ(index.Find(korvel::IdKey{INT_MIN}, key_at), 1);
  EXPECT_EQ(index.Find(korvel::IdKey{-1}, key_at), -1);
}

}  // namespace
}  // namespace rules
