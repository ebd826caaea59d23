// Lists the edits of a difference with their names, values and locations. Tested by tests/report/diff_test.cpp.
#include <utility>

#include "analysis/diff/diff_parts.h"
#include "analysis/diff/entry_attributes.h"
#include "analysis/diff/id_reuse.h"
#include "analysis/diff/meta_paths.h"
#include "analysis/diff/table_attributes.h"
#include "base/text.h"

namespace korvel {
namespace {

using Kind = qmx::ElementId::Kind;

std::string ProtocolText(qmx::Protocol protocol) {
  if (protocol == qmx::Protocol::kUnset) return "";
  return protocol == qmx::Protocol::kTlv ? "TLV" : "QMX";
}

// The item before a position; "" at the front.
template <class Item>
std::string NameBefore(const std::vector<Item>& items, std::size_t position) {
  return position == 0 ? "" : items[position - 1].name;
}

// Fills in the edits of one pair of metas.
class PairEdits {
 public:
  PairEdits(const Source& old_source, const Source& new_source, const MatchedMetas& pair, DifferenceParts& parts)
      : old_source_(old_source), new_source_(new_source), pair_(pair), parts_(parts), reuse_(pair.old_meta(), pair.new_meta()) {}

  void List() {
    AddMetaEdits();
    const Alignment& entries = pair_.entries();
    for (const Slot slot : entries.Order([&](Slot one) { return !entries.IsRemoved(one); })) AddEntryEdits(slot);
    AddKeyEdits();
    const Alignment& indexes = pair_.indexes();
    for (const Slot slot : indexes.Order([&](Slot one) { return !indexes.IsRemoved(one); })) AddIndexEdits(slot);
  }

 private:
  // The caller fills in values and locations.
  Edit& Add(EditKind kind, const std::string& item, Slot slot = 0) {
    Edit& edit = parts_.edits.emplace_back();
    parts_.slots.push_back(slot);
    edit.kind = kind;
    edit.meta = pair_.old_meta().name;
    edit.item = item;
    return edit;
  }

  Location OldLocation(Kind kind, std::size_t item, std::string_view attribute) const {
    return {&old_source_, {kind, pair_.old_meta().position, static_cast<std::uint32_t>(item)}, attribute};
  }
  Location NewLocation(Kind kind, std::size_t item, std::string_view attribute) const {
    return {&new_source_, {kind, pair_.new_meta().position, static_cast<std::uint32_t>(item)}, attribute};
  }

  // Sets the locations of an attribute; on a side without the attribute the location is the element.
  void Point(Edit& edit, Kind kind, std::size_t old_item, std::size_t new_item, std::string_view attribute) const {
    edit.old_location = OldLocation(kind, old_item, edit.before.empty() ? "" : attribute);
    edit.new_location = NewLocation(kind, new_item, edit.after.empty() ? "" : attribute);
  }

  void AddMetaEdits() {
    const MetaModel& old_meta = pair_.old_meta();
    const MetaModel& new_meta = pair_.new_meta();
    if (const auto renamed = parts_.renamed.find(old_meta.name); renamed != parts_.renamed.end()) {
      Edit& edit = Add(EditKind::kMetaRenamed, "");
      edit.before = old_meta.name;
      edit.after = renamed->second;
      Point(edit, Kind::kMeta, 0, 0, "name");
    }
    if (old_meta.kind != new_meta.kind) {
      Edit& edit = Add(EditKind::kMetaKind, "");
      edit.before = KindText(old_meta);
      edit.after = KindText(new_meta);
      Point(edit, Kind::kMeta, 0, 0, "kind");
    }
    for (AttributeChange& change : CompareAttributes(old_meta.customattr, new_meta.customattr)) {
      Edit& edit = Add(EditKind::kTableAttribute, change.key);
      edit.before = std::move(change.before);
      edit.after = std::move(change.after);
      edit.old_location = OldLocation(Kind::kMeta, 0, old_meta.customattr ? "customattr" : "");
      edit.old_location.part = change.old_part;
      edit.new_location = NewLocation(Kind::kMeta, 0, new_meta.customattr ? "customattr" : "");
      edit.new_location.part = change.new_part;
    }
  }

