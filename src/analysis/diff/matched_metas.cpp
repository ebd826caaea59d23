// Matches two metas, and builds the meta that results from some of the edits. Does not name or locate edits: see diff_edits.cpp.
// Tested by tests/report/diff_test.cpp and diff_law_test.cpp.
#include "analysis/diff/matched_metas.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "analysis/diff/entry_attributes.h"
#include "analysis/diff/renamed_entries.h"
#include "analysis/diff/table_attributes.h"

namespace korvel {
namespace {

// --- Matching, by sorting and merging, so no choice of names makes it slow ---

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

// For each new entry the position of the matching old one, kNoSlot if there is none. Entries match by name and id; the others by
// name, then by id, or by id first, and what is left by place and similar names. Entries with the same name or id match in
// order. n log n.
std::vector<Slot> PairEntries(const MetaModel& old_meta, const MetaModel& new_meta, bool id_first) {
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
  std::vector<Slot> partners = matcher.TakeMatches();
  PairRenamed(old_meta.entries, new_meta.entries, partners);
  return partners;
}

// The same for indexes, which match by name.
std::vector<Slot> PairIndexes(const MetaModel& old_meta, const MetaModel& new_meta) {
  Matcher matcher(old_meta.indexes, new_meta.indexes);
  matcher.Pair([](const IndexModel& index) { return std::string_view(index.name); });
  return matcher.TakeMatches();
}

// --- Names ---

// Resolves the names of one side. `slot_of(position)` is the slot of an entry of the side.
template <class SlotOf>
References Resolve(const MetaModel& meta, SlotOf slot_of) {
  NameFinder finder(meta.entries);
  const auto find = [&](std::string_view name) {
    const std::size_t position = finder.Find(name);
    return position == kNowhere ? kNoSlot : slot_of(position);
  };
  References references;
  for (const EntryModel& entry : meta.entries) references.refers.push_back(entry.refer.empty() ? kNoSlot : find(entry.refer));
  for (const std::string& name : meta.primary_key) references.primary_key.push_back({find(name)});
  for (const std::string& name : meta.splittable_key) references.splittable_key.push_back({find(name)});
  for (const IndexModel& index : meta.indexes) {
    Members& columns = references.columns.emplace_back();
    for (const ColumnModel& column : index.columns) columns.push_back({find(column.entry), column.descending});
  }
  return references;
}

// The references of one side among the entries of a part. `positions` are those of the part on that side.
References PartOf(const References& whole, const Alignment& entries, const EntryPart& part, const std::vector<Slot>& positions) {
  const auto slot_of = [&](Slot slot) { return entries.SlotInPart(part.old_slots, part.new_positions, slot); };
  const auto members_of = [&](Members members) {
    for (Member& member : members) member.entry = slot_of(member.entry);
    return members;
  };
  References references;
  for (const Slot position : positions) references.refers.push_back(slot_of(whole.refers[position]));
  references.primary_key = members_of(whole.primary_key);
  references.splittable_key = members_of(whole.splittable_key);
  for (const Members& columns : whole.columns) references.columns.push_back(members_of(columns));
  return references;
}

}  // namespace

MatchedMetas::MatchedMetas(const MetaModel& old_meta, const MetaModel& new_meta, bool id_first)
    : old_(&old_meta),
      new_(&new_meta),
      entries_(old_meta.entries.size(), PairEntries(old_meta, new_meta, id_first)),
      indexes_(old_meta.indexes.size(), PairIndexes(old_meta, new_meta)),
      old_references_(Resolve(old_meta, [](std::size_t i) { return static_cast<Slot>(i); })),
      new_references_(Resolve(new_meta, [this](std::size_t j) { return entries_.OfNew(j); })) {}

MatchedMetas::MatchedMetas(const MatchedMetas& whole, const EntryPart& part, const MetaModel& old_meta, const MetaModel& new_meta)
    : old_(&old_meta),
      new_(&new_meta),
      entries_(whole.entries_.Part(part.old_slots, part.new_positions)),
      indexes_(whole.indexes_),
      old_references_(PartOf(whole.old_references_, whole.entries_, part, part.old_slots)),
      new_references_(PartOf(whole.new_references_, whole.entries_, part, part.new_positions)) {}

Members MatchedMetas::WithoutRemoved(const Members& members) const {
  Members kept;
  std::ranges::copy_if(members, std::back_inserter(kept),
                       [this](const Member& one) { return WithoutRemoved(one.entry) != kNoSlot; });
  return kept;
}

class MatchedMetas::Maker {
 public:
  Maker(const MatchedMetas& pair, const ChosenEdits& chosen) : pair_(pair), chosen_(chosen) {}

