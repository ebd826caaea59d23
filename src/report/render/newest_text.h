// The part of the text of a history that compares each version with the newest one.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "report/result/history.h"

namespace korvel {

// Reports each cause once: refusals of several tables with one cause are one block, and a cause that a step or an earlier check
// lists is one line. Borrows the history.
class NewestText {
 public:
  // With `only_open`, leaves out waived refusals.
  NewestText(const History& history, bool only_open, bool color);

  // The refusals of the next check, every line with a newline.
  std::string Refusals(const NewestCheck& check);

 private:
  // Refusals with one cause, in their order; at least one.
  using Group = std::vector<const NewestRefusal*>;
  // What refusals with one cause have in common: step, rule, change, new location, and whether they are waived.
  using CauseKey = std::tuple<std::size_t, std::string_view, std::string_view, std::string_view, bool>;
  // A table, the rule, the path and the change of one of its findings, and whether it is waived. Fingerprints do not do: they
  // depend on the file.
  using TableFinding = std::tuple<std::string_view, std::string_view, std::string_view, std::string, bool>;

  CauseKey KeyOf(const NewestRefusal& refusal) const;
  // The number of the step whose text has the finding of the cause; 0 for none.
  std::size_t ListingStep(const NewestRefusal& refusal) const;
  std::string ReferenceText(const Group& group, const std::string& to) const;
  std::string BlockText(const Group& group) const;
  std::string Word(const NewestRefusal& refusal) const;
  std::string StepText(const NewestRefusal& refusal) const;

  const History& history_;
  bool only_open_;
  bool color_;
  std::map<TableFinding, std::size_t> listed_;  // the number of the first step: later ones refer to it
  std::set<CauseKey> known_;                    // causes of earlier checks
};

}  // namespace korvel
