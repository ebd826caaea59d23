// Changes the text of a schema file so that it describes a given model.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "analysis/diff/part_applier.h"
#include "analysis/suggest/element_text.h"
#include "base/name_finder.h"
#include "schema/model.h"

namespace korvel {

// A meta of the source from which elements are copied.
struct OtherMeta {
  const Source& source;  // has a text
  std::uint32_t position;
  const MetaModel& meta;
  NameFinder<EntryModel> entry_finder;
  NameFinder<IndexModel> index_finder;
};

// Rewrites one file, any number of times. Borrows both sources. Not for several threads at once.
class Rewriter {
 public:
  // `source` is the file to change. Elements that it lacks are copied from `other`, with their descriptions, if `other` has them
  // as wanted.
  Rewriter(const Source& source, const Source& other) : source_(source), other_(other), present_(source), others_(other) {}

  // The replacements in the text of the source after which it describes the target; empty if it already does. Unchanged elements
  // keep every byte with their comments and descriptions, and so do metas that the target does not contain. nullopt if the source
  // has no text or no meta, or XML cannot express the target. Does not check that the result can be read.
  //
  // An entry of the source with another name counts as renamed if it has the same id, or if both have no id, the same type and
  // the same entry before them. Linear in the metas of the target, n log n in those that differ.
  std::optional<std::vector<Replacement>> Rewrite(const Model& target);

  // The same for a target of which only a part is known: its first meta is what becomes of `part`, the others are whole. Empty if
  // XML cannot express the target. nullopt if the part does not tell which entries have moved: then use Rewrite. Linear in the
  // target, except for the first call. REQUIRES: the source has a text, and `part` is a part of one of its metas.
  std::optional<std::vector<Replacement>> RewritePart(const Model& target, const AppliedPart& part);

 private:
  bool ChangeHead(TextEdits& edits, const Model& target) const;
  OtherMeta* OtherOf(const std::string& meta);
  bool RewriteMeta(TextEdits& edits, const MetaModel& wanted);
  bool AddMeta(TextEdits& edits, const MetaModel& wanted);

  // For each meta of the other source, the position in this source of the first meta from there on that this source has, too.
  const std::vector<std::optional<std::uint32_t>>& NextPresent();

  const Source& source_;
  const Source& other_;
  MetaCache present_;
  MetaCache others_;
  std::map<std::string, std::optional<OtherMeta>> copied_from_;  // nullopt: the other source has no such meta, or no text
  std::vector<std::optional<std::uint32_t>> next_present_;       // filled on first use
};

}  // namespace korvel
