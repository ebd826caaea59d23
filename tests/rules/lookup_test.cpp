// Class Lookup, which all rules use for searches, and the index of long lists.
#include "common/lookup.h"

#include <algorithm>
#include <climits>
#include <random>
#include <set>

#include "common/entry_match.h"
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

// --- Prefixes and searches of two metas in random order, compared with linear searches ---

using Random = std::mt19937_64;

// Names and ids repeat in some lists only: both ways of searching an index are used.
std::vector<Field> RandomFields(Random& random) {
  const std::size_t count = random() % 30;
  const std::size_t different = random() % 2 == 0 ? 1000 : 40;
  std::vector<Field> fields;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t number = different == 1000 ? i : random() % different;
    fields.push_back({.name = "f" + std::to_string(number),
                      .type = random() % 5 == 0 ? "box%s" : "uint32",
                      .id = static_cast<int>(random() % 20 == 0 ? random() % 10 : number)});
  }
  return fields;
}

// A list that begins like `fields`, has a change somewhere, and maybe ends elsewhere.
std::vector<Field> Changed(std::vector<Field> fields, Random& random) {
  if (!fields.empty() && random() % 3 != 0) fields[random() % fields.size()].version = 2;
  if (!fields.empty() && random() % 3 == 0) fields.resize(random() % fields.size());
  for (const Field& field : RandomFields(random)) {
    if (random() % 4 == 0) fields.insert(fields.begin() + static_cast<std::ptrdiff_t>(random() % (fields.size() + 1)), field);
  }
  return fields;
}

Library LibraryOf(std::vector<Field> fields) {
  return Of({{.name = "box%s", .fields = {{.name = "part"}}}, {.name = "mall%s", .fields = std::move(fields)}});
}

class TwoMetas {
 public:
  TwoMetas(const Schema& old_schema, const Schema& new_schema) : schemas_{&old_schema, &new_schema} {}

  LPQMXMETA Meta(std::size_t side) const { return schemas_[side]->Meta("mall%s"); }
  LPQMXMETAENTRY Entry(std::size_t side, int i) const { return qmx_get_entry_by_index(Meta(side), i); }
  int Count(std::size_t side) const { return korvel::EntryCount(Meta(side)); }

  int FirstNamed(std::size_t side, const std::string& name) const {
    return First(side, [&](LPQMXMETAENTRY entry) { return qmx_get_entry_name(entry) == name; });
  }
  int FirstOfId(std::size_t side, int id) const {
    return First(side, [&](LPQMXMETAENTRY entry) { return qmx_get_entry_id(entry) == id; });
  }
  int FirstOfBoth(std::size_t side, int id, const std::string& name) const {
    return First(side, [&](LPQMXMETAENTRY entry) { return qmx_get_entry_id(entry) == id && qmx_get_entry_name(entry) == name; });
  }

  // What two metas begin with, `old_side` first.
  korvel::CommonPrefix Prefix(std::size_t old_side, korvel::MatchBy match_by) const {
    const std::size_t new_side = 1 - old_side;
    korvel::CommonPrefix prefix;
    for (int& i = prefix.end; i < std::min(Count(0), Count(1)); ++i) {
      const LPQMXMETAENTRY entry = Entry(new_side, i);
      const bool is_first = match_by == korvel::MatchBy::kName ? FirstNamed(new_side, qmx_get_entry_name(entry)) == i
                                                               : FirstOfId(new_side, qmx_get_entry_id(entry)) == i;
      const korvel::EntryMatch match =
          korvel::MatchEntries(schemas_[old_side]->Lib(), Entry(old_side, i), schemas_[new_side]->Lib(), entry);
      if (match == korvel::EntryMatch::kDifferent || !is_first) break;
      if (match == korvel::EntryMatch::kSameComposite) prefix.composites.push_back(i);
    }
    return prefix;
  }

 private:
  template <class Wanted>
  int First(std::size_t side, Wanted is_wanted) const {
    for (int i = 0; i < Count(side); ++i) {
      if (is_wanted(Entry(side, i))) return i;
    }
    return -1;
  }

  const Schema* schemas_[2];
};

TEST(Lookup, AnswersLikeLinearSearchInAnyOrder) {
  Random random(20261122);
  for (int round = 0; round < 500; ++round) {
    const std::vector<Field> fields = RandomFields(random);
    const Schema old_schema = LibraryOf(fields).Build();
    const Schema new_schema = LibraryOf(Changed(fields, random)).Build();
    const TwoMetas metas(old_schema, new_schema);
    korvel::Lookup lookup(std::pmr::get_default_resource());
    for (int question = 0; question < 12; ++question) {
      const std::size_t side = random() % 2;
      const LPQMXMETA meta = metas.Meta(side);
      const int number = static_cast<int>(random() % 32);
      const std::string name = "f" + std::to_string(number);
      const korvel::MatchBy by = random() % 2 == 0 ? korvel::MatchBy::kName : korvel::MatchBy::kId;
      const korvel::CommonPrefix expected = metas.Prefix(side, by);
      const korvel::CommonPrefix& prefix = lookup.Prefix(meta, metas.Meta(1 - side), by);
      ASSERT_EQ(prefix.end, expected.end) << "round " << round;
      ASSERT_EQ(prefix.composites, expected.composites) << "round " << round;
      ASSERT_EQ(lookup.PositionByName(meta, metas.Count(side), name.c_str()), metas.FirstNamed(side, name)) << "round " << round;
      ASSERT_EQ(lookup.PositionById(meta, metas.Count(side), number), metas.FirstOfId(side, number)) << "round " << round;
      ASSERT_EQ(lookup.PositionByIdAndName(meta, metas.Count(side), number, name.c_str()), metas.FirstOfBoth(side, number, name))
          << "round " << round;
      ASSERT_EQ(lookup.PositionBeforeMissing(meta, name.c_str()), metas.FirstNamed(side, name)) << "round " << round;
    }
  }
}

}  // namespace
}  // namespace rules
