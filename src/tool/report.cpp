// Places and counts. Nothing is judged or printed here.
#include "tool/report.h"

#include <algorithm>
#include <functional>
#include <tuple>

#include "qmx/qmx_metalib_kernel.h"

namespace korvel::tool {
namespace {

// A table of the report that stands in a schema file.
struct Sought {
  const Input* input;
  std::size_t offset;  // of the element that declares its meta
  std::size_t table;   // position in the report
};

// Position of a meta in declaration order, which is the order in which metas lie in memory.
std::uint32_t PositionOf(const MetaOf& declared) {
  const LPQMXMETALIB library = declared.input->Library();
  const std::int64_t meta = qmx_get_meta_by_name(library, declared.meta.c_str())->ptrMeta;
  const auto* const metas = reinterpret_cast<const std::int64_t*>(library->data + library->ptrMetas);
  return static_cast<std::uint32_t>(std::lower_bound(metas, metas + library->iMetaNum, meta) - metas);
}

std::vector<Sought> SoughtTables(const Report& report) {
  std::vector<Sought> sought;
  for (std::size_t i = 0; i < report.tables.size(); ++i) {
    const MetaOf& declared = report.tables[i].declared;
    if (!declared.input->text) continue;
    const qmx::ElementId id{qmx::ElementId::Kind::kMeta, PositionOf(declared)};
    sought.push_back({declared.input, declared.input->text->source_map.Find(id).value_or(0), i});
  }
  std::ranges::sort(sought, std::less<>(), [](const Sought& one) { return std::tuple(one.input, one.offset); });
  return sought;
}

}  // namespace

std::vector<Place> FindPlaces(const Report& report) {
  std::vector<Place> places;
  for (const TableResult& table : report.tables) places.push_back({table.declared.input->name, std::nullopt});
  const Input* input = nullptr;
  qmx::PlaceCounter counter{""};
  for (const Sought& sought : SoughtTables(report)) {
    if (sought.input != input) counter = qmx::PlaceCounter(sought.input->text->bytes);
    input = sought.input;
    places[sought.table].position = counter.At(sought.offset);
  }
  return places;
}

Summary Summarize(const Report& report) {
  Summary summary;
  for (const TableResult& result : report.tables) {
    if (result.status == Status::kNew) ++summary.added;
    if (result.status == Status::kAllowed) ++summary.allowed;
    if (result.status == Status::kRefused) ++summary.refused;
    if (result.gone) ++summary.gone;
  }
  summary.compared = summary.allowed + summary.refused;
  return summary;
}

}  // namespace korvel::tool
