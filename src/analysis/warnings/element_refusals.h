// The findings about refused edits by what they are about: advice about the same element refers to them.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "analysis/findings/finding.h"

namespace korvel {

class ElementRefusals {
 public:
  // `changes` may be null, and need not outlive the call.
  explicit ElementRefusals(const Changes* changes);

  // Those about the element of an edit, as positions in Changes::findings.
  std::vector<std::size_t> Of(const Edit& edit) const;

 private:
  // An entry, whatever changes about it; or a kind of edit of the library, meta or index.
  using Element = std::tuple<std::optional<EditKind>, std::string, std::string>;

  static Element ElementOf(const Edit& edit);
  // A counter with another name. `edit` renames it, or gives an entry the counter of the new name instead of that of the old one.
  static Element CounterOf(const Edit& edit);

  // A warning may be about the old or the new name of a renamed entry, or about an entry that it counts.
  void AddRefusal(const Edit& edit, std::size_t finding);
  void Add(const Element& element, std::size_t finding);

  std::map<Element, std::vector<std::size_t>> by_element_;
};

}  // namespace korvel
