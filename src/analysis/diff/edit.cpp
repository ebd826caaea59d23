// Names and descriptions of edits. Tested by tests/report/edit_test.cpp.
#include "analysis/diff/edit.h"

#include <array>

#include "base/text.h"

namespace korvel {
namespace {

// The words of an edit: which value changes, or what happens to the item.
struct Wording {
  EditKind kind;
  std::string_view name;
  std::string_view attribute;  // "type"; empty: none
  std::string_view thing;      // "field", before the item; empty: the library or meta as a whole
  std::string_view event;      // "added"; empty: a value changes
};

constexpr std::array kWordings{
    Wording{EditKind::kLibraryName, "library-name", "name", "", ""},
    Wording{EditKind::kLibraryVersion, "library-version", "version", "", ""},
    Wording{EditKind::kLibraryProtocol, "library-protocol", "protocol", "", ""},
    Wording{EditKind::kTableAdded, "table-added", "", "table", "added"},
    Wording{EditKind::kMetaRenamed, "meta-renamed", "", "structure", "renamed"},
    Wording{EditKind::kMetaKind, "meta-kind", "kind", "", ""},
    Wording{EditKind::kTableAttribute, "table-attribute", "attribute", "", ""},
    Wording{EditKind::kPrimaryKey, "primary-key", "primary key", "", ""},
    Wording{EditKind::kSplittableKey, "splittable-key", "splittable key", "", ""},
    Wording{EditKind::kIndexAdded, "index-added", "", "index", "added"},
    Wording{EditKind::kIndexRemoved, "index-removed", "", "index", "removed"},
    Wording{EditKind::kIndexColumns, "index-columns", "columns", "index", ""},
    Wording{EditKind::kIndexMoved, "index-moved", "", "index", "moved"},
    Wording{EditKind::kEntryAdded, "entry-added", "", "field", "added"},
    Wording{EditKind::kEntryRemoved, "entry-removed", "", "field", "removed"},
    Wording{EditKind::kEntryRenamed, "entry-renamed", "", "field", "renamed"},
    Wording{EditKind::kEntryMoved, "entry-moved", "", "field", "moved"},
    Wording{EditKind::kEntryId, "entry-id", "id", "", ""},
    Wording{EditKind::kEntryVersion, "entry-version", "version", "", ""},
    Wording{EditKind::kEntryType, "entry-type", "type", "", ""},
    Wording{EditKind::kEntrySize, "entry-size", "size", "", ""},
    Wording{EditKind::kEntryCount, "entry-count", "count", "", ""},
    Wording{EditKind::kEntryRefer, "entry-refer", "refer", "", ""},
    Wording{EditKind::kEntryCustomAttr2, "entry-customattr2", "customattr2", "", ""},
    Wording{EditKind::kEntryMeta, "entry-meta", "structure", "", ""},
};

// Rows are in the order of the kinds.
constexpr bool RowsAreInOrder() {
  for (std::size_t i = 0; i < kWordings.size(); ++i) {
    if (kWordings[i].kind != static_cast<EditKind>(i)) return false;
  }
  return kWordings.back().kind == EditKind::kEntryMeta;
}
static_assert(RowsAreInOrder());

const Wording& WordingOf(EditKind kind) { return kWordings[static_cast<std::size_t>(kind)]; }

std::string Value(const std::string& text) { return text.empty() ? "none" : text; }

// The owner of the attribute: an entry or index by its name, else the meta or the library.
std::string Owner(const Edit& edit, const Wording& wording) {
  if (edit.kind <= EditKind::kLibraryProtocol) return "the library";
  if (edit.kind < EditKind::kIndexAdded) return edit.meta;
  const std::string item = ValueText(edit.item);
  return wording.thing.empty() ? item : std::string(wording.thing) + " " + item;
}

std::string Event(const Edit& edit, const Wording& wording) {
  const std::string& item = edit.kind == EditKind::kMetaRenamed ? edit.meta : edit.item;
  std::string text = std::string(wording.thing) + " " + ValueText(item) + " " + std::string(wording.event);
  if (!edit.reuse.empty()) return "field " + ValueText(item) + " removed; " + edit.reuse;
  if (wording.event == "renamed") return text + " to " + ValueText(edit.after);
  if (edit.kind == EditKind::kTableAdded) return text + " (refused by " + edit.after + ")";
  if (wording.event != "moved") return text;
  return text + (edit.after.empty() ? " to the front" : " after " + edit.after);
}

std::string Change(const Edit& edit, const Wording& wording) {
  const std::string key = edit.kind == EditKind::kTableAttribute && !edit.item.empty() ? " " + edit.item : "";
  const std::string what = std::string(wording.attribute) + key + " of " + Owner(edit, wording) + ": ";
  // Of a table that is checked alone. Other edits with one value are changes: the same name may mean another field.
  const bool is_attribute = edit.kind == EditKind::kTableAttribute || edit.kind == EditKind::kEntryCustomAttr2;
  if (is_attribute && edit.before == edit.after) return what + Value(edit.after);
  return what + Value(edit.before) + " -> " + Value(edit.after) + (edit.reuse.empty() ? "" : "; " + edit.reuse);
}

}  // namespace

std::string_view NameOf(EditKind kind) { return WordingOf(kind).name; }

bool RemovesElement(const Edit& edit) {
  const bool is_key = edit.kind == EditKind::kPrimaryKey || edit.kind == EditKind::kSplittableKey;
  return WordingOf(edit.kind).event == "removed" || (is_key && edit.after.empty());
}

std::string Describe(const Edit& edit) {
  const Wording& wording = WordingOf(edit.kind);
  return OneLine(wording.event.empty() ? Change(edit, wording) : Event(edit, wording));
}

std::string DescribeIn(const std::string& table, const Edit& edit) {
  if (edit.kind < EditKind::kIndexAdded || edit.meta == table) return Describe(edit);
  Edit qualified = edit;
  qualified.item = edit.meta + "." + ValueText(edit.item);
  return Describe(qualified);
}

}  // namespace korvel
