// Proposes alternatives by kind of edit. Whether one is allowed is not decided here. Tested by tests/report/suggestions_test.cpp.
#include "analysis/suggest/alternatives.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

#include "analysis/diff/table_attributes.h"
#include "analysis/findings/suggestion_text.h"
#include "analysis/suggest/respelling.h"
#include "base/text.h"
#include "common/check_table.h"
#include "schema/declaration.h"

namespace korvel {
namespace {

constexpr std::int32_t kMaxNumber = std::numeric_limits<std::int32_t>::max();

std::string Text(std::int64_t number) { return std::to_string(number); }

// One change that may make an added field or attribute allowed.
struct Part {
  std::function<void(ModelEditor&)> change;
  std::string text;
};

// All combinations of the parts, those with fewer parts first.
std::vector<Alternative> Combined(const std::vector<Part>& parts) {
  std::vector<unsigned> sets;
  for (unsigned set = 1; set < 1u << parts.size(); ++set) sets.push_back(set);
  std::ranges::stable_sort(sets, {}, [](unsigned set) { return std::popcount(set); });
  std::vector<Alternative> alternatives;
  for (const unsigned set : sets) {
    std::vector<std::function<void(ModelEditor&)>> changes;
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
      if ((set >> i & 1) == 0) continue;
      changes.push_back(parts[i].change);
      AppendPart(text, "; ", parts[i].text);
    }
    alternatives.push_back({true,
                            [changes](ModelEditor& editor) {
                              for (const auto& change : changes) change(editor);
                            },
                            text});
  }
  return alternatives;
}

// Whether two fields have the same type, size and count.
bool HasSameShape(const EntryModel& a, const EntryModel& b) { return a.type == b.type && a.size == b.size && a.count == b.count; }

// Whether an edit of this kind changes the name or an attribute of a field.
bool ChangesField(EditKind kind) {
  return IsOfEntry(kind) && kind != EditKind::kEntryAdded && kind != EditKind::kEntryRemoved && kind != EditKind::kEntryMoved;
}

// "(string(64), id 9, version 7)"
std::string DetailsOf(const EntryModel& entry) {
  const std::string id = entry.id < 0 ? "" : ", id " + Text(entry.id);
  return "(" + ShapeOf(entry) + id + ", version " + Text(entry.version) + ")";
}

// "note_2 (string(64), id 9, version 7)"
std::string Described(const EntryModel& entry) { return OneLine(entry.name) + " " + DetailsOf(entry); }

// Whether a respelling writes a key, and with it a value.
bool Writes(const Respelling& respelling, const std::string& key) {
  return std::ranges::any_of(respelling.pairs, [&](const auto& pair) { return pair.second.starts_with(key + "="); });
}

}  // namespace

AlternativeMaker::AlternativeMaker(const Difference& difference, const Settings& settings, const ReservedFields* reserved)
    : difference_(difference), settings_(settings), names_(old_metas_, new_metas_, reserved) {
  const Model& old_model = difference.old_model();
  const Model& new_model = difference.new_model();
  version_ = std::max<std::int64_t>(new_model.version, std::int64_t{old_model.version} + 1);
  for (const MetaModel& meta : old_model.metas) {
    old_metas_.emplace(meta.name, &meta);
    old_positions_.emplace(meta.position, &meta);
  }
  for (const MetaModel& meta : new_model.metas) {
    new_metas_.emplace(meta.name, &meta);
    new_positions_.emplace(meta.position, &meta);
  }
  for (std::size_t i = 0; i < difference.edits().size(); ++i) {
    const Edit& edit = difference.edits()[i];
    if (edit.kind == EditKind::kMetaRenamed) new_metas_.emplace(edit.before, new_metas_.at(edit.after));
    if (edit.kind == EditKind::kPrimaryKey) changed_keys_.insert(edit.meta);
    if (edit.kind == EditKind::kEntryAdded) added_.insert({edit.meta, edit.item});
    if (ChangesField(edit.kind)) edits_of_[{edit.meta, edit.item}].push_back(i);
  }
}

std::vector<Alternative> AlternativeMaker::AlternativesOf(const Edit& edit) {
  switch (edit.kind) {
    case EditKind::kEntryAdded:
      return OfAdded(edit);
    case EditKind::kEntryRenamed:
    case EditKind::kEntryType:
    case EditKind::kEntryMeta:
    case EditKind::kEntrySize:
    case EditKind::kEntryCount:
    case EditKind::kEntryVersion:
      return OfChanged(edit);
    case EditKind::kTableAttribute:
      return OfAttribute(edit);
    default:
      return {};
  }
}

