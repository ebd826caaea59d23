// Tested by tests/tool/history_test.cpp.
#include "project/id_history.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <utility>

#include "analysis/diff/entry_attributes.h"
#include "analysis/findings/finding.h"
#include "analysis/suggest/suggestion_text.h"
#include "common/meta_view.h"
#include "report/result/text_ranges.h"
#include "report/result/words.h"
#include "schema/model.h"

namespace korvel {
namespace {

// The structures that tables reach, the tables included. Each once.
std::set<LPQMXMETA> Reached(const Source& source, const std::vector<std::string>& tables) {
  std::set<LPQMXMETA> reached;
  std::vector<LPQMXMETA> open;
  const auto add = [&](LPQMXMETA meta) {
    if (meta != nullptr && reached.insert(meta).second) open.push_back(meta);
  };
  for (const std::string_view table : source.tables) {
    const bool is_wanted = tables.empty() || std::ranges::find(tables, table) != tables.end();
    if (is_wanted) add(qmx_get_meta_by_name(source.Library(), std::string(table).c_str()));
  }
  while (!open.empty()) {
    const LPQMXMETA meta = open.back();
    open.pop_back();
    for (const auto [index, entry] : Entries(meta)) add(qmx_get_entry_type_meta(source.Library(), entry));
  }
  return reached;
}

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

ReusedId ReuseOf(const Source& source, const std::string& meta, int id, const ReusedId::Use& before, const ReusedId::Use& after) {
  Edit edit;
  edit.kind = EditKind::kEntryAdded;
  edit.meta = meta;
  edit.item = after.field;
  edit.after = after.type;
  Finding finding;
  finding.edits = {0};
  finding.verdict.rule = kIdReusedAdvice.row.id;
  return {meta,
          id,
          before,
          after,
          FillIn(kIdReusedAdvice.suggestion, edit),
          FingerprintOf(source.path_in_project, source.LibraryName(), finding, {edit})};
}

qmx::ElementId EntryAt(std::uint32_t meta, std::uint32_t entry) { return {qmx::ElementId::Kind::kEntry, meta, entry}; }

}  // namespace

std::map<IdHistory::Key, IdHistory::Use> IdHistory::UsesOf(std::size_t version, const Source& source) const {
  std::map<Key, Use> uses;
  for (const LPQMXMETA meta : Reached(source, tables_)) {
    const MetaModel model = MetaOf(source.Library(), meta);
    const std::uint32_t position = PositionOf(source, model.name).value_or(0);
    for (const auto [index, entry] : Entries(meta)) {
      const EntryModel& field = model.entries[static_cast<std::size_t>(index)];
      if (field.id < 0) continue;
      const bool is_composite = IsComposite(qmx_get_entry_type(entry));
      Use use{{version, field.name, TypeText(field), ""}, qmx_get_entry_type(entry), is_composite ? field.type : ""};
      use.meta = position;
      use.entry = static_cast<std::uint32_t>(index);
      uses.try_emplace({model.name, field.id}, std::move(use));
    }
  }
  return uses;
}

void IdHistory::Add(std::size_t version, const Source& source, const Source* previous) {
  const bool is_tlv = IsTlv(source.Library());
  std::map<Key, Use> uses;
  if (is_tlv) uses = UsesOf(version, source);
  // Locations are found while the version with the fields is in memory.
  if (was_tlv_ && previous != nullptr) {
    std::vector<std::pair<qmx::ElementId, ReusedId::Use*>> removed;
    for (auto& [key, use] : live_) {
      if (is_tlv && uses.contains(key)) continue;
      Use& gone = gone_.insert_or_assign(key, use).first->second;
      removed.emplace_back(EntryAt(gone.meta, gone.entry), &gone.use);
    }
    Locate(*previous, removed);
  }
  if (is_tlv) Compare(uses, source);
  live_ = std::move(uses);
  was_tlv_ = is_tlv;
}

// A field that comes back with the same type reads old values: its id is not forgotten, but that is no reuse.
void IdHistory::Compare(const std::map<Key, Use>& uses, const Source& source) {
  const std::size_t known = reused_.size();
  std::vector<qmx::ElementId> elements;
  for (const auto& [key, use] : uses) {
    const auto gone = gone_.find(key);
    if (gone == gone_.end()) continue;
    const bool is_other = gone->second.type != use.type || gone->second.structure != use.structure;
    if (is_other) {
      reused_.push_back(ReuseOf(source, key.first, key.second, gone->second.use, use.use));
      elements.push_back(EntryAt(use.meta, use.entry));
    }
    gone_.erase(gone);
  }
  std::vector<std::pair<qmx::ElementId, ReusedId::Use*>> added;
  for (std::size_t i = 0; i < elements.size(); ++i) added.emplace_back(elements[i], &reused_[known + i].after);
  Locate(source, added);
}

}  // namespace korvel
