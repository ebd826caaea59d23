// The limit on findings of a call of `history`: one for all steps of all files, and one for the tables that are refused from an
// older version to the newest.
#pragma once

#include <cstddef>

#include "project/step_index.h"
#include "report/result/history.h"

namespace korvel {

class HistoryLimit {
 public:
  explicit HistoryLimit(std::size_t max_findings) : findings_(max_findings), newest_(max_findings) {}

  // Whether another refusal of a step will be listed.
  bool ListsFindings() const { return findings_ > 0; }

  // Lets the next step list as many refusals as are left, and at most as many warnings, and drops the changes of tables that list
  // none of their refusals: nobody sees them. What a report counts stays. A table with a waiver keeps its changes.
  void Apply(Report& report);

  // Drops refused tables that exceed the limit, unless no step so far refuses them, or the refusals of the steps are waived and
  // those of the table are not.
  void Apply(const StepIndex& steps, NewestCheck& check);

 private:
  std::size_t findings_;
  std::size_t newest_;
};

}  // namespace korvel
