// Tested by tests/cases/warnings and, on random changes, tests/codec/answer_test.cpp.
#include "analysis/warnings/key_bytes.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

namespace korvel {
namespace {

class KeyComparison {
 public:
  explicit KeyComparison(RecordForm form) : form_(form) {}

  // Compares both structures once.
  std::optional<KeyDifference> Compare(LPQMXMETA old_meta, LPQMXMETA new_meta) {
    if (!known_.insert({old_meta, new_meta}).second) return std::nullopt;
    const MetaPair metas{old_meta, new_meta};
    return old_meta->iType == QMX_TYPE_UNION ? CompareUnion(metas) : CompareStructure(metas);
  }

 private:
  struct MetaPair {
    LPQMXMETA old_meta;
    LPQMXMETA new_meta;
  };

  // A key contains all fields, in order.
  std::optional<KeyDifference> CompareStructure(const MetaPair& metas) {
    const int count = std::max(EntryCount(metas.old_meta), EntryCount(metas.new_meta));
    for (int i = 0; i < count; ++i) {
      const LPQMXMETAENTRY old_entry = qmx_get_entry_by_index(metas.old_meta, i);
      const LPQMXMETAENTRY new_entry = qmx_get_entry_by_index(metas.new_meta, i);
      if (!IsSameField(form_, old_entry, new_entry)) return OtherField(metas, old_entry, new_entry);
      if (const auto difference = CompareField(metas, old_entry, new_entry)) return difference;
    }
    return std::nullopt;
  }

  // A key contains one field, with its name. The keys of old records contain none that was added.
  std::optional<KeyDifference> CompareUnion(const MetaPair& metas) {
    EntryFinder in_new(form_, metas.new_meta);
    for (const auto [index, old_entry] : Entries(metas.old_meta)) {
      const LPQMXMETAENTRY new_entry = in_new.Find(old_entry, index);
      if (new_entry == nullptr) return DifferenceOf(EditKind::kEntryRemoved, metas, old_entry, nullptr);
      if (!SameName(qmx_get_entry_name(old_entry), qmx_get_entry_name(new_entry))) {
        return DifferenceOf(EditKind::kEntryRenamed, metas, old_entry, new_entry);
      }
      if (const auto difference = CompareField(metas, old_entry, new_entry)) return difference;
    }
    return std::nullopt;
  }

  std::optional<KeyDifference> CompareField(const MetaPair& metas, LPQMXMETAENTRY old_entry, LPQMXMETAENTRY new_entry) {
    const bool is_fixed = !HasRefer(old_entry) && !HasRefer(new_entry);
    if (is_fixed && qmx_get_entry_count(old_entry) != qmx_get_entry_count(new_entry)) {
      return DifferenceOf(EditKind::kEntryCount, metas, old_entry, new_entry);
    }
    const LPQMXMETA old_inner = qmx_get_entry_type_meta(OwnerOf(metas.old_meta), old_entry);
    const LPQMXMETA new_inner = qmx_get_entry_type_meta(OwnerOf(metas.new_meta), new_entry);
    return old_inner == nullptr || new_inner == nullptr ? std::nullopt : Compare(old_inner, new_inner);
  }

  // Different fields at the same position: one was added, removed or moved.
  KeyDifference OtherField(const MetaPair& metas, LPQMXMETAENTRY old_entry, LPQMXMETAENTRY new_entry) const {
    if (new_entry != nullptr && EntryFinder(form_, metas.old_meta).Find(new_entry, 0) == nullptr) {
      return DifferenceOf(EditKind::kEntryAdded, metas, nullptr, new_entry);
    }
    const LPQMXMETAENTRY moved = EntryFinder(form_, metas.new_meta).Find(old_entry, 0);
    return DifferenceOf(moved == nullptr ? EditKind::kEntryRemoved : EditKind::kEntryMoved, metas, old_entry, moved);
  }

  static KeyDifference DifferenceOf(EditKind kind, const MetaPair& metas, LPQMXMETAENTRY old_entry, LPQMXMETAENTRY new_entry) {
    return {kind, metas.old_meta, metas.new_meta, old_entry, new_entry};
  }

  RecordForm form_;
  std::set<std::pair<LPQMXMETA, LPQMXMETA>> known_;
};

}  // namespace

std::vector<KeyDifference> CompareKeyStructures(RecordForm form, LPQMXMETA old_table, LPQMXMETA new_table) {
  std::vector<KeyDifference> differences;
  std::optional<EntryFinder> in_new;
  KeyComparison comparison(form);
  const auto compare = [&](const tagQMXDBKeyInfo* member) {
    if (member == nullptr || member->ptrEntry == QMX_NO_REF) return;
    const auto old_entry = reinterpret_cast<LPQMXMETAENTRY>(DataOf(old_table) + member->ptrEntry);
    const LPQMXMETA old_inner = qmx_get_entry_type_meta(OwnerOf(old_table), old_entry);
    if (old_inner == nullptr) return;
    if (!in_new) in_new.emplace(RecordForm::kPacked, new_table);
    const LPQMXMETAENTRY new_entry = in_new->Find(old_entry, 0);
    const LPQMXMETA new_inner = new_entry == nullptr ? nullptr : qmx_get_entry_type_meta(OwnerOf(new_table), new_entry);
    if (new_inner == nullptr) return;
    if (const auto difference = comparison.Compare(old_inner, new_inner)) differences.push_back(*difference);
  };
  for (const tagQMXDBKeyInfo* member : PrimaryKeyMembers(old_table)) compare(member);
  const RecordList<tagQMXDBKeyInfo> splittable(old_table, old_table->ptrSplitTableKeyBase, old_table->iSplitTableKeyMemberNum);
  for (const tagQMXDBKeyInfo* member : splittable) compare(member);
  return differences;
}

}  // namespace korvel
