// Finds what an edit needs so that a schema file can express the result: unique names, existing fields, valid counters. Does not
// run the checker. Tested by tests/report/diff_needs_test.cpp.
#include <algorithm>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "analysis/diff/diff_parts.h"
#include "analysis/diff/entry_attributes.h"

namespace korvel {
namespace {

class NodeNeeds {
 public:
  NodeNeeds(const MetaNode& node, DifferenceParts& parts)
      : node_(node), pair_(*node.pair), parts_(parts), old_names_(pair_.old_meta().entries) {
    for (std::size_t i = node.first_edit; i < node.end_edit; ++i) edits_.emplace(Key(parts.edits[i].kind, parts.slots[i]), i);
  }

  void Find() {
    for (std::size_t i = node_.first_edit; i < node_.end_edit; ++i) FindOf(i);
    BindAttributes();
  }

 private:
  static std::uint64_t Key(EditKind kind, Slot slot) { return (std::uint64_t{slot} << 8) | static_cast<std::uint64_t>(kind); }

  void FindOf(std::size_t edit) {
    const Slot slot = parts_.slots[edit];
    switch (parts_.edits[edit].kind) {
      case EditKind::kEntryAdded:
        NeedName(edit, slot);
        return NeedCounter(edit, slot);
      case EditKind::kEntryRenamed:
        return NeedName(edit, slot);
      case EditKind::kEntryRefer:
        return NeedCounter(edit, slot);
      case EditKind::kPrimaryKey:
        return NeedMembers(edit, pair_.new_references().primary_key);
      case EditKind::kSplittableKey:
        return NeedMembers(edit, pair_.new_references().splittable_key);
      case EditKind::kIndexAdded:
      case EditKind::kIndexColumns:
        return NeedMembers(edit, pair_.new_references().columns[pair_.indexes().NewPosition(slot)]);
      default:
        return;
    }
  }

  // Records that `edit` needs the edit of that kind about that entry, if there is one.
  void Need(std::size_t edit, EditKind kind, Slot slot) {
    const auto found = edits_.find(Key(kind, slot));
    if (found != edits_.end()) parts_.needs[edit].push_back(found->second);
  }

  // An entry with a new name needs the edit by which the old owner of the name loses it.
  void NeedName(std::size_t edit, Slot slot) {
    const std::size_t holder = old_names_.Find(pair_.NewEntry(slot).name);
    if (holder == kNowhere || holder == slot) return;
    Need(edit, EditKind::kEntryRenamed, static_cast<Slot>(holder));
    Need(edit, EditKind::kEntryRemoved, static_cast<Slot>(holder));
  }

  void NeedMembers(std::size_t edit, const Members& members) {
    for (const Member& member : members) Need(edit, EditKind::kEntryAdded, member.entry);
  }

  // An entry with a counter needs the counter: present, before the entry, a single integer.
  void NeedCounter(std::size_t edit, Slot slot) {
    const Slot counter = pair_.new_references().refers[pair_.entries().NewPosition(slot)];
    if (counter == kNoSlot) return;
    Need(edit, EditKind::kEntryAdded, counter);
    if (pair_.entries().IsAdded(counter)) return;
    const EntryModel& old_counter = pair_.OldEntry(counter);
    if (!CanHoldCount(old_counter.type, 1)) Need(edit, EditKind::kEntryType, counter);
    if (old_counter.count != 1) Need(edit, EditKind::kEntryCount, counter);
    if (IsBefore(counter, slot)) return;
    Need(edit, EditKind::kEntryMoved, counter);
    Need(edit, EditKind::kEntryMoved, slot);
  }

  // Whether the old counter comes before the entry if neither is moved.
  bool IsBefore(Slot counter, Slot slot) {
    if (!pair_.entries().IsAdded(slot)) return counter < slot;
    if (anchors_.empty()) anchors_ = pair_.entries().Anchors();
    return counter < anchors_[pair_.entries().NewPosition(slot)];
  }

  // Some attributes of a table and the marks of its sort fields are valid only together: the type decides which keys are allowed,
  // and the marks are numbered without gaps.
  void BindAttributes() {
    std::vector<std::size_t> bound;
    bool type_changes = false;
    for (std::size_t i = node_.first_edit; i < node_.end_edit; ++i) {
      const Edit& edit = parts_.edits[i];
      if (edit.kind != EditKind::kTableAttribute) continue;
      const bool is_type = edit.item == "TableType";
      type_changes = type_changes || is_type;
      if (is_type || edit.before.empty() || edit.after.empty()) bound.push_back(i);
    }
    if (!type_changes) bound.clear();
    for (std::size_t i = node_.first_edit; i < node_.end_edit; ++i) {
      if (ChangesSortMark(i)) bound.push_back(i);
    }
    NeedEachOther(bound);
  }

