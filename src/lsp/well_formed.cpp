// Tested by tests/lsp/hover_test.cpp and completion_request_test.cpp.
#include "lsp/well_formed.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "base/input_error.h"
#include "project/git.h"
#include "project/load_inputs.h"

namespace korvel::lsp {
namespace {

bool HasFault(const DocumentCheck& check) {
  return std::ranges::any_of(check.report.faults, [](const InputFault& fault) { return fault.line > 0; });
}

// A baseline that cannot be read any more is left out: the next check reports it.
std::vector<BaselineFile> BaselinesOf(const DocumentCheck& check) {
  std::vector<BaselineFile> baselines;
  std::filesystem::current_path(check.root);
  Git git;
  for (const ComparedFile& file : check.compared) {
    if (file.old_name.empty()) continue;
    try {
      baselines.push_back({check.report.baselines[file.baseline].name, LoadInput(file.old_name, git)});
    } catch (const InputError&) {
    }
  }
  return baselines;
}

}  // namespace

void WellFormedStates::Take(const Document& document, const std::shared_ptr<const DocumentCheck>& check) {
  const auto known = states_.find(document.uri);
  if (!check->is_schema || HasFault(*check)) return;
  if (known != states_.end() && known->second.check == check) return;
  std::optional<Source> source = SourceOfText(check->name, document.text.bytes());
  if (!source) return;
  states_.insert_or_assign(document.uri, WellFormed{document.version, check, std::move(*source), BaselinesOf(*check)});
}

const WellFormed* WellFormedStates::Of(const std::string& uri) const {
  const auto known = states_.find(uri);
  return known == states_.end() ? nullptr : &known->second;
}

}  // namespace korvel::lsp
