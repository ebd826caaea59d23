// Tested by tests/report/renamed_metas_test.cpp.
#include "analysis/suggest/restored_names.h"

#include <cstdint>
#include <string>

#include "analysis/suggest/element_text.h"
#include "qmx/qmx_metalib_kernel.h"
#include "schema/model.h"
#include "schema/xml_writer.h"

namespace korvel {
namespace {

using Kind = qmx::ElementId::Kind;

class NameRestorer {
 public:
  NameRestorer(const SchemaText& text, const RenamedMetas& renamed) : text_(text), edits_(text.Bytes()) {
    for (const auto& [old_name, new_name] : renamed) old_names_.emplace(new_name, old_name);
  }

  // False if XML cannot express a name.
  bool Restore(const MetaModel& meta, std::uint32_t position) {
    bool written = true;
    if (const auto found = old_names_.find(meta.name); found != old_names_.end()) {
      MetaModel renamed = meta;
      renamed.name = found->second;
      written =
          edits_.ChangeAttributes(*text_.source_map.Find({Kind::kMeta, position}), AttributesOf(meta), AttributesOf(renamed));
    }
    for (std::uint32_t i = 0; i < meta.entries.size(); ++i) {
      const auto found = old_names_.find(meta.entries[i].type);
      if (found == old_names_.end()) continue;
      EntryModel renamed = meta.entries[i];
      renamed.type = found->second;
      const std::size_t offset = *text_.source_map.Find({Kind::kEntry, position, i});
      written = edits_.ChangeAttributes(offset, AttributesOf(meta.entries[i]), AttributesOf(renamed)) && written;
    }
    return written;
  }

  std::vector<Replacement> Take() { return edits_.Finish(); }

 private:
  const SchemaText& text_;
  TextEdits edits_;
  RenamedMetas old_names_;  // by the new ones
};

}  // namespace

std::optional<std::vector<Replacement>> RestoreNames(const Source& source, const RenamedMetas& renamed) {
  NameRestorer restorer(*source.text, renamed);
  const LPQMXMETALIB library = source.Library();
  for (int i = 0; i < qmx_get_meta_num(library); ++i) {
    const MetaModel meta = MetaOf(library, qmx_get_meta_by_index(library, i));
    if (!restorer.Restore(meta, static_cast<std::uint32_t>(i))) return std::nullopt;
  }
  return restorer.Take();
}

std::optional<Source> WithOldNames(const Source& source, const RenamedMetas& renamed) {
  const std::optional<std::vector<Replacement>> made = RestoreNames(source, renamed);
  return made ? SourceOfText(source.name, ApplyReplacements(source.text->Bytes(), *made)) : std::nullopt;
}

}  // namespace korvel