std::vector<Alternative> AlternativeMaker::OfAdded(const Edit& edit) {
  const EntryModel* const entry = EntryAt(difference_.new_model(), edit.new_location);
  if (entry == nullptr) return {};
  const std::string name = OneLine(edit.item);
  std::vector<Part> parts;
  if (entry->version < version_ && version_ <= kMaxNumber) {
    const auto version = static_cast<std::int32_t>(version_);
    parts.push_back({[edit, version](ModelEditor& editor) {
                       editor.RaiseVersion(version);
                       if (EntryModel* field = editor.Find(edit.meta, edit.item)) field->version = version;
                     },
                     "set the version of " + name + " to " + Text(version) + ", above the old library's " +
                         Text(difference_.old_model().version)});
  }
  if (new_metas_.at(edit.meta)->entries.back().name != edit.item) {
    parts.push_back(
        {[edit](ModelEditor& editor) { editor.MoveToEnd(edit.meta, edit.item); }, "move " + name + " after all other fields"});
  }
  const bool needs_id = entry->id < 0 && difference_.old_model().protocol == qmx::Protocol::kTlv;
  if (needs_id || (entry->id >= 0 && names_.IsOldId(edit.meta, entry->id))) {
    const std::int32_t id = names_.NextId(edit.meta);
    parts.push_back({[edit, id](ModelEditor& editor) {
                       if (EntryModel* field = editor.Find(edit.meta, edit.item)) field->id = id;
                     },
                     "set the id of " + name + " to " + Text(id) + ", which no field has used"});
  }
  if (const auto counter = version_ <= kMaxNumber ? CounterLike(edit.meta, entry->refer) : std::nullopt) {
    parts.push_back({[edit, counter = *counter](ModelEditor& editor) {
                       editor.RaiseVersion(counter.version);
                       editor.Add(edit.meta, counter);
                       if (EntryModel* field = editor.Find(edit.meta, edit.item)) field->refer = counter.name;
                       editor.MoveToEnd(edit.meta, edit.item);  // a counter comes before what it counts
                     },
                     "add a new field " + Described(*counter) + " that counts " + name});
  }
  // Last, because the other parts find the field by its old name.
  if (const std::string like = IdentifierLike(edit.item); like != edit.item) {
    const std::string unused = names_.UniqueName(edit.meta, like);
    parts.push_back(
        {[edit, unused](ModelEditor& editor) { editor.Rename(edit.meta, edit.item, unused); }, "rename it to " + unused});
  }
  return Combined(parts);
}

// Leaves out all changes of the old field, and adds a new one with the new shape.
std::vector<Alternative> AlternativeMaker::OfChanged(const Edit& edit) {
  const ReplacementField& replacement = ReplacementFieldOf(edit);
  if (!replacement.is_possible) return {};
  const EntryModel& entry = replacement.entry;
  std::string text = "keep " + OneLine(edit.item);
  if (edit.reuse.empty()) {
    text += " as it is; add a new field " + Described(entry) + " for the new values";
  } else {
    text += " with id " + Text(EntryAt(difference_.old_model(), edit.old_location)->id) + "; give " + OneLine(entry.name) +
            " an id of its own " + DetailsOf(entry);
  }
  if (replacement.counter) text += ", and a new field " + Described(*replacement.counter) + " that counts them";
  if (KeepsKey(edit)) text += "; the key does not change";
  return {{false,
           [meta = edit.meta, entry, counter = replacement.counter, &from = difference_.new_model()](ModelEditor& editor) {
             editor.RaiseVersion(entry.version);
             editor.ImportMeta(from, entry.type);
             if (counter) editor.Add(meta, *counter);
             editor.Add(meta, entry);
             editor.MoveToEnd(meta, entry.name);  // its counter may be a new field that is moved, too
           },
           text, edits_of_[{edit.meta, edit.item}]}};
}