  void AddEntryEdits(Slot slot) {
    const Alignment& entries = pair_.entries();
    if (entries.IsAdded(slot)) {
      const EntryModel& entry = pair_.NewEntry(slot);
      AddAdded(EditKind::kEntryAdded, entry.name, TypeText(entry), Kind::kEntry, entries, slot);
    } else if (entries.IsRemoved(slot)) {
      const EntryModel& entry = pair_.OldEntry(slot);
      AddRemoved(EditKind::kEntryRemoved, entry.name, TypeText(entry), Kind::kEntry, slot);
    } else {
      AddMove(EditKind::kEntryMoved, Kind::kEntry, &MetaModel::entries, entries, slot);
      AddAttributes(slot);
      AddRefer(slot);
    }
  }

  void AddAdded(EditKind kind, const std::string& name, std::string text, Kind element, const Alignment& items, Slot slot) {
    Edit& edit = Add(kind, name, slot);
    edit.after = std::move(text);
    edit.new_location = NewLocation(element, items.NewPosition(slot), "");
  }

  void AddRemoved(EditKind kind, const std::string& name, std::string text, Kind element, Slot slot) {
    Edit& edit = Add(kind, name, slot);
    edit.before = std::move(text);
    edit.old_location = OldLocation(element, slot, "");
    edit.new_location = NewLocation(Kind::kMeta, 0, "");
  }

  template <class Item>
  void AddMove(EditKind kind, Kind element, std::vector<Item> MetaModel::*list, const Alignment& items, Slot slot) {
    if (!items.IsMoved(slot)) return;
    const std::vector<Item>& old_list = pair_.old_meta().*list;
    Edit& edit = Add(kind, old_list[slot].name, slot);
    edit.before = NameBefore(old_list, slot);
    edit.after = NameBefore(pair_.new_meta().*list, items.NewPosition(slot));
    edit.old_location = OldLocation(element, slot, "");
    edit.new_location = NewLocation(element, items.NewPosition(slot), "");
  }

  void AddAttributes(Slot slot) {
    const EntryModel& old_entry = pair_.OldEntry(slot);
    const EntryModel& new_entry = pair_.NewEntry(slot);
    if (old_entry == new_entry) return;
    const bool by_id = parts_.old_model.protocol == qmx::Protocol::kTlv && parts_.new_model.protocol == qmx::Protocol::kTlv;
    const std::string reuse = by_id ? reuse_.Describe(old_entry, new_entry) : "";
    for (const EntryAttribute& attribute : EntryAttributes()) {
      if (!attribute.differs(old_entry, new_entry)) continue;
      Edit& edit = Add(attribute.kind, old_entry.name, slot);
      edit.before = attribute.text(old_entry);
      edit.after = attribute.text(new_entry);
      edit.reuse = reuse;
      Point(edit, Kind::kEntry, slot, pair_.entries().NewPosition(slot), attribute.name);
    }
  }

  void AddRefer(Slot slot) {
    const std::size_t position = pair_.entries().NewPosition(slot);
    if (pair_.WithoutRemoved(pair_.old_references().refers[slot]) == pair_.new_references().refers[position]) return;
    Edit& edit = Add(EditKind::kEntryRefer, pair_.OldEntry(slot).name, slot);
    edit.before = pair_.OldEntry(slot).refer;
    edit.after = pair_.NewEntry(slot).refer;
    Point(edit, Kind::kEntry, slot, position, "refer");
  }

  void AddKeyEdits() {
    AddKeyEdit(EditKind::kPrimaryKey, Kind::kPrimaryKey, &References::primary_key, &MetaModel::primary_key);
    AddKeyEdit(EditKind::kSplittableKey, Kind::kSplittableKey, &References::splittable_key, &MetaModel::splittable_key);
  }

  void AddKeyEdit(EditKind kind, Kind element, Members References::*members, std::vector<std::string> MetaModel::*names) {
    const Members kept = pair_.WithoutRemoved(pair_.old_references().*members);
    if (kept == pair_.new_references().*members) return;
    const auto& old_names = pair_.old_meta().*names;
    const auto& new_names = pair_.new_meta().*names;
    Edit& edit = Add(kind, "");
    edit.before = Join(old_names, " ");
    edit.after = Join(new_names, " ");
    // On a side without the key the location is the meta.
    edit.old_location = old_names.empty() ? OldLocation(Kind::kMeta, 0, "") : OldLocation(element, 0, "entries");
    edit.new_location = new_names.empty() ? NewLocation(Kind::kMeta, 0, "") : NewLocation(element, 0, "entries");
  }