  bool ChangesSortMark(std::size_t edit) const {
    const Slot slot = parts_.slots[edit];
    switch (parts_.edits[edit].kind) {
      case EditKind::kEntryAdded:
        return IsSortMark(pair_.NewEntry(slot));
      case EditKind::kEntryRemoved:
        return IsSortMark(pair_.OldEntry(slot));
      case EditKind::kEntryCustomAttr2:
        return IsSortMark(pair_.OldEntry(slot)) || IsSortMark(pair_.NewEntry(slot));
      default:
        return false;
    }
  }

  // In a cycle: an edit that needs one of them needs all.
  void NeedEachOther(const std::vector<std::size_t>& edits) {
    for (std::size_t i = 0; i < edits.size() && edits.size() > 1; ++i) {
      parts_.needs[edits[i]].push_back(edits[(i + 1) % edits.size()]);
    }
  }

  const MetaNode& node_;
  const MatchedMetas& pair_;
  DifferenceParts& parts_;
  NameFinder<EntryModel> old_names_;
  std::unordered_map<std::uint64_t, std::size_t> edits_;
  std::vector<Slot> anchors_;  // filled on first use
};

std::set<std::int32_t> IdsOf(const MetaModel& meta) {
  std::set<std::int32_t> ids;
  for (const EntryModel& entry : meta.entries) ids.insert(entry.id);
  return ids;
}

// In a TLV library each entry has a unique id: a change to TLV needs the edits that provide the ids, and edits that drop or reuse
// ids need the change away from TLV.
class ProtocolNeeds {
 public:
  ProtocolNeeds(DifferenceParts& parts, std::size_t protocol) : parts_(parts), protocol_(protocol) {}

  void Find() {
    const bool to_tlv = parts_.edits[protocol_].after == "TLV";
    const bool from_tlv = parts_.edits[protocol_].before == "TLV";
    for (const MetaNode& node : parts_.nodes) {
      if (!node.pair) continue;
      const std::set<std::int32_t> old_ids = IdsOf(node.pair->old_meta());
      const std::set<std::int32_t> new_ids = IdsOf(node.pair->new_meta());
      for (std::size_t i = node.first_edit; i < node.end_edit; ++i) {
        if (to_tlv && HelpsTlv(*node.pair, i, new_ids)) parts_.needs[protocol_].push_back(i);
        if (from_tlv && ViolatesTlv(*node.pair, i, old_ids)) parts_.needs[i].push_back(protocol_);
      }
    }
  }

 private:
  // Whether an edit gives an entry an id, or removes an entry without a unique id.
  bool HelpsTlv(const MatchedMetas& pair, std::size_t edit, const std::set<std::int32_t>& new_ids) const {
    const EditKind kind = parts_.edits[edit].kind;
    if (kind == EditKind::kEntryId) return true;
    if (kind != EditKind::kEntryRemoved) return false;
    const std::int32_t id = pair.OldEntry(parts_.slots[edit]).id;
    return id == -1 || new_ids.contains(id);
  }

  // Whether an edit leaves an entry without a unique id.
  bool ViolatesTlv(const MatchedMetas& pair, std::size_t edit, const std::set<std::int32_t>& old_ids) const {
    const EditKind kind = parts_.edits[edit].kind;
    if (kind != EditKind::kEntryId && kind != EditKind::kEntryAdded) return false;
    const std::int32_t id = pair.NewEntry(parts_.slots[edit]).id;
    return id == -1 || old_ids.contains(id);
  }

  DifferenceParts& parts_;
  std::size_t protocol_;
};

}  // namespace

void FindNeeds(DifferenceParts& parts) {
  parts.needs.resize(parts.edits.size());
  for (const MetaNode& node : parts.nodes) {
    if (node.pair) NodeNeeds(node, parts).Find();
  }
  const auto protocol = std::ranges::find(parts.edits, EditKind::kLibraryProtocol, &Edit::kind);
  if (protocol == parts.edits.end()) return;
  ProtocolNeeds(parts, static_cast<std::size_t>(protocol - parts.edits.begin())).Find();
}

std::vector<std::size_t> ReachedFrom(const std::vector<std::size_t>& edits, const std::vector<std::vector<std::size_t>>& next) {
  std::vector<std::size_t> found;
  std::vector<std::size_t> waiting = edits;
  std::unordered_set<std::size_t> visited(edits.begin(), edits.end());
  while (!waiting.empty()) {
    const std::size_t edit = waiting.back();
    waiting.pop_back();
    for (const std::size_t reached : next[edit]) {
      if (!visited.insert(reached).second) continue;
      found.push_back(reached);
      waiting.push_back(reached);
    }
  }
  std::ranges::sort(found);
  return found;
}

}  // namespace korvel
