// Tested by tests/tool/suggest_waiver_test.cpp.
#include "analysis/suggest/accepted_changes.h"

#include <cstddef>
#include <map>
#include <utility>

#include "analysis/diff/diff.h"
#include "analysis/suggest/merged_model.h"
#include "analysis/suggest/rewrite.h"
#include "schema/model.h"

namespace korvel {
namespace {

Model ApplyAccepted(const Difference& difference, const std::set<AcceptedEdit>& accepted) {
  const std::vector<Edit>& edits = difference.edits();
  std::vector<bool> chosen(edits.size());
  for (std::size_t i = 0; i < edits.size(); ++i) {
    if (!accepted.contains(AcceptedEditOf(edits[i]))) continue;
    chosen[i] = true;
    for (const std::size_t need : difference.Needs(i)) chosen[need] = true;
  }
  return difference.Apply(chosen);
}

// Adds what differs from the source in a table.
void Add(Model wanted, MergedModel& changed) {
  Model& model = changed.model();
  const Model& head = changed.head();
  if (wanted.name != head.name) model.name = std::move(wanted.name);
  if (wanted.version != head.version) model.version = wanted.version;
  if (wanted.protocol != head.protocol) model.protocol = wanted.protocol;
  changed.AddChanged(std::move(wanted.metas));
}

void Add(const UsedFields& used, UsedFields& all) {
  all.names.insert(used.names.begin(), used.names.end());
  all.ids.insert(used.ids.begin(), used.ids.end());
}

}  // namespace

AcceptedEdit AcceptedEditOf(const Edit& edit) { return {edit.kind, edit.meta, edit.item, edit.before, edit.after}; }

std::optional<Source> WithAccepted(const Source& old_source, const Source& new_source, const std::vector<std::string>& tables,
                                   const std::set<AcceptedEdit>& accepted) {
  MetaCache present(old_source);
  MergedModel changed(present);
  for (const std::string& table : tables) Add(ApplyAccepted(Difference(old_source, new_source, table), accepted), changed);
  const auto replacements = Rewriter(old_source, new_source).Rewrite(changed.model());
  if (!replacements) return std::nullopt;
  std::optional<Source> result = SourceOfText(old_source.name, ApplyReplacements(old_source.text->Bytes(), *replacements));
  if (result) result->path_in_project = old_source.path_in_project;
  return result;
}

void Reserve(const Source& old_source, const Source& new_source, const std::vector<std::string>& tables,
             ReservedFields& reserved) {
  for (const std::string& table : tables) {
    const Difference difference(old_source, new_source, table);
    std::map<std::string, std::string> new_names;
    for (const Edit& edit : difference.edits()) {
      if (edit.kind == EditKind::kMetaRenamed) new_names.emplace(edit.before, edit.after);
    }
    for (const MetaModel& meta : difference.old_model().metas) {
      UsedFields used;
      for (const EntryModel& entry : meta.entries) {
        used.names.insert(entry.name);
        used.ids.insert(entry.id);
      }
      const auto renamed = new_names.find(meta.name);
      if (renamed != new_names.end()) Add(used, reserved[renamed->second]);
      Add(used, reserved[meta.name]);
    }
  }
}

}  // namespace korvel
