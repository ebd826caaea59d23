// Makes up legal forms. Nothing is decided: what a form should look like is guessed from the edit, and the checker says whether
// it is right. Held by tests/report/ways_out_test.cpp.
#include "analysis/suggest/alternatives.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <string_view>
#include <utility>

#include "analysis/suggest/suggestion_text.h"
#include "base/one_line.h"
#include "common/check_table.h"

namespace korvel {
namespace {

constexpr std::size_t kLongestName = 31;  // bytes
constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNameCharacter(char c) { return IsDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }

// The identifier that is most like a name.
std::string IdentifierLike(const std::string& name) {
  std::string like = name.empty() ? "field" : name;
  for (char& c : like) c = IsNameCharacter(c) ? c : '_';
  if (IsDigit(like.front())) like.insert(0, "_");
  return like.substr(0, kLongestName);
}

std::string Text(std::int64_t number) { return std::to_string(number); }

// One thing that can be done to an added field.
struct Part {
  std::function<void(Draft&)> change;
  std::string text;
};

// All combinations of the parts, those of few parts first.
std::vector<Alternative> Combined(const std::vector<Part>& parts) {
  std::vector<unsigned> sets;
  for (unsigned set = 1; set < 1u << parts.size(); ++set) sets.push_back(set);
  std::ranges::stable_sort(sets, {}, [](unsigned set) { return std::popcount(set); });
  std::vector<Alternative> forms;
  for (const unsigned set : sets) {
    std::vector<std::function<void(Draft&)>> changes;
    std::string text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
      if ((set >> i & 1) == 0) continue;
      changes.push_back(parts[i].change);
      text.append(text.empty() ? "" : "; ").append(parts[i].text);
    }
    forms.push_back({true,
                     [changes](Draft& draft) {
                       for (const auto& change : changes) change(draft);
                     },
                     text});
  }
  return forms;
}

// A field that is like another one in what a count, a type and a size are.
bool HasSameShape(const EntryModel& a, const EntryModel& b) { return a.type == b.type && a.size == b.size && a.count == b.count; }

// Replaces the value of one key in "key=value;key=value", if it has one.
void SetValue(std::string& attributes, const std::string& key, const std::string& value) {
  const std::string pair = key + "=";
  std::size_t at = 0;
  while (attributes.compare(at, pair.size(), pair) != 0) {
    at = attributes.find(';', at);
    if (at == std::string::npos) return;
    ++at;
  }
  const std::size_t begin = at + pair.size();
  attributes.replace(begin, std::min(attributes.find(';', begin), attributes.size()) - begin, value);
}

}  // namespace

AlternativeMaker::AlternativeMaker(const Difference& difference, const Settings& settings)
    : difference_(difference), settings_(settings) {
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
  if (entry->version < version_ && version_ <= kLargest) {
    const auto version = static_cast<std::int32_t>(version_);
    parts.push_back({[edit, version](Draft& draft) {
                       draft.RaiseVersion(version);
                       if (EntryModel* field = draft.Find(edit.meta, edit.item)) field->version = version;
                     },
                     "give " + name + " version " + Text(version) + ", which is above the old library's " +
                         Text(difference_.old_model().version)});
  }
  if (new_metas_.at(edit.meta)->entries.back().name != edit.item) {
    parts.push_back(
        {[edit](Draft& draft) { draft.MoveToEnd(edit.meta, edit.item); }, "put " + name + " behind all other fields"});
  }
  const bool needs_id = entry->id < 0 && difference_.old_model().protocol == qmx::Protocol::kTlv;
  if (needs_id || (entry->id >= 0 && TakenIn(edit.meta).old_ids.contains(entry->id))) {
    const std::int32_t id = NextId(edit.meta);
    parts.push_back({[edit, id](Draft& draft) {
                       if (EntryModel* field = draft.Find(edit.meta, edit.item)) field->id = id;
                     },
                     "give " + name + " the id " + Text(id) + ", which no field had"});
  }
  // Last, since the others know the field by its name.
  if (const std::string like = IdentifierLike(edit.item); like != edit.item) {
    const std::string free = UniqueName(edit.meta, like);
    parts.push_back({[edit, free](Draft& draft) { draft.Rename(edit.meta, edit.item, free); }, "call it " + free});
  }
  return Combined(parts);
}

