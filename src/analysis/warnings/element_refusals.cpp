// Tested by tests/cases/warnings.
#include "analysis/warnings/element_refusals.h"

namespace korvel {

ElementRefusals::ElementRefusals(const Changes* changes) {
  for (std::size_t i = 0; changes != nullptr && i < changes->findings.size(); ++i) {
    for (const std::size_t edit : changes->findings[i].edits) AddRefusal(changes->edits[edit], i);
  }
}

std::vector<std::size_t> ElementRefusals::Of(const Edit& edit) const {
  auto found = by_element_.find(ElementOf(edit));
  if (found == by_element_.end() && edit.kind == EditKind::kEntryRefer) found = by_element_.find(CounterOf(edit));
  return found == by_element_.end() ? std::vector<std::size_t>() : found->second;
}

ElementRefusals::Element ElementRefusals::ElementOf(const Edit& edit) {
  return {IsOfEntry(edit.kind) ? std::nullopt : std::optional(edit.kind), edit.meta, edit.item};
}

ElementRefusals::Element ElementRefusals::CounterOf(const Edit& edit) {
  return {EditKind::kEntryRefer, edit.meta, edit.before + '\0' + edit.after};
}

void ElementRefusals::AddRefusal(const Edit& edit, std::size_t finding) {
  Element element = ElementOf(edit);
  Add(element, finding);
  if (edit.kind != EditKind::kEntryRenamed) return;
  std::get<2>(element) = edit.after;
  Add(element, finding);
  Add(CounterOf(edit), finding);
}

void ElementRefusals::Add(const Element& element, std::size_t finding) {
  std::vector<std::size_t>& refusals = by_element_[element];
  if (refusals.empty() || refusals.back() != finding) refusals.push_back(finding);
}

}  // namespace korvel
