// Turns matches of the catalog into findings: their edits, paths, locations and suggestions. Tested by tests/cases/warnings.
#include "analysis/warnings/warnings.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "analysis/diff/entry_attributes.h"
#include "analysis/diff/table_attributes.h"
#include "analysis/findings/suggestion_text.h"
#include "analysis/warnings/advice_matches.h"
#include "analysis/warnings/advice_paths.h"
#include "analysis/warnings/element_refusals.h"
#include "analysis/warnings/ignored_attributes.h"
#include "base/text.h"
#include "common/meta_view.h"
#include "schema/model.h"

namespace korvel {
namespace {

using Kind = qmx::ElementId::Kind;

// --- Edits ---

// The metas of a library as models, each read when it is needed first. By their records: an image may repeat a name.
class MetaModels {
 public:
  explicit MetaModels(LPQMXMETALIB library) : library_(library) {}

  const MetaModel& Of(LPQMXMETA meta) {
    const auto [found, is_new] = models_.try_emplace(meta);
    if (is_new) found->second = MetaOf(library_, meta);
    return found->second;
  }

 private:
  LPQMXMETALIB library_;
  std::map<LPQMXMETA, MetaModel> models_;
};

// One side of a match.
struct Side {
  const Source& source;
  MetaModels& metas;  // of the source
  LPQMXMETA meta;
  LPQMXMETAENTRY entry;
  LPQMXMETAINDEX index;
  std::string_view key;  // of an attribute

  // Position in the list of the meta.
  std::uint32_t EntryPosition() const { return static_cast<std::uint32_t>(entry - qmx_get_entry_by_index(meta, 0)); }
  std::uint32_t IndexPosition() const { return static_cast<std::uint32_t>(index - Indexes(meta)[0]); }

  const MetaModel& Meta() const { return metas.Of(meta); }
  const EntryModel& Entry() const { return Meta().entries[EntryPosition()]; }

  Location At(Kind kind, std::uint32_t item, std::string_view attribute) const {
    const std::uint32_t position = kind == Kind::kMetalib ? 0 : PositionOf(source, qmx_get_meta_name(meta)).value_or(0);
    return {&source, {kind, position, item}, attribute};
  }
};

// What an edit says about one side: the value, and where it is.
struct SideValue {
  std::string text;
  Location location;
};

std::string NameOf(LPQMXMETAENTRY entry) { return entry == nullptr ? "" : qmx_get_entry_name(entry); }

std::string NameBefore(const Side& side) {
  return side.EntryPosition() == 0 ? "" : NameOf(qmx_get_entry_by_index(side.meta, static_cast<int>(side.EntryPosition()) - 1));
}

// Of an edit of an entry, on a side that has it.
SideValue EntryValue(EditKind kind, const Side& side) {
  const auto at = [&](std::string_view attribute) { return side.At(Kind::kEntry, side.EntryPosition(), attribute); };
  switch (kind) {
    case EditKind::kEntryRefer: {
      const std::string counter = NameOf(qmx_get_entry_refer(side.entry));
      return {counter, at(counter.empty() ? "" : "refer")};
    }
    case EditKind::kEntryRenamed:
      return {NameOf(side.entry), at("name")};
    case EditKind::kEntryMoved:
      return {NameBefore(side), at("")};
    case EditKind::kEntryCustomAttr2: {
      const std::optional<std::string>& attribute = side.Entry().customattr2;
      return {attribute ? ValueText(*attribute) : "", at(attribute ? "customattr2" : "")};
    }
    case EditKind::kEntryCount:
      return {std::to_string(side.Entry().count), at("count")};
    default:
      return {TypeText(side.Entry()), at("")};
  }
}

// Of an edit of one table attribute.
SideValue AttributeValue(const Side& side) {
  const std::optional<std::string>& attributes = side.Meta().customattr;
  SideValue value{"", side.At(Kind::kMeta, 0, attributes ? "customattr" : "")};
  for (const AttributePair& pair : SplitAttributes(attributes).value_or(std::vector<AttributePair>())) {
    if (pair.key != side.key) continue;
    value.text = ValueText(pair.value);
    value.location.part = pair.span;
  }
  return value;
}

// Of an edit of the library, the table or an index.
SideValue MetaValue(EditKind kind, const Side& side) {
  switch (kind) {
    case EditKind::kLibraryName:
      return {side.source.LibraryName(), side.At(Kind::kMetalib, 0, "name")};
    case EditKind::kLibraryVersion:
      return {std::to_string(qmx_get_metalib_version(side.source.Library())), side.At(Kind::kMetalib, 0, "version")};
    case EditKind::kPrimaryKey:
      return {Join(side.Meta().primary_key, " "), side.At(Kind::kPrimaryKey, 0, "entries")};
    case EditKind::kIndexColumns: {
      const std::uint32_t position = side.IndexPosition();
      return {ColumnsText(side.Meta().indexes[position]), side.At(Kind::kIndex, position, "")};
    }
    case EditKind::kTableAttribute:
      return AttributeValue(side);
    default:
      return {KindText(side.Meta()), side.At(Kind::kMeta, 0, "kind")};
  }
}

SideValue ValueOf(EditKind kind, const Side& side) { return IsOfEntry(kind) ? EntryValue(kind, side) : MetaValue(kind, side); }

// Whether the counter of an entry was replaced by another field with its name.
bool ReplacesCounter(const AdviceMatch& match) {
  if (match.kind != EditKind::kEntryRefer) return false;
  return SameName(EntryName(qmx_get_entry_refer(match.old_entry)), EntryName(qmx_get_entry_refer(match.new_entry)));
}

std::string IdText(LPQMXMETAENTRY entry) {
  const int id = qmx_get_entry_id(entry);
  return id < 0 ? "" : std::to_string(id);
}

std::string NameAndId(LPQMXMETAENTRY entry) {
  const std::string id = IdText(entry);
  return NameOf(entry) + (id.empty() ? " (no id)" : " (id " + id + ")");
}

std::string SuggestionFor(const AdviceMatch& match, const Edit& edit) {
  if (match.rule == &kAttributeIgnoredAdvice && match.new_entry != nullptr) {
    return "write '" + OneLine(SortMarkLike(qmx_get_entry_customattr2(OwnerOf(match.new_meta), match.new_entry))) + "'";
  }
  if (match.rule->suggestion != nullptr) return FillIn(match.rule->suggestion, edit);
  if (!ReplacesCounter(match)) return LeavingOut(edit);
  const LPQMXMETAENTRY counter = qmx_get_entry_refer(match.old_entry);
  Edit other_id;
  other_id.kind = EditKind::kEntryId;
  other_id.item = NameOf(counter);
  other_id.before = IdText(counter);
  return LeavingOut(other_id);
}

bool IsOfLibrary(EditKind kind) { return kind <= EditKind::kLibraryProtocol; }

// The name of the item of an edit, on the old side if it has one.
std::string ItemOf(const AdviceMatch& match) {
  if (!match.attribute.empty()) return std::string(match.attribute);
  if (match.old_index != nullptr) return IndexName(match.old_meta, match.old_index);
  return NameOf(match.old_entry != nullptr ? match.old_entry : match.new_entry);
}

// --- Findings ---

class AdviceWriter {
 public:
  AdviceWriter(const TableContext& context, const Changes* changes)
      : context_(context),
        refusals_(changes),
        old_metas_(context.old_source.Library()),
        new_metas_(context.new_source.Library()),
        paths_(context.old_source, context.table) {}

