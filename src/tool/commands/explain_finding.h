// The part of `explain` that explains a finding of a check by its fingerprint.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/commands/run_check.h"

namespace korvel::tool {

// What is checked, as for `check`.
struct ExplainedCheck {
  InputFiles inputs;
  BaselineOption baseline;
  TableSettings settings;
  FindingLimit limit;

  void AddTo(ArgumentList& arguments);

  // Whether the call names what to compare.
  bool IsGiven() const { return !inputs.paths.empty() || baseline.IsGiven(); }
};

// Whether a word may be a fingerprint or the beginning of one.
bool MayBeFingerprint(std::string_view word);

// Checks, and returns the finding with this fingerprint, or with the only one that begins so: what the report of `check` says
// about it, the calls that fix and waive it, and the page of its rule. Nullopt if nothing was checked because the call names
// nothing to compare with, and neither does a project file. Throws InputError if there is no such finding, or several, and if the
// output would replace a file that is read.
std::optional<std::string> ExplainFinding(const ExplainedCheck& check, const std::string& fingerprint,
                                          const OutputOption& output);

}  // namespace korvel::tool
