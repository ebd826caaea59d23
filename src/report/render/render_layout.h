// The forms of layouts.
#pragma once

#include <string>
#include <vector>

#include "schema/source.h"

namespace korvel {

struct LayoutRequest {
  const Source* before;  // null: one schema alone
  const Source* after;
  std::vector<std::string> tables;  // each in one of the sources at least
};

// For people: aligned columns, one block a table. Names count by characters.
std::string RenderLayoutText(const LayoutRequest& request);

// For programs: one JSON object.
std::string RenderLayoutJson(const LayoutRequest& request);

// "98.1": the part of a record that a field takes, in percent; "0.0" of an empty record. Independent of the locale.
std::string Percent(std::uint64_t part, std::uint64_t whole);

}  // namespace korvel
