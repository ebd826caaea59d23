// Tests the hash table of metas: it finds the first meta of a name after few steps, and equal names give equal tables.
#include "qmx/meta_slots.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "qmx/qmx_builder.h"

namespace {

std::vector<std::string> NumberedNames(std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) names.push_back("table_" + std::to_string(i));
  return names;
}

std::vector<std::string_view> Views(const std::vector<std::string>& names) { return {names.begin(), names.end()}; }

// The slot of a name, and the number of steps of the search.
struct Found {
  std::int32_t meta;
  std::size_t probes;
};

Found Find(const qmx::MetaSlots& table, const std::vector<std::string_view>& names, std::string_view name) {
  const auto has_name = [&](std::int32_t meta) { return names[static_cast<std::size_t>(meta)] == name; };
  const qmx::MetaProbe probe =
      qmx::FindMetaSlot(table.slots.data(), table.slots.size(), qmx::MetaHash(name, table.seed), has_name);
  return {table.slots[probe.slot].iMeta, probe.probes};
}

TEST(MetaSlots, NumberIsPowerOfTwoAtMostHalfFull) {
  EXPECT_EQ(qmx::MetaSlotNum(0), 0u);
  EXPECT_EQ(qmx::MetaSlotNum(1), 2u);
  EXPECT_EQ(qmx::MetaSlotNum(2), 4u);
  EXPECT_EQ(qmx::MetaSlotNum(3), 8u);
  EXPECT_EQ(qmx::MetaSlotNum(65536), 131072u);
}

TEST(MetaSlots, FindsEveryNameInFewSteps) {
  const std::vector<std::string> texts = NumberedNames(100'000);
  const std::vector<std::string_view> names = Views(texts);
  const qmx::MetaSlots table = qmx::MakeMetaSlots(names).value();
  std::size_t farthest = 0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const Found found = Find(table, names, names[i]);
    ASSERT_EQ(found.meta, static_cast<std::int32_t>(i));
    farthest = std::max(farthest, found.probes);
  }
  EXPECT_LE(farthest, qmx::kMaxProbes);
  EXPECT_EQ(Find(table, names, "table_100000").meta, -1);
  EXPECT_EQ(Find(table, names, "").meta, -1);
}

TEST(MetaSlots, RepeatedNameRefersToFirst) {
  const std::vector<std::string_view> names = {"a", "b", "a", "", ""};
  const qmx::MetaSlots table = qmx::MakeMetaSlots(names).value();
  EXPECT_EQ(Find(table, names, "a").meta, 0);
  EXPECT_EQ(Find(table, names, "b").meta, 1);
  EXPECT_EQ(Find(table, names, "").meta, 3);
}

TEST(MetaSlots, NamesThatCollideUnderOneSeedUseTheNext) {
  // More names than a search may skip, all in one slot under seed 0.
  std::vector<std::string> texts;
  for (std::size_t i = 0; texts.size() < 300; ++i) {
    std::string name = "n" + std::to_string(i);
    if ((qmx::MetaHash(name, 0).place & 1023) == 7) texts.push_back(std::move(name));
  }
  const std::vector<std::string_view> names = Views(texts);
  const qmx::MetaSlots table = qmx::MakeMetaSlots(names).value();
  EXPECT_EQ(table.slots.size(), 1024u);
  EXPECT_EQ(table.seed, 1u);
  for (std::size_t i = 0; i < names.size(); ++i) EXPECT_EQ(Find(table, names, names[i]).meta, static_cast<std::int32_t>(i));
}

// Each further seed is as easy to attack as the first, so trying more seeds would not help against names that collide under many.
TEST(MetaSlots, RefusesNamesThatCollideUnderEverySeed) {
  constexpr std::uint32_t kSeeds = 16;
  constexpr std::size_t kNames = 300;  // for each seed
  const std::size_t slots = qmx::MetaSlotNum(kSeeds * kNames);
  qmx::MetalibBuilder builder("x", 1, qmx::Protocol::kQmx);
  std::vector<std::string> texts;
  for (std::uint32_t seed = 0, number = 0; seed < kSeeds; ++seed) {
    for (; texts.size() < (seed + 1) * kNames; ++number) {
      std::string name = "n" + std::to_string(number);
      if ((qmx::MetaHash(name, seed).place & (slots - 1)) < 64) texts.push_back(std::move(name));
    }
  }
  EXPECT_FALSE(qmx::MakeMetaSlots(Views(texts)));
  for (const std::string& name : texts) builder.AddMeta(name);
  const qmx::BuildResult result = builder.Finish();
  EXPECT_FALSE(result.metalib);
  ASSERT_EQ(result.errors.size(), 1u);
  EXPECT_EQ(result.errors[0].where.kind, qmx::ElementId::Kind::kMetalib);
  EXPECT_EQ(result.errors[0].text,
            "the names of the metas are constructed to collide in a hash table; allowed: names that do not");
}

}  // namespace
