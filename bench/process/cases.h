// Which checks are measured.
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

// All cases; or, in a few minutes, all shapes but the largest as they are in the record format, and one shape in everything.
std::vector<Case> Cases(bool all);

}  // namespace bench
