// Pieces of Markdown that several formats share.
#pragma once

#include <cstddef>
#include <string>

#include "report/result/issues.h"

namespace korvel {

// "refused", "warning", "note"; "error" for a fault and an error of the project file; "waived" if the issue is waived.
const char* StatusOf(const Issue& issue);

// Where the issue is, as code; "" for a fault of the whole call.
std::string LocationCode(const Issue& issue, const ServicePaths& paths);

// "\n3 more findings.\n"; "" if all are shown.
std::string More(std::size_t all, std::size_t shown, const char* what);

}  // namespace korvel
