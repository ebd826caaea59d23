// Places and counts. Nothing is judged or printed here.
#include "report/report.h"

#include <algorithm>
#include <functional>
#include <tuple>

namespace korvel::report {
namespace {

// A table of the report that stands in a schema file.
struct Sought {
  const Source* source;
  std::size_t offset;  // of the element that declares its meta
  std::size_t table;   // position in the report
};

std::vector<Sought> SoughtTables(const Report& report) {
  std::vector<Sought> sought;
  for (std::size_t i = 0; i < report.tables.size(); ++i) {
    const Location& declared = report.tables[i].declared;
    if (!declared.source->text) continue;
    sought.push_back({declared.source, declared.source->text->source_map.Find(declared.element).value_or(0), i});
  }
  std::ranges::sort(sought, std::less<>(), [](const Sought& one) { return std::tuple(one.source, one.offset); });
  return sought;
}

}  // namespace

std::vector<Place> FindPlaces(const Report& report) {
  std::vector<Place> places;
  for (const TableResult& table : report.tables) places.push_back({table.declared.source->name, std::nullopt});
  const Source* source = nullptr;
  qmx::PlaceCounter counter{""};
  for (const Sought& sought : SoughtTables(report)) {
    if (sought.source != source) counter = qmx::PlaceCounter(sought.source->text->bytes);
    source = sought.source;
    places[sought.table].position = counter.At(sought.offset);
  }
  return places;
}

namespace {

// Whether nothing but waived findings speaks against a refused table.
bool IsWaived(const TableResult& result) {
  return result.changes &&
         std::ranges::all_of(result.changes->findings, [](const Finding& one) { return one.waiver.has_value(); });
}

}  // namespace

Summary Summarize(const Report& report) {
  Summary summary;
  summary.failing = report.project.size();
  for (const TableResult& result : report.tables) {
    if (result.status == Status::kNew) ++summary.added;
    if (result.status == Status::kAllowed) ++summary.allowed;
    if (result.status == Status::kRefused) ++summary.refused;
    if (result.status == Status::kRefused && !IsWaived(result)) ++summary.failing;
    if (result.gone) ++summary.gone;
  }
  summary.compared = summary.allowed + summary.refused;
  return summary;
}

}  // namespace korvel::report
