// Aligns two orders: which items move, and every intermediate order.
#include "analysis/diff/alignment.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "models.h"

namespace report_test {
namespace {

using korvel::Alignment;
using korvel::kNoSlot;
using korvel::Slot;
using testing::ElementsAre;

constexpr auto kAll = [](Slot) { return true; };
constexpr auto kNone = [](Slot) { return false; };

TEST(Alignment, FindsAddedRemovedAndMovedItems) {
  const Alignment alignment(4, {3, kNoSlot, 0, 2});  // old 0 1 2 3
  EXPECT_TRUE(alignment.IsRemoved(1));
  EXPECT_TRUE(alignment.IsMoved(3));
  EXPECT_TRUE(alignment.IsStill(0) && alignment.IsStill(2));
  EXPECT_EQ(alignment.OfNew(1), 5u);
  EXPECT_TRUE(alignment.IsAdded(5));
  EXPECT_EQ(alignment.NewPosition(5), 1u);
  EXPECT_EQ(alignment.NewPosition(3), 0u);
  EXPECT_THAT(alignment.Anchors(), ElementsAre(0, 0, 0, 2));
  EXPECT_THAT(alignment.Order(kAll), ElementsAre(3, 5, 0, 2));
  EXPECT_THAT(alignment.Order(kNone), ElementsAre(0, 1, 2, 3));
  EXPECT_THAT(alignment.Order([](Slot slot) { return slot == 5; }), ElementsAre(5, 0, 1, 2, 3));
}

TEST(Alignment, AcceptsEmptyOrders) {
  EXPECT_THAT(Alignment(0, {}).Order(kAll), ElementsAre());
  EXPECT_THAT(Alignment(2, {}).Order(kNone), ElementsAre(0, 1));
  EXPECT_THAT(Alignment(0, {kNoSlot, kNoSlot}).Order(kAll), ElementsAre(0, 1));
}

// The items that stay are a longest common subsequence: no larger set has the same order on both sides.
TEST(Alignment, MovesAsFewItemsAsPossible) {
  const std::uint64_t seed = NumberFrom("KORVEL_SEED", 20261121);
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  std::mt19937_64 random(seed);
  for (int round = 0; round < 300; ++round) {
    std::vector<Slot> order(1 + random() % 30);
    std::iota(order.begin(), order.end(), Slot{0});
    std::ranges::shuffle(order, random);
    const Alignment alignment(order.size(), order);
    std::vector<std::size_t> longest(order.size(), 1);  // increasing run that ends here
    std::size_t stay = 0;
    std::size_t still = 0;
    for (std::size_t i = 0; i < order.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        if (order[j] < order[i]) longest[i] = std::max(longest[i], longest[j] + 1);
      }
      stay = std::max(stay, longest[i]);
      still += alignment.IsStill(static_cast<Slot>(i)) ? 1 : 0;
    }
    ASSERT_EQ(still, stay);
    ASSERT_EQ(alignment.Order(kAll), order);
  }
}

}  // namespace
}  // namespace report_test
