// The measured checks.
#pragma once

#include <string>
#include <vector>

#include "library/shapes.h"

namespace bench {

enum class Form { kXml, kImage };

struct Case {
  std::string shape_name;  // "1000 x 100": tables x fields; "60 levels"
  Shape shape;
  Kind kind;
  qmx::Protocol protocol;
  Form form;
};

// "1000 x 100, one added, QMX, XML"
std::string NameOf(const Case& measured);

// All cases; or, for a run of a few minutes, all shapes except the largest, without changes and in the record format, and one
// shape in all variants.
std::vector<Case> Cases(bool all);

}  // namespace bench
