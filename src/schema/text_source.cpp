// Reads texts back. Held by tests/report/rewrite_test.cpp.
#include "schema/text_source.h"

#include <memory>
#include <utility>

#include "qmx/qmx_xml.h"

namespace korvel {

std::optional<Source> SourceOfText(const std::string& name, std::string text) {
  auto bytes = std::make_shared<std::string>(std::move(text));
  qmx::ReadResult read = qmx::ReadXml(*bytes);
  if (!read.schema) return std::nullopt;
  const std::string_view view = *bytes;
  SchemaText schema{std::move(bytes), view, std::move(read.schema->source_map)};
  Source source{name, std::move(read.schema->metalib), std::move(schema), {}};
  ListTables(source);
  return source;
}

}  // namespace korvel
