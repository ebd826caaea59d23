// Makes the fix of one finding: changes of the new file after which it has no longer the edits of the finding.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/diff/part_applier.h"
#include "analysis/findings/finding.h"
#include "analysis/suggest/alternatives.h"
#include "analysis/suggest/rewrite.h"
#include "analysis/suggest/work_limit.h"
#include "schema/table_context.h"

namespace korvel {

// What a fix changes.
struct FixEdits {
  std::vector<std::size_t> replaced;             // the edits that the fix is about
  std::vector<std::size_t> left_out;             // edits that are not made, among them the dependents of others
  std::vector<const Alternative*> alternatives;  // to the edits that the fix is about
};

// The model after the chosen edits and these alternatives; nullopt if no file can contain it.
std::optional<Model> ApplyWith(const Difference& difference, const std::vector<bool>& chosen,
                               const std::vector<const Alternative*>& alternatives);

// Makes the fixes of one table. Borrows its arguments. Not for several threads at once.
class FixMaker {
 public:
  FixMaker(const TableContext& context, const Difference& difference, WorkLimit& work);

  // The changes of the new file, in its order; empty if there are none, if no file can contain the result, or if the work exceeds
  // the limit. Linear in what the edits touch, if that is a part of one structure; else linear in the models. REQUIRES: the new
  // source has a text.
  std::vector<Replacement> Make(const FixEdits& fix);

  // The edits that need any of these; see PartApplier::DependentsOf.
  std::vector<std::size_t> DependentsOf(const std::vector<std::size_t>& edits) const { return applier_.DependentsOf(edits); }

 private:
  // nullopt if the fix is not made of a part.
  std::optional<std::vector<Replacement>> FromPart(const FixEdits& fix);
  bool IsValid(const AppliedPart& part, const Model& changed) const;
  std::vector<Replacement> FromModel(const FixEdits& fix);
  // The changes after which the new file describes the model, in which these structures have their old names.
  std::optional<std::vector<Replacement>> RewriteNamed(const Model& model, const RenamedMetas& renamed);

  const Source& old_source_;
  const Source& new_source_;
  const Difference& difference_;
  WorkLimit& work_;
  PartApplier applier_;
  Rewriter rewriter_;
  bool has_parts_;  // whether the new model can be written: otherwise its names may not be unique
};

}  // namespace korvel