// An attribute may be misspelled. New attributes of a table must match what the server has stored. A value that is only
// misspelled is not set to another one.
std::vector<Alternative> AlternativeMaker::OfAttribute(const Edit& edit) const {
  std::vector<Part> parts;
  const auto change = [&edit](auto change_text) {
    return [meta = edit.meta, change_text](ModelEditor& editor) {
      MetaModel* const table = editor.FindMeta(meta);
      if (table != nullptr && table->customattr) change_text(*table->customattr);
    };
  };
  const std::optional<Respelling> respelling = FindRespelling(edit, new_metas_.at(edit.meta)->customattr);
  if (respelling) {
    parts.push_back({change([respelling](std::string& text) { Apply(*respelling, text); }), respelling->text});
  }
  if (!edit.before.empty()) return Combined(parts);
  const auto set = [&](const std::string& key, const std::string& value) {
    if (respelling && Writes(*respelling, key)) return;
    parts.push_back({change([key, value](std::string& text) { SetAttribute(text, key, value); }),
                     "set " + key + "=" + value + ", the value on the server"});
  };
  if (settings_.list_num > 0) set("ListNum", Text(settings_.list_num));
  set("TableType", settings_.type == TABLE_TYPE_GENERIC ? "GENERIC" : "LIST");
  return Combined(parts);
}

const AlternativeMaker::ReplacementField& AlternativeMaker::ReplacementFieldOf(const Edit& edit) {
  const auto [found, is_new] = replacements_.try_emplace(edit.meta + '\0' + edit.item);
  ReplacementField& replacement = found->second;
  if (!is_new) return replacement;
  const EntryModel* const old_entry = EntryAt(difference_.old_model(), edit.old_location);
  const EntryModel* const new_entry = EntryAt(difference_.new_model(), edit.new_location);
  if (old_entry == nullptr || new_entry == nullptr || version_ > kMaxNumber) return replacement;
  const bool shrinks =
      old_entry->type == new_entry->type &&
      (new_entry->size < old_entry->size || (new_entry->size == old_entry->size && new_entry->count < old_entry->count));
  if (HasSameShape(*old_entry, *new_entry) || shrinks) return replacement;
  replacement.is_possible = true;
  replacement.entry = *new_entry;
  // A name of the old schema belongs to a field that may be kept, too.
  const bool is_free = !names_.IsOldName(edit.meta, new_entry->name);
  if (!is_free) replacement.entry.name = names_.UniqueName(edit.meta, IdentifierLike(new_entry->name + "_2"));
  replacement.entry.version = static_cast<std::int32_t>(version_);
  if (new_entry->id >= 0) replacement.entry.id = names_.NextId(edit.meta);
  replacement.counter = CounterLike(edit.meta, new_entry->refer);
  if (replacement.counter) replacement.entry.refer = replacement.counter->name;
  return replacement;
}

bool AlternativeMaker::KeepsKey(const Edit& edit) const {
  const std::vector<std::string>& members = old_metas_.at(edit.meta)->primary_key;
  if (changed_keys_.contains(edit.meta) || std::ranges::find(members, edit.item) == members.end()) return false;
  const auto entry_in = [&](const std::map<std::string, const MetaModel*>& metas, const std::string& name) {
    const std::vector<EntryModel>& entries = metas.at(edit.meta)->entries;
    const auto found = std::ranges::find(entries, name, &EntryModel::name);
    return found == entries.end() ? nullptr : &*found;
  };
  return std::ranges::all_of(members, [&](const std::string& member) {
    const EntryModel* const before = entry_in(old_metas_, member);
    const EntryModel* const after = entry_in(new_metas_, member);
    const bool is_same = after != nullptr && *before == *after;
    return member == edit.item || (is_same && !IsCompositeType(before->type));
  });
}

std::optional<EntryModel> AlternativeMaker::CounterLike(const std::string& meta, const std::string& refer) {
  const std::vector<EntryModel>& entries = new_metas_.at(meta)->entries;
  const auto like = std::ranges::find(entries, refer, &EntryModel::name);
  if (refer.empty() || like == entries.end() || added_.contains({meta, refer})) return std::nullopt;
  EntryModel counter = *like;
  counter.name = names_.UniqueName(meta, IdentifierLike(like->name + "_2"));
  counter.version = static_cast<std::int32_t>(version_);
  if (like->id >= 0) counter.id = names_.NextId(meta);
  return counter;
}

const EntryModel* AlternativeMaker::EntryAt(const Model& model, const Location& location) const {
  const auto& metas = &model == &difference_.old_model() ? old_positions_ : new_positions_;
  const auto meta = metas.find(location.element.meta);
  if (!location || location.element.kind != qmx::ElementId::Kind::kEntry || meta == metas.end()) return nullptr;
  return location.element.item < meta->second->entries.size() ? &meta->second->entries[location.element.item] : nullptr;
}

}  // namespace korvel
