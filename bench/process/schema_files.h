// Writes the measured schema files. The same case gives the same bytes.
#pragma once

#include <string>

#include "library/shapes.h"

namespace bench {

// Writes the library of a shape as XML to `path`. Only the new file has the change; shapes with levels ignore it. An entry takes
// about 90 bytes:
//   <entry name="field_17" id="18" type="uint64" version="1" desc="field 17 of a table"/>
// Nothing is kept in memory. False if the file cannot be written.
bool WriteSchema(const std::string& path, const Shape& shape, Kind kind, qmx::Protocol protocol, bool is_new);

}  // namespace bench
