// Schema files as the commands see them: read, parsed, with the place of each of their metas.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "qmx/qmx_source_map.h"
#include "qmx/qmx_xml.h"

namespace korvel::tool {

struct Input {
  std::string name;  // as shown: the path, or "<stdin>"
  qmx::Schema schema;
  std::vector<std::string_view> tables;                               // metas with a primary key, in declaration order
  std::unordered_map<std::string_view, qmx::LineColumn> meta_places;  // of every meta, by name

  LPQMXMETALIB Library() const { return schema.metalib.get(); }
  bool HasMeta(std::string_view meta) const { return meta_places.contains(meta); }
};

// Reads the files; "-" is standard input. Throws CannotAsk with every fault of every file: one that cannot be read
// or is larger than qmx::kMaxFileBytes has one line, a schema error is "file:line:column: error: what".
std::vector<Input> LoadInputs(const std::vector<std::string>& paths);

}  // namespace korvel::tool
