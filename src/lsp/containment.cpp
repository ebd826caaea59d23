// Follows types from the inside to the outside. Tested by tests/lsp/completion_test.cpp.
#include "lsp/containment.h"

#include <map>
#include <string>

#include "lsp/symbols.h"
#include "schema/declaration.h"

namespace korvel::lsp {
namespace {

using Kind = qmx::ElementId::Kind;

// Structure -> the structures that have an entry of its type.
using Users = std::map<ElementIndex, std::vector<ElementIndex>>;

Users UsersOf(const Outline& outline) {
  std::map<std::string, ElementIndex> by_name;
  for (const ElementIndex structure : StructuresOf(outline)) by_name.emplace(outline.ValueOf(structure, "name"), structure);
  Users users;
  for (ElementIndex element = 0; element < outline.elements().size(); ++element) {
    if (!outline.elements()[element].Is(Kind::kEntry)) continue;
    const std::string type = outline.ValueOf(element, "type");
    const auto inner = IsCompositeType(type) ? by_name.find(type) : by_name.end();
    const ElementIndex outer = StructureOf(outline, element);
    if (inner != by_name.end() && outer != kNoElement) users[inner->second].push_back(outer);
  }
  return users;
}

}  // namespace

std::vector<ElementIndex> StructuresAround(const Outline& outline, ElementIndex structure) {
  Users users = UsersOf(outline);
  std::vector<ElementIndex> around = {structure};
  std::vector<bool> is_found(outline.elements().size());
  is_found[structure] = true;
  for (std::size_t i = 0; i < around.size(); ++i) {
    for (const ElementIndex outer : users[around[i]]) {
      if (!is_found[outer]) around.push_back(outer);
      is_found[outer] = true;
    }
  }
  return around;
}

}  // namespace korvel::lsp
