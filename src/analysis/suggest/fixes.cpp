// Makes fixes from parts of structures, or from whole models. Tested by tests/report/fixes_test.cpp, which compares both.
#include "analysis/suggest/fixes.h"

#include <algorithm>
#include <utility>

#include "analysis/suggest/element_text.h"
#include "analysis/suggest/model_editor.h"
#include "analysis/suggest/restored_names.h"
#include "schema/model.h"

namespace korvel {

std::optional<Model> ApplyWith(const Difference& difference, const std::vector<bool>& chosen,
                               const std::vector<const Alternative*>& alternatives) {
  ModelEditor editor(difference.Apply(chosen));
  for (const Alternative* alternative : alternatives) {
    if (alternative->change) alternative->change(editor);
  }
  std::optional<Model> model = editor.Take();
  // Structures that no alternative accessed may lack what another protocol requires.
  const bool changes_protocol = difference.old_model().protocol != difference.new_model().protocol;
  return model && (!changes_protocol || CanBeWritten(*model)) ? std::move(model) : std::nullopt;
}

FixMaker::FixMaker(const TableContext& context, const Difference& difference, WorkLimit& work)
    : old_source_(context.old_source),
      new_source_(context.new_source),
      difference_(difference),
      work_(work),
      applier_(difference),
      rewriter_(context.new_source, context.old_source),
      has_parts_(CanBeWritten(difference.new_model())) {}

std::vector<Replacement> FixMaker::Make(const FixEdits& fix) {
  if (has_parts_) {
    if (std::optional<std::vector<Replacement>> made = FromPart(fix)) return *std::move(made);
  }
  return FromModel(fix);
}

std::optional<std::vector<Replacement>> FixMaker::FromPart(const FixEdits& fix) {
  std::optional<AppliedPart> part = applier_.ApplyAllBut(fix.left_out, fix.replaced);
  if (!part) return std::nullopt;
  if (!work_.Take(part->present.entries.size() + part->made.entries.size())) return std::vector<Replacement>();
  const Model& whole = difference_.new_model();
  ModelEditor editor({whole.name, whole.version, whole.protocol, {part->made}});
  for (const Alternative* alternative : fix.alternatives) {
    if (alternative->change) alternative->change(editor);
  }
  std::optional<Model> changed = editor.Take();
  if (!changed) return std::vector<Replacement>();
  changed->metas.resize(1);  // metas that alternatives import are in the file
  changed->metas.insert(changed->metas.end(), part->added.begin(), part->added.end());
  if (!IsValid(*part, *changed)) return std::vector<Replacement>();
  return rewriter_.RewritePart(*changed, *part);
}

// Whether a file can contain the whole model of which the first meta is a part.
bool FixMaker::IsValid(const AppliedPart& part, const Model& changed) const {
  const bool needs_ids = changed.protocol == qmx::Protocol::kTlv;
  return CanBeWritten(changed) && std::ranges::none_of(changed.metas.front().entries, [&](const EntryModel& entry) {
           return applier_.HasNameOutside(part, entry.name) || (needs_ids && applier_.HasIdOutside(part, entry.id));
         });
}

std::vector<Replacement> FixMaker::FromModel(const FixEdits& fix) {
  if (!work_.Take(PartsOf(difference_.old_model()) + PartsOf(difference_.new_model()))) return {};
  std::vector<bool> chosen(difference_.edits().size(), true);
  RenamedMetas renamed;
  for (const std::size_t edit : fix.left_out) {
    chosen[edit] = false;
    const Edit& one = difference_.edits()[edit];
    if (one.kind == EditKind::kMetaRenamed) renamed.emplace(one.before, one.after);
  }
  const std::optional<Model> model = ApplyWith(difference_, chosen, fix.alternatives);
  if (!model || !CanBeWritten(*model)) return {};
  std::optional<std::vector<Replacement>> made = RewriteNamed(*model, renamed);
  if (!made) return {};
  // A protocol is that of all tables, which may lack what it requires.
  const bool changes_protocol = model->protocol != difference_.new_model().protocol;
  if (changes_protocol && !SourceOfText(new_source_.name, ApplyReplacements(new_source_.text->Bytes(), *made))) return {};
  return *std::move(made);
}

std::optional<std::vector<Replacement>> FixMaker::RewriteNamed(const Model& model, const RenamedMetas& renamed) {
  if (renamed.empty()) return rewriter_.Rewrite(model);
  std::optional<std::vector<Replacement>> names = RestoreNames(new_source_, renamed);
  if (!names) return std::nullopt;
  const std::optional<Source> restored = SourceOfText(new_source_.name, ApplyReplacements(new_source_.text->Bytes(), *names));
  if (!restored) return std::nullopt;
  const auto others = Rewriter(*restored, old_source_).Rewrite(model);
  if (!others || others->empty()) return others ? names : std::nullopt;
  const std::string text = ApplyReplacements(restored->text->Bytes(), *others);
  return std::vector{ReplacementBetween(new_source_.text->Bytes(), text)};
}

}  // namespace korvel
