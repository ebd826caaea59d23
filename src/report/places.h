// Lines, columns and pieces of source text for what reports point at.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "report/source.h"

namespace korvel::report {

// A location in a file. Lines and columns as qmx::LineColumn.
struct Mark {
  std::string file;
  // None of these for a location in an image.
  std::optional<qmx::LineColumn> begin;
  qmx::LineColumn end;    // behind the last character
  qmx::Span span;         // the value of the attribute (between its quotes); else the start tag of the element
  std::string_view line;  // the text of the line in which it begins, without its end
};

// The marks of locations, in their order; nullopt for one that is nowhere. One pass over each file, whatever their number.
std::vector<std::optional<Mark>> FindMarks(const std::vector<Location>& locations);

}  // namespace korvel::report
