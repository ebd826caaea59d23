// Matches items by sorting and merging, so no choice of names makes it slow. Tested by tests/report/diff_test.cpp.
#include "analysis/diff/matching.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

namespace korvel {
namespace {

template <class Item>
class Matcher {
 public:
  Matcher(const std::vector<Item>& old_items, const std::vector<Item>& new_items)
      : old_(old_items), new_(new_items), partners_(new_items.size(), kNoSlot), is_taken_(old_items.size(), false) {}

  // Pairs unmatched items with equal keys, in order. Skips items for which `has_key` is false.
  template <class KeyOf, class HasKey>
  void Pair(KeyOf key_of, HasKey has_key) {
    const std::vector<Slot> old_order = Sorted(
        old_, [&](Slot i) { return !is_taken_[i] && has_key(old_[i]); }, key_of);
    const std::vector<Slot> new_order = Sorted(
        new_, [&](Slot j) { return partners_[j] == kNoSlot && has_key(new_[j]); }, key_of);
    auto i = old_order.begin();
    for (const Slot j : new_order) {
      const auto key = key_of(new_[j]);
      while (i != old_order.end() && key_of(old_[*i]) < key) ++i;
      if (i != old_order.end() && key_of(old_[*i]) == key) Take(*i++, j);
    }
  }

  template <class KeyOf>
  void Pair(KeyOf key_of) {
    Pair(key_of, [](const Item&) { return true; });
  }

  // Pairs equal items at the same distance from either end: usually nearly all.
  template <class KeyOf>
  void PairEnds(KeyOf key_of) {
    const std::size_t shorter = std::min(old_.size(), new_.size());
    std::size_t front = 0;
    for (; front < shorter && key_of(old_[front]) == key_of(new_[front]); ++front) Take(front, front);
    for (std::size_t i = old_.size(), j = new_.size(); i > front && j > front; --i, --j) {
      if (key_of(old_[i - 1]) != key_of(new_[j - 1])) return;
      Take(i - 1, j - 1);
    }
  }

  std::vector<Slot> TakeMatches() { return std::move(partners_); }

 private:
  template <class IsMeant, class KeyOf>
  static std::vector<Slot> Sorted(const std::vector<Item>& items, IsMeant is_meant, KeyOf key_of) {
    std::vector<Slot> order;
    for (Slot i = 0; i < items.size(); ++i) {
      if (is_meant(i)) order.push_back(i);
    }
    std::ranges::stable_sort(order, {}, [&](Slot i) { return key_of(items[i]); });
    return order;
  }

  void Take(std::size_t i, std::size_t j) {
    partners_[j] = static_cast<Slot>(i);
    is_taken_[i] = true;
  }

  const std::vector<Item>& old_;
  const std::vector<Item>& new_;
  std::vector<Slot> partners_;
  std::vector<bool> is_taken_;
};

}  // namespace

std::vector<Slot> MatchEntries(const MetaModel& old_meta, const MetaModel& new_meta, bool id_first) {
  Matcher matcher(old_meta.entries, new_meta.entries);
  const auto name = [](const EntryModel& entry) { return std::string_view(entry.name); };
  const auto both = [](const EntryModel& entry) { return std::pair(std::string_view(entry.name), entry.id); };
  const auto pair_by_id = [&] {
    matcher.Pair([](const EntryModel& entry) { return entry.id; }, [](const EntryModel& entry) { return entry.id != -1; });
  };
  matcher.PairEnds(both);
  matcher.Pair(both);
  if (id_first) pair_by_id();
  matcher.Pair(name);
  if (!id_first) pair_by_id();
  return matcher.TakeMatches();
}

std::vector<Slot> MatchIndexes(const MetaModel& old_meta, const MetaModel& new_meta) {
  Matcher matcher(old_meta.indexes, new_meta.indexes);
  matcher.Pair([](const IndexModel& index) { return std::string_view(index.name); });
  return matcher.TakeMatches();
}

}  // namespace korvel
