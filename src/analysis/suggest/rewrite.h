// Makes a schema file say what a model says, by changes of its text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/suggest/element_text.h"
#include "analysis/suggest/meta_cache.h"
#include "schema/model.h"

namespace korvel {

// Rewrites one file, as often as wanted. Both sources outlive it.
class Rewriter {
 public:
  // `source` is the file to change. What it lacks is copied from `other`, with its description, where that has it as wanted.
  Rewriter(const Source& source, const Source& other) : source_(source), other_(other), present_(source), others_(other) {}

  // What to replace in the text of the source so that it says the target; empty if it does. Comments, descriptions and layout of
  // what stays as it is keep every byte, and so do metas that the target does not hold. nullopt if it cannot be done: the source
  // has no text or no meta, or no schema file can say the target.
  //
  // An entry that the source has under another name is taken for the same one if it has the id or, without ids, the same type and
  // the same entry before it. Linear in the metas of the target, n log n in those that differ.
  std::optional<std::vector<Replacement>> Rewrite(const Model& target);

 private:
  bool RewriteMeta(TextEdits& edits, const MetaModel& wanted);
  bool AddMeta(TextEdits& edits, const MetaModel& wanted);

  // For each meta of the other source, the position in the file of the first one, from it on, that the file has, too.
  const std::vector<std::optional<std::uint32_t>>& NextPresent();

  const Source& source_;
  const Source& other_;
  MetaCache present_;
  MetaCache others_;
  std::vector<std::optional<std::uint32_t>> followers_;  // filled when first asked for
};

}  // namespace korvel
