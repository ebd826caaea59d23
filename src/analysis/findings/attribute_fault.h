// Finds the place of a fault in the attributes of a table.
#pragma once

#include <optional>
#include <string>

#include "schema/source.h"

namespace korvel {

struct AttributeFault {
  Location location;       // a part of the table's customattr, or the customattr2 of a sort field
  std::string suggestion;  // what to write instead; one line
};

// The fault that the checker's text `text` reports; nullopt if this table does not have it. The text does not say where the fault
// is, so the checker is run on parts of the attributes, about ten times. REQUIRES: the source has the table.
std::optional<AttributeFault> FindAttributeFault(const Source& source, const std::string& table, const std::string& text);

}  // namespace korvel
