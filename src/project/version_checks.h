// Checks one version of a schema against a later one, for histories.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "project/check_history.h"
#include "project/step_index.h"
#include "report/result/history.h"
#include "schema/input.h"

namespace korvel {

// A readable version.
struct LoadedVersion {
  std::size_t position;  // in History::versions
  Input input;
};

// The warnings of a table or a step that are not hidden: what changed, whatever the files and libraries are called.
using WarningKeys = std::vector<std::string>;

struct CheckedStep {
  VersionStep step;  // without causes and sources
  StepIndex::Keys refusals;
  WarningKeys warnings;
};

struct CheckedVersion {
  NewestCheck check;                  // without sources; all its warnings
  std::vector<WarningKeys> warnings;  // of each table of NewestCheck::warned
};

// Operations may run on several threads at once.
class VersionChecks {
 public:
  explicit VersionChecks(const HistoryCheck& check) : check_(check), options_(check.options) {}

  // With `lists_findings`, refusals have suggestions.
  CheckedStep CheckStep(const LoadedVersion& from, const LoadedVersion& to, bool lists_findings) const;
  CheckedVersion CheckAgainstNewest(const LoadedVersion& from, const LoadedVersion& newest) const;

 private:
  Report ReportFor(const LoadedVersion& from, const LoadedVersion& to) const;

  const HistoryCheck& check_;
  const CheckOptions& options_;
};

// Complete the results, after which they need their versions no longer. REQUIRES: the versions are in memory.
void Release(VersionStep& step);
void Release(NewestCheck& check);

}  // namespace korvel
