// Chooses alternatives to the refused edits of one table. What is said about them is decided by suggestions.cpp.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/findings/finding.h"
#include "analysis/suggest/alternatives.h"
#include "analysis/suggest/fixes.h"
#include "analysis/suggest/known_warnings.h"
#include "analysis/suggest/work_limit.h"
#include "schema/table_context.h"

namespace korvel {

// Whether the checker allows the model after the old schema, and it brings no other warnings than the known ones.
bool IsAllowed(const TableContext& context, const Model& model, const KnownWarnings& known);

// Borrows its arguments. Not for several threads at once.
class SuggestionFinder {
 public:
  // REQUIRES: as for Suggest (suggestions.h).
  SuggestionFinder(const TableContext& context, const Difference& difference, const Changes& changes, const KnownWarnings& known,
                   WorkLimit& work);

  // Chooses for each edit the first alternative that is allowed together with everything chosen before. Finds nothing if the
  // refusal is pre-existing: then every model is refused.
  // `only_for_findings`: stops when the choice is final for the edits of findings.
  void Run(bool only_for_findings);

  // The old model after the allowed edits and the chosen alternatives; nullopt if no file can contain it.
  std::optional<Model> Compose() const;

  // The chosen alternative; null if the edit is left out or allowed.
  const Alternative* AlternativeOf(std::size_t edit) const;

  // The edits that are allowed, but replaced or left out because of warnings.
  std::vector<std::size_t> ReplacedAlthoughAllowed() const;

  // The fix after which only these edits have their alternatives.
  FixEdits FixFor(const std::vector<std::size_t>& edits, const FixMaker& fixes) const;

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // An edit that cannot be made as it is, and its alternatives.
  struct OpenEdit {
    std::size_t edit;
    std::vector<Alternative> alternatives;
    std::size_t chosen = kNone;  // left out

    const Alternative* Chosen() const { return chosen == kNone ? nullptr : &alternatives[chosen]; }
  };

  void OfferUnchanged(std::size_t edit);
  void OpenCausesOfWarnings();
  std::vector<KnownWarning> WarningsOfAllowedEdits() const;
  void OpenAllowed(std::size_t i);
  void OpenDependents();
  bool IsFinal(const OpenEdit& next, std::size_t rank) const;
  void Try(const std::vector<OpenEdit*>& open, std::size_t rank);

  const TableContext& context_;
  const Difference& difference_;
  const Changes& changes_;
  const KnownWarnings& known_;
  WorkLimit& work_;
  AlternativeMaker maker_;
  std::map<std::size_t, OpenEdit> open_edits_;  // by edit
  std::size_t cost_;                            // of one run of the checker
  bool only_for_findings_ = false;
};

}  // namespace korvel
