// Schemas as the commands see them: read from schema files or images, whichever the file holds.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_source_map.h"
#include "qmx/qmx_xml.h"
#include "tool/file_bytes.h"

namespace korvel::tool {

// A schema file as it was read: what places are found in.
struct SchemaText {
  std::shared_ptr<qmx::XmlBuffer> buffer;  // keeps the bytes
  std::string_view bytes;
  qmx::SourceMap source_map;
};

struct Input {
  std::string name;  // as shown: the path, or "<stdin>"
  qmx::Metalib metalib;
  std::optional<SchemaText> text;        // an image has none
  std::optional<FileState> mapped;       // of the file in which the library lies; none if it lies in memory
  std::vector<std::string_view> tables;  // metas with a primary key, in declaration order

  LPQMXMETALIB Library() const { return metalib.get(); }
  bool HasMeta(const std::string& meta) const;
};

// Throws CannotAsk if a mapped file has been written to: what was concluded from it may be wrong.
void RequireUnchanged(const Input& input);

// Reads the files; "-" is standard input. Large ones are read at the same time. Throws CannotAsk with every fault of every file,
// in the order of the paths: one that cannot be read or is larger than qmx::kMaxFileBytes has one line, and so has an image that
// is refused, "file: error: what"; an error of a schema file is "file:line:column: error: what".
std::vector<Input> LoadInputs(const std::vector<std::string>& paths);

}  // namespace korvel::tool