  MetaDecl Make() {
    decl_.name = pair_.old_->name;
    decl_.position = pair_.old_->position;
    decl_.kind = (chosen_.meta & Bit(EditKind::kMetaKind)) != 0 ? pair_.new_->kind : pair_.old_->kind;
    decl_.customattr = ChangeAttributes(pair_.old_->customattr, pair_.new_->customattr, chosen_.attributes);
    MakeEntries();
    MakeRefers();
    const bool new_primary = (chosen_.meta & Bit(EditKind::kPrimaryKey)) != 0;
    const bool new_splittable = (chosen_.meta & Bit(EditKind::kSplittableKey)) != 0;
    decl_.primary_key = Names(Side(new_primary).primary_key);
    decl_.splittable_key = Names(Side(new_splittable).splittable_key);
    MakeIndexes();
    return std::move(decl_);
  }

 private:
  const References& Side(bool is_new) const { return is_new ? pair_.new_references_ : pair_.old_references_; }

  void MakeEntries() {
    constexpr EditKinds kPlaced = Bit(EditKind::kEntryAdded) | Bit(EditKind::kEntryRemoved) | Bit(EditKind::kEntryMoved);
    order_ = pair_.entries_.Order([&](Slot slot) { return (chosen_.entries[slot] & kPlaced) != 0; });
    positions_.assign(pair_.entries_.slot_count(), kNoSlot);
    decl_.entries.reserve(order_.size());
    for (const Slot slot : order_) {
      positions_[slot] = static_cast<Slot>(decl_.entries.size());
      decl_.entries.push_back(EntryOf(slot));
    }
  }

  qmx::EntryDecl EntryOf(Slot slot) const {
    if (pair_.entries_.IsAdded(slot)) return DeclOf(pair_.NewEntry(slot));
    qmx::EntryDecl decl = DeclOf(pair_.OldEntry(slot));
    if (chosen_.entries[slot] == 0) return decl;
    for (const EntryAttribute& attribute : EntryAttributes()) {
      if ((chosen_.entries[slot] & Bit(attribute.kind)) != 0) attribute.take(decl, pair_.NewEntry(slot));
    }
    return decl;
  }

  // A refer to an entry that does not come before it, or cannot be a counter, is dropped: the count is fixed.
  void MakeRefers() {
    for (std::size_t i = 0; i < order_.size(); ++i) {
      const Slot counter = CounterOf(order_[i]);
      const Slot position = counter == kNoSlot ? kNoSlot : positions_[counter];
      const bool holds = position < i && CanHoldCount(decl_.entries[position].type, decl_.entries[position].count);
      decl_.entries[i].refer = holds ? decl_.entries[position].name : std::string_view();
    }
  }

  Slot CounterOf(Slot slot) const {
    const bool is_new = pair_.entries_.IsAdded(slot) || (chosen_.entries[slot] & Bit(EditKind::kEntryRefer)) != 0;
    return is_new ? pair_.new_references_.refers[pair_.entries_.NewPosition(slot)] : pair_.old_references_.refers[slot];
  }

  bool IsPresent(const Member& member) const { return member.entry != kNoSlot && positions_[member.entry] != kNoSlot; }
  std::string_view NameOf(const Member& member) const { return decl_.entries[positions_[member.entry]].name; }

  std::vector<std::string_view> Names(const Members& members) const {
    std::vector<std::string_view> names;
    for (const Member& member : members) {
      if (IsPresent(member)) names.push_back(NameOf(member));
    }
    return names;
  }

  void MakeIndexes() {
    constexpr EditKinds kPlaced = Bit(EditKind::kIndexAdded) | Bit(EditKind::kIndexRemoved) | Bit(EditKind::kIndexMoved);
    const Alignment& indexes = pair_.indexes_;
    for (const Slot slot : indexes.Order([&](Slot one) { return (chosen_.indexes[one] & kPlaced) != 0; })) {
      const bool is_new = indexes.IsAdded(slot) || (chosen_.indexes[slot] & Bit(EditKind::kIndexColumns)) != 0;
      const std::size_t position = is_new ? indexes.NewPosition(slot) : slot;
      const Members& members = Side(is_new).columns[position];
      IndexDecl index{(is_new ? pair_.new_ : pair_.old_)->indexes[position].name, {}};
      for (const Member& member : members) {
        if (IsPresent(member)) index.columns.push_back({NameOf(member), member.descending});
      }
      // An index disappears with its last field.
      if (!index.columns.empty() || members.empty()) decl_.indexes.push_back(std::move(index));
    }
  }

  const MatchedMetas& pair_;
  const ChosenEdits& chosen_;
  MetaDecl decl_;
  std::vector<Slot> order_;
  std::vector<Slot> positions_;  // of each slot among the made entries; kNoSlot = not made
};

MetaDecl MatchedMetas::Make(const ChosenEdits& chosen) const { return Maker(*this, chosen).Make(); }

std::vector<Slot> SlotsInKeys(const MatchedMetas& pair) {
  std::vector<Slot> slots;
  const auto add = [&](const Members& members) {
    for (const Member& member : members) {
      if (member.entry != kNoSlot) slots.push_back(member.entry);
    }
  };
  for (const References* side : {&pair.old_references(), &pair.new_references()}) {
    add(side->primary_key);
    add(side->splittable_key);
    for (const Members& columns : side->columns) add(columns);
  }
  return slots;
}

}  // namespace korvel
