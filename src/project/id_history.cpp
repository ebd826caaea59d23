// Tested by tests/tool/history_test.cpp.
#include "project/id_history.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "analysis/diff/entry_attributes.h"
#include "analysis/findings/finding.h"
#include "analysis/findings/suggestion_text.h"
#include "base/limits.h"
#include "base/text.h"
#include "common/meta_view.h"
#include "report/result/text_ranges.h"
#include "report/result/words.h"
#include "schema/model.h"

namespace korvel {
namespace {

// Sets the locations of fields of a source.
void Locate(const Source& source, const std::vector<std::pair<qmx::ElementId, ReusedId::Use*>>& fields) {
  std::vector<Location> locations;
  locations.reserve(fields.size());
  for (const auto& [element, use] : fields) locations.push_back({&source, element, ""});
  const std::vector<std::optional<TextRange>> ranges = FindTextRanges(locations);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    fields[i].second->location = ranges[i] ? ToText(*ranges[i]) : "";
    if (ranges[i] && ranges[i]->begin) fields[i].second->position = *ranges[i]->begin;
  }
}

std::string ToText(const ReusedId::Use& use) { return OneLine(use.field) + ", " + OneLine(use.type); }

// Without paths and locations.
ReusedId ReuseOf(const Source& source, const std::string& meta, int id, const ReusedId::Use& before, const ReusedId::Use& after) {
  constexpr char kEnd = '\0';
  Edit edit;
  edit.kind = EditKind::kEntryAdded;
  edit.meta = meta;
  edit.item = after.field;
  edit.after = after.type;
  ReusedId reused{.meta = meta, .id = id, .before = before, .after = after};
  reused.file = source.path_in_project;
  reused.change = "id " + std::to_string(id) + " of " + OneLine(meta) + ": " + ToText(before) + " -> " + ToText(after);
  reused.suggestion = FillIn(kIdReusedAdvice.suggestion, edit);
  reused.fingerprint =
      FingerprintOf(reused.file + kEnd + source.LibraryName() + kEnd + kIdReusedAdvice.row.id + kEnd + reused.change);
  return reused;
}

qmx::ElementId EntryAt(std::uint32_t meta, std::uint32_t entry) { return {qmx::ElementId::Kind::kEntry, meta, entry}; }

}  // namespace

// Walks over the structures that tables of one version reach, along their first paths.
class IdHistory::Walk {
 public:
  Walk(std::size_t version, const Source& source) : version_(version), source_(source) {}

  Structures Run(const std::vector<std::string>& tables) {
    for (const std::string_view name : source_.tables) {
      const std::string table(name);
      const bool is_wanted = tables.empty() || std::ranges::find(tables, table) != tables.end();
      if (is_wanted) Open(qmx_get_meta_by_name(source_.Library(), table.c_str()), {{table, table}, table});
    }
    for (; !open_.empty(); open_.pop_front()) Visit(open_.front().first, open_.front().second);
    Structures structures;
    for (const auto& [meta, structure] : known_) {
      for (auto& [id, use] : structure->fields) use.is_truncated = structure->is_truncated;
      for (const std::string& key : structure->keys) structures.emplace(key, structure);
      structures.emplace("/" + structure->name, structure);
    }
    return structures;
  }

 private:
  struct Path {
    FieldPath path;
    std::string key;
  };

  void Open(LPQMXMETA meta, Path path) {
    if (meta != nullptr) open_.emplace_back(meta, std::move(path));
  }

  void Visit(LPQMXMETA meta, const Path& path) {
    std::shared_ptr<Structure>& structure = known_[meta];
    if (structure == nullptr) structure = StructureOf(meta);
    structure->is_truncated = structure->paths.size() == kMaxPaths;
    if (structure->is_truncated) return;
    structure->paths.push_back(path.path);
    structure->keys.push_back(path.key);
    for (const auto [index, entry] : Entries(meta)) {
      const std::string name = qmx_get_entry_name(entry) + std::string(qmx_get_entry_count(entry) == 1 ? "" : "[]");
      Open(qmx_get_entry_type_meta(source_.Library(), entry),
           {{path.path.table, path.path.path + "." + name}, path.key + "/" + std::to_string(qmx_get_entry_id(entry))});
    }
  }

