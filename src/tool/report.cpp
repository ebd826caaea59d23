// Places and counts. Nothing is judged or printed here.
#include "tool/report.h"

namespace korvel::tool {

Place PlaceOf(const Input& input, const std::string& meta) { return {input.name, input.meta_places.at(meta)}; }

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
