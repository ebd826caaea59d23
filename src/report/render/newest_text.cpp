// Tested by tests/tool/history_text_test.cpp.
#include "report/render/newest_text.h"

#include <map>
#include <utility>

#include "base/text.h"
#include "report/render/finding_text.h"
#include "report/render/text_color.h"
#include "report/result/words.h"

namespace korvel {
namespace {

// "path orders.items[].price and 28 others"; a change of the library has no path.
std::string PlacesText(const std::vector<const NewestRefusal*>& group) {
  const NewestRefusal& first = *group.front();
  const std::string& path = first.cause.path;
  std::string place = path.empty() ? "table " + OneLine(first.result.table) : "path " + OneLine(path);
  return group.size() == 1 ? place : place + " and " + Counted(group.size() - 1, "other");
}

// As in RefusalCause.
std::string ChangeOf(const TableResult& table, const Finding& finding) {
  if (table.removed) return "the table was removed";
  return finding.edits.empty() ? OneLine(finding.verdict.text) : Join(EditsOf(table, finding), "; ");
}

}  // namespace

NewestText::NewestText(const History& history, bool only_open, bool color)
    : history_(history), only_open_(only_open), color_(color) {
  for (const VersionStep& step : history.steps) {
    for (const TableResult& table : step.report.tables) {
      if (!table.changes) continue;
      for (const Finding& finding : table.changes->findings) {
        const bool is_waived = finding.waiver.has_value();
        if (finding.fingerprint.empty() || (only_open && is_waived)) continue;  // dropped by the limit, or not shown
        listed_.try_emplace({table.table, finding.verdict.rule, finding.path, ChangeOf(table, finding), is_waived},
                            NumberOf(history, step));
      }
    }
  }
}

std::string NewestText::Refusals(const NewestCheck& check) {
  std::vector<Group> groups;
  std::map<std::pair<CauseKey, std::size_t>, std::size_t> positions;
  for (const NewestRefusal& refusal : check.refused) {
    if (only_open_ && refusal.is_waived) continue;
    const auto key = std::pair(KeyOf(refusal), ListingStep(refusal));
    const auto [found, is_new] = positions.try_emplace(key, groups.size());
    if (is_new) groups.emplace_back();
    groups[found->second].push_back(&refusal);
  }
  std::string text;
  for (const Group& group : groups) {
    const NewestRefusal& first = *group.front();
    if (const std::size_t step = ListingStep(first); step > 0) {
      text += ReferenceText(group, "in step " + std::to_string(step));
    } else {
      text += known_.insert(KeyOf(first)).second ? BlockText(group) : ReferenceText(group, "above");
    }
  }
  return text;
}

NewestText::CauseKey NewestText::KeyOf(const NewestRefusal& refusal) const {
  // A refusal without a step, and one with another cause than its step, differ from all others.
  const std::size_t step = refusal.step ? 2 * *refusal.step + (refusal.has_cause ? 1 : 0) : 2 * history_.steps.size();
  const RefusalCause& cause = refusal.cause;
  return {step, cause.rule, cause.change, cause.new_location, refusal.is_waived};
}

std::size_t NewestText::ListingStep(const NewestRefusal& refusal) const {
  if (!refusal.step || !refusal.has_cause) return 0;
  const RefusalCause& cause = refusal.cause;
  const auto found = listed_.find({refusal.result.table, cause.rule, cause.path, cause.change, refusal.is_waived});
  return found == listed_.end() ? 0 : found->second;
}

std::string NewestText::ReferenceText(const Group& group, const std::string& to) const {
  const NewestRefusal& first = *group.front();
  return "  same as " + to + ": " + Word(first) + InBrackets(first.cause.rule) + " " + first.cause.change + ", " +
         PlacesText(group) + "\n";
}

std::string NewestText::BlockText(const Group& group) const {
  const NewestRefusal& first = *group.front();
  const Verdict& verdict = first.result.verdict;
  const RefusalCause& cause = first.cause;
  std::string text = "  table " + OneLine(first.result.table) + ": " + Word(first) + InBrackets(verdict.rule) + " " +
                     first.summary + "\n    " + CheckerLine(verdict.text) + "\n    code: " + std::to_string(verdict.code) + " " +
                     CodeNameOf(verdict.code) + "\n    caused by: " + cause.change + StepText(first) + "\n";
  if (!cause.path.empty()) text += "    path: " + OneLine(cause.path) + "\n";
  if (!cause.new_location.empty()) text += "    new: " + cause.new_location + "\n";
  if (!cause.old_location.empty()) text += "    was: " + cause.old_location + "\n";
  const auto place = [](const NewestRefusal* one) {
    return OneLine(one->cause.path.empty() ? "table " + one->result.table : one->cause.path);
  };
  const Group others(group.begin() + 1, group.end());
  return others.empty() ? text : text + "    also affected: " + Join(others, ", ", place) + "\n";
}

std::string NewestText::Word(const NewestRefusal& refusal) const {
  return refusal.is_waived ? Colored("refused, waived", kYellow, color_) : Colored("refused", kRed, color_);
}

std::string NewestText::StepText(const NewestRefusal& refusal) const {
  if (!refusal.step) return ", although each step alone is allowed";
  const VersionStep& step = history_.steps[*refusal.step];
  const auto name = [&](std::size_t version) { return OneLine(history_.versions[version].name); };
  return (refusal.has_cause ? ", in step " : "; another change was refused in step ") + std::to_string(NumberOf(history_, step)) +
         ": " + name(step.from) + " -> " + name(step.to);
}

}  // namespace korvel