  std::shared_ptr<Structure> StructureOf(LPQMXMETA meta) const {
    const MetaModel model = MetaOf(source_.Library(), meta);
    auto structure = std::make_shared<Structure>();
    structure->name = model.name;
    const std::uint32_t position = PositionOf(source_, model.name).value_or(0);
    for (const auto [index, entry] : Entries(meta)) {
      const EntryModel& field = model.entries[static_cast<std::size_t>(index)];
      if (field.id < 0) continue;
      const std::string count = field.count == 1 ? "" : ", count " + std::to_string(field.count);
      Use use{{version_, field.name, TypeText(field) + count, ""}, qmx_get_entry_type(entry), field.size, field.count};
      if (IsComposite(use.type)) use.structure = field.type;
      use.meta = position;
      use.entry = static_cast<std::uint32_t>(index);
      structure->fields.try_emplace(field.id, std::move(use));
    }
    return structure;
  }

  std::size_t version_;
  const Source& source_;
  std::deque<std::pair<LPQMXMETA, Path>> open_;
  std::map<LPQMXMETA, std::shared_ptr<Structure>> known_;
};

void IdHistory::Add(std::size_t version, const Source& source, const Source* previous) {
  const bool is_tlv = IsTlv(source.Library());
  Structures structures;
  if (is_tlv) structures = Walk(version, source).Run(tables_);
  if (was_tlv_ && previous != nullptr) AddGone(structures, *previous);
  if (is_tlv) Compare(structures, source);
  live_ = std::move(structures);
  was_tlv_ = is_tlv;
}

// Locations are found while the version with the fields is in memory.
void IdHistory::AddGone(const Structures& structures, const Source& previous) {
  std::vector<std::pair<qmx::ElementId, ReusedId::Use*>> removed;
  for (const auto& [key, structure] : live_) {
    const auto now = structures.find(key);
    for (const auto& [id, use] : structure->fields) {
      if (now != structures.end() && now->second->fields.contains(id)) continue;
      Use& gone = gone_.insert_or_assign(Key(key, id), use).first->second;
      removed.emplace_back(EntryAt(gone.meta, gone.entry), &gone.use);
    }
  }
  Locate(previous, removed);
}

// Whether records with the field `before` may not read back as `after`.
bool IdHistory::IsOther(const Use& before, const Use& after) {
  return before.type != after.type || before.structure != after.structure || after.size < before.size ||
         after.count < before.count;
}

// A field that comes back with the same type reads old values: its id is not forgotten, but that is no reuse.
void IdHistory::Compare(const Structures& structures, const Source& source) {
  const std::size_t known = reused_.size();
  std::vector<qmx::ElementId> elements;
  std::set<std::pair<const Structure*, int>> found;
  for (auto gone = gone_.begin(); gone != gone_.end();) {
    const auto& [key, id] = gone->first;
    const Use& before = gone->second;
    const auto structure = structures.find(key);
    if (structure == structures.end() || !structure->second->fields.contains(id)) {
      ++gone;
      continue;
    }
    const Use& after = structure->second->fields.at(id);
    // A name matters only where paths were left out.
    const bool is_same = !key.starts_with('/') || before.is_truncated || after.is_truncated;
    if (is_same && IsOther(before, after) && found.emplace(structure->second.get(), id).second) {
      ReusedId& reused = reused_.emplace_back(ReuseOf(source, structure->second->name, id, before.use, after.use));
      reused.paths = structure->second->paths;
      for (FieldPath& path : reused.paths) path.path += "." + after.use.field;
      elements.push_back(EntryAt(after.meta, after.entry));
    }
    gone = gone_.erase(gone);
  }
  std::vector<std::pair<qmx::ElementId, ReusedId::Use*>> added;
  for (std::size_t i = 0; i < elements.size(); ++i) added.emplace_back(elements[i], &reused_[known + i].after);
  Locate(source, added);
}

}  // namespace korvel
