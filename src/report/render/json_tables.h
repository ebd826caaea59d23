// The tables of a report as members of a JSON object.
#pragma once

#include "report/render/json_stream.h"
#include "report/result/report.h"

namespace korvel {

// Adds the members "tables", "findings" and, if there are any, "warnings" to an object, as in the JSON report.
void WriteJsonTables(const Report& report, JsonStream& json);

}  // namespace korvel
