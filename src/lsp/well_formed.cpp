// Tested by tests/lsp/features_test.cpp.
#include "lsp/well_formed.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "base/input_error.h"
#include "project/child_process.h"
#include "project/git.h"
#include "project/load_inputs.h"

namespace korvel::lsp {
namespace {

bool HasFault(const DocumentCheck& check) {
  return std::ranges::any_of(check.report.faults, [](const InputFault& fault) { return fault.line > 0; });
}

// The name of the file in the old state; "" if it has none. A moved file has another path there, which only a check finds.
std::string OldNameOf(const DocumentCheck& check, const std::string& path, std::size_t baseline) {
  const auto compared = std::ranges::find(check.compared, baseline, &ComparedFile::baseline);
  if (compared != check.compared.end()) return compared->old_name;
  const ProjectStates& states = check.project->checks()[baseline].states;
  const std::string from_top = std::filesystem::path(path).lexically_relative(states.top).string();
  return states.old_state->HasFile(from_top) ? states.old_state->Display(from_top) : "";
}

// A baseline that cannot be read, also because git hangs, is left out: the check reports it.
std::vector<BaselineFile> BaselinesOf(const DocumentCheck& check, const std::string& path) {
  std::vector<BaselineFile> baselines;
  if (check.project == nullptr) return baselines;
  std::filesystem::current_path(check.root);
  Git git;
  for (std::size_t i = 0; i < check.project->checks().size(); ++i) {
    try {
      const std::string name = OldNameOf(check, path, i);
      if (!name.empty()) baselines.push_back({check.project->checks()[i].states.baseline.name, LoadInput(name, git)});
    } catch (const InputError&) {
    } catch (const OutputTimeoutError&) {
    }
  }
  return baselines;
}

}  // namespace

void WellFormedStates::Take(const Document& document, const std::shared_ptr<const DocumentCheck>& check) {
  const auto known = states_.find(document.uri);
  const bool is_known = known != states_.end();
  if (!check->is_schema || (is_known && (known->second.check == check || HasFault(*check)))) return;
  std::optional<Source> source;
  if (!HasFault(*check)) source = SourceOfText(check->name, document.text.bytes());
  states_.insert_or_assign(document.uri, WellFormed{check, std::move(source), BaselinesOf(*check, document.path)});
}

const WellFormed* WellFormedStates::Of(const std::string& uri) const {
  const auto known = states_.find(uri);
  return known == states_.end() ? nullptr : &known->second;
}

}  // namespace korvel::lsp