// A field that becomes another one: the old one stays, and the other one comes beside it.
std::vector<Alternative> AlternativeMaker::OfChanged(const Edit& edit) {
  const ReplacementField& beside = ReplacementFieldOf(edit);
  if (!beside.can_be) return {};
  const EntryModel& entry = beside.entry;
  std::string text = "keep " + OneLine(edit.item) + " as it is; add a new field " + OneLine(entry.name) + " (" + ShapeOf(entry);
  if (entry.id >= 0) text += ", id " + Text(entry.id);
  text += ", version " + Text(entry.version) + ") for the new values";
  return {{false,
           [edit, entry, version = beside.kept_version, &from = difference_.new_model()](Draft& draft) {
             draft.RaiseVersion(entry.version);
             draft.ImportMeta(from, entry.type);
             if (EntryModel* kept = draft.Find(edit.meta, edit.item)) kept->version = version;
             draft.Add(edit.meta, entry);
           },
           text}};
}

// Attributes that a table gets must say what the server holds.
std::vector<Alternative> AlternativeMaker::OfAttribute(const Edit& edit) const {
  if (!edit.before.empty()) return {};
  std::vector<Part> parts;
  const auto say = [&](const std::string& key, const std::string& value) {
    parts.push_back({[meta = edit.meta, key, value](Draft& draft) {
                       MetaModel* const table = draft.FindMeta(meta);
                       if (table != nullptr && table->customattr) SetValue(*table->customattr, key, value);
                     },
                     "say " + key + "=" + value + ", which is what the server holds"});
  };
  if (settings_.list_num.value_or(0) > 0) say("ListNum", Text(*settings_.list_num));
  if (settings_.type) say("TableType", *settings_.type == TABLE_TYPE_GENERIC ? "GENERIC" : "LIST");
  return Combined(parts);
}

const AlternativeMaker::ReplacementField& AlternativeMaker::ReplacementFieldOf(const Edit& edit) {
  const auto [found, is_new] = beside_.try_emplace(edit.meta + '\0' + edit.item);
  ReplacementField& beside = found->second;
  if (!is_new) return beside;
  const EntryModel* const old_entry = EntryAt(difference_.old_model(), edit.old_location);
  const EntryModel* const new_entry = EntryAt(difference_.new_model(), edit.new_location);
  if (old_entry == nullptr || new_entry == nullptr || version_ > kLargest) return beside;
  const bool shrinks =
      old_entry->type == new_entry->type &&
      (new_entry->size < old_entry->size || (new_entry->size == old_entry->size && new_entry->count < old_entry->count));
  if (HasSameShape(*old_entry, *new_entry) || shrinks) return beside;
  beside.can_be = true;
  beside.kept_version = old_entry->version;
  beside.entry = *new_entry;
  const std::string wish = new_entry->name == old_entry->name ? IdentifierLike(new_entry->name + "_2") : new_entry->name;
  beside.entry.name = new_entry->name == old_entry->name ? UniqueName(edit.meta, wish) : wish;
  beside.entry.version = static_cast<std::int32_t>(version_);
  if (new_entry->id >= 0) beside.entry.id = NextId(edit.meta);
  return beside;
}

AlternativeMaker::Taken& AlternativeMaker::TakenIn(const std::string& meta) {
  const auto [found, is_new] = taken_.try_emplace(meta);
  Taken& taken = found->second;
  if (!is_new) return taken;
  for (const auto* metas : {&old_metas_, &new_metas_}) {
    const auto side = metas->find(meta);
    if (side == metas->end()) continue;
    for (const EntryModel& entry : side->second->entries) {
      taken.names.insert(entry.name);
      taken.largest_id = std::max(taken.largest_id, entry.id);
      if (metas == &old_metas_) taken.old_ids.insert(entry.id);
    }
  }
  return taken;
}

// The wish itself if it is free, else with a number behind it, cut so that it stays as long as a name may be.
std::string AlternativeMaker::UniqueName(const std::string& meta, const std::string& wish) {
  Taken& taken = TakenIn(meta);
  std::string name = wish;
  for (std::int64_t number = 2; !taken.names.insert(name).second; ++number) {
    const std::string tail = "_" + Text(number);
    name = wish.substr(0, kLongestName - tail.size()) + tail;
  }
  return name;
}

// None is left behind the largest number: then the last one is offered again, and refused.
std::int32_t AlternativeMaker::NextId(const std::string& meta) {
  Taken& taken = TakenIn(meta);
  if (taken.largest_id < kLargest) ++taken.largest_id;
  return taken.largest_id;
}

const EntryModel* AlternativeMaker::EntryAt(const Model& model, const Location& place) const {
  const auto& metas = &model == &difference_.old_model() ? old_positions_ : new_positions_;
  const auto meta = metas.find(place.element.meta);
  if (!place || place.element.kind != qmx::ElementId::Kind::kEntry || meta == metas.end()) return nullptr;
  return place.element.item < meta->second->entries.size() ? &meta->second->entries[place.element.item] : nullptr;
}

}  // namespace korvel