  void Add(const AdviceMatch& match) {
    Edit edit = EditOf(match);
    paths_.AddTo(edit, match.rule == &kKeyStructureAdvice);
    Finding finding;
    finding.level = match.rule->level;
    finding.edits = {advice_.edits.size()};
    finding.verdict.rule = match.rule->row.id;
    finding.path = edit.paths.front();
    finding.refusals = refusals_.Of(edit);
    finding.old_location = edit.old_location;
    finding.new_location = edit.new_location;
    finding.suggestion = SuggestionFor(match, edit);
    advice_.edits.push_back(std::move(edit));
    finding.fingerprint =
        FingerprintOf(context_.new_source.path_in_project, context_.old_source.LibraryName(), finding, advice_.edits);
    advice_.findings.push_back(std::move(finding));
  }

  Advice Take() { return std::move(advice_); }

 private:
  // Without paths.
  Edit EditOf(const AdviceMatch& match) {
    Edit edit;
    edit.kind = match.kind;
    edit.item = ItemOf(match);
    if (!IsOfLibrary(match.kind)) edit.meta = qmx_get_meta_name(match.new_meta);
    if (match.kind != EditKind::kEntryAdded && match.old_meta != nullptr) {
      SideValue value = ValueOf(
          match.kind, {context_.old_source, old_metas_, match.old_meta, match.old_entry, match.old_index, match.attribute});
      edit.before = std::move(value.text);
      edit.old_location = value.location;
    }
    const Side new_side{context_.new_source, new_metas_, match.new_meta, match.new_entry, match.new_index, match.attribute};
    if (match.kind == EditKind::kEntryRemoved) {
      edit.new_location = new_side.At(Kind::kMeta, 0, "");
    } else {
      SideValue value = ValueOf(match.kind, new_side);
      edit.after = std::move(value.text);
      edit.new_location = value.location;
    }
    if (match.rule == &kAttributeIgnoredAdvice && match.new_entry != nullptr) edit.new_location.attribute = "customattr2";
    if (ReplacesCounter(match)) {
      edit.before = NameAndId(qmx_get_entry_refer(match.old_entry));
      edit.after = NameAndId(qmx_get_entry_refer(match.new_entry));
    }
    return edit;
  }

  const TableContext& context_;
  ElementRefusals refusals_;
  MetaModels old_metas_;
  MetaModels new_metas_;
  AdvicePaths paths_;
  Advice advice_;
};

}  // namespace

Advice FindWarnings(const TableContext& context, const Changes* changes, AdviceSubject subject) {
  const LPQMXMETALIB old_lib = context.old_source.Library();
  const LPQMXMETALIB new_lib = context.new_source.Library();
  const char* const name = context.table.c_str();
  const TableMetas table{old_lib, new_lib, qmx_get_meta_by_name(old_lib, name), qmx_get_meta_by_name(new_lib, name),
                         context.settings.created_as};
  const bool is_new = subject == AdviceSubject::kNewTable;
  std::vector<AdviceMatch> matches;
  if (!is_new) matches = FindAdviceMatches(table);
  if (subject != AdviceSubject::kChange || old_lib != new_lib) {
    const std::vector<AdviceMatch> ignored = FindIgnoredAttributes(is_new ? nullptr : table.old_meta, table.new_meta);
    matches.insert(matches.begin(), ignored.begin(), ignored.end());
  }
  if (matches.empty()) return {};
  AdviceWriter writer(context, changes);
  for (const AdviceMatch& match : matches) writer.Add(match);
  return writer.Take();
}

}  // namespace korvel