  void AddIndexEdits(Slot slot) {
    const Alignment& indexes = pair_.indexes();
    if (indexes.IsAdded(slot)) {
      const IndexModel& index = pair_.NewIndex(slot);
      AddAdded(EditKind::kIndexAdded, index.name, ColumnsText(index), Kind::kIndex, indexes, slot);
    } else if (indexes.IsRemoved(slot)) {
      const IndexModel& index = pair_.OldIndex(slot);
      AddRemoved(EditKind::kIndexRemoved, index.name, ColumnsText(index), Kind::kIndex, slot);
    } else {
      AddMove(EditKind::kIndexMoved, Kind::kIndex, &MetaModel::indexes, indexes, slot);
      AddColumns(slot);
    }
  }

  void AddColumns(Slot slot) {
    const std::size_t position = pair_.indexes().NewPosition(slot);
    const Members& columns = pair_.new_references().columns[position];
    if (pair_.WithoutRemoved(pair_.old_references().columns[slot]) == columns) return;
    Edit& edit = Add(EditKind::kIndexColumns, pair_.OldIndex(slot).name, slot);
    edit.before = ColumnsText(pair_.OldIndex(slot));
    edit.after = ColumnsText(pair_.NewIndex(slot));
    edit.old_location = OldLocation(Kind::kIndex, slot, "");
    edit.new_location = NewLocation(Kind::kIndex, position, "");
  }

  const Source& old_source_;
  const Source& new_source_;
  const MatchedMetas& pair_;
  DifferenceParts& parts_;
  IdReuse reuse_;
};

void ListLibraryEdits(const Source& old_source, const Source& new_source, DifferenceParts& parts) {
  const auto compare = [&](EditKind kind, std::string_view attribute, auto text) {
    std::string before = text(parts.old_model);
    std::string after = text(parts.new_model);
    if (before == after) return;
    Edit& edit = parts.edits.emplace_back();
    parts.slots.push_back(0);
    edit.kind = kind;
    edit.old_location = {&old_source, {Kind::kMetalib}, before.empty() ? "" : attribute};
    edit.new_location = {&new_source, {Kind::kMetalib}, after.empty() ? "" : attribute};
    edit.before = std::move(before);
    edit.after = std::move(after);
    edit.paths = {""};
    edit.path_count = 1;
  };
  compare(EditKind::kLibraryName, "name", [](const Model& model) { return model.name; });
  compare(EditKind::kLibraryVersion, "version", [](const Model& model) { return std::to_string(model.version); });
  compare(EditKind::kLibraryProtocol, "protocol", [](const Model& model) { return ProtocolText(model.protocol); });
}

// Sets the paths that lead to the edits of a node.
void AddPaths(const MetaPaths& paths, std::size_t meta, const MetaNode& node, std::vector<Edit>& edits) {
  if (node.first_edit == node.end_edit) return;
  const std::vector<std::string> meta_paths = paths.PathsTo(meta);
  for (std::size_t i = node.first_edit; i < node.end_edit; ++i) {
    const bool is_entry = IsOfEntry(edits[i].kind);
    for (const std::string& path : meta_paths) edits[i].paths.push_back(is_entry ? path + "." + edits[i].item : path);
    edits[i].path_count = paths.CountTo(meta);
  }
}

}  // namespace

void ListEdits(const Source& old_source, const Source& new_source, DifferenceParts& parts) {
  ListLibraryEdits(old_source, new_source, parts);
  const MetaPaths paths(parts.old_model);
  for (MetaNode& node : parts.nodes) {
    node.first_edit = parts.edits.size();
    if (node.pair) PairEdits(old_source, new_source, *node.pair, parts).List();
    node.end_edit = parts.edits.size();
    if (node.pair) AddPaths(paths, static_cast<std::size_t>(node.old_meta - parts.old_model.metas.data()), node, parts.edits);
  }
}

}  // namespace korvel
