// Looks up metas of sources. Lines and columns are found by report/result/text_ranges.cpp. Tested by
// tests/report/source_test.cpp, rewrite_test.cpp and tests/tool/input_test.cpp.
#include "schema/source.h"

#include <algorithm>
#include <utility>

#include "common/meta_view.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"

namespace korvel {

SchemaText KeptText(std::shared_ptr<void> keeper, std::string_view bytes, qmx::SourceMap source_map) {
  return {std::make_shared<FileText>(std::move(keeper), bytes), std::move(source_map)};
}

SchemaText KeptText(std::string bytes, qmx::SourceMap source_map) {
  auto keeper = std::make_shared<std::string>(std::move(bytes));
  const std::string_view view = *keeper;
  return KeptText(std::move(keeper), view, std::move(source_map));
}

bool Source::HasMeta(const std::string& meta) const { return qmx_get_meta_by_name(Library(), meta.c_str()) != nullptr; }

void ListTables(Source& source) {
  const int number = qmx_get_meta_num(source.Library());
  for (int i = 0; i < number; ++i) {
    const LPQMXMETA meta = qmx_get_meta_by_index(source.Library(), i);
    if (HasPrimaryKey(meta)) source.tables.emplace_back(qmx_get_meta_name(meta));
  }
}

std::optional<std::uint32_t> PositionOf(const Source& source, const std::string& name) {
  const LPQMXMETALIB library = source.Library();
  const LPQMXMETA meta = qmx_get_meta_by_name(library, name.c_str());
  if (meta == nullptr) return std::nullopt;
  // Metas are in memory in declaration order.
  const auto* const metas = reinterpret_cast<const std::int64_t*>(library->data + library->ptrMetas);
  return static_cast<std::uint32_t>(std::lower_bound(metas, metas + library->iMetaNum, meta->ptrMeta) - metas);
}

Location DeclaredAt(const Source& source, const std::string& meta) {
  return {&source, {qmx::ElementId::Kind::kMeta, *PositionOf(source, meta)}, {}};
}

std::optional<Source> SourceOfText(const std::string& name, std::string text) {
  qmx::ReadResult read = qmx::ReadXml(text);
  if (!read.schema) return std::nullopt;
  SchemaText schema = KeptText(std::move(text), std::move(read.schema->source_map));
  Source source{name, std::move(read.schema->metalib), std::move(schema), {}};
  ListTables(source);
  return source;
}

}  // namespace korvel
