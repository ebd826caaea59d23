// Gives up the sources of results, with everything kept that reports show of them.
#pragma once

#include <memory>
#include <vector>

#include "report/result/released_source.h"
#include "report/result/report.h"

namespace korvel {

// Lets the results refer to small replacements of their sources (ReleaseExcept), which are returned and must outlive the results.
// REQUIRES: suggestions were added, and no format reads the text or the library of a source. Throws as FindTextRanges.
std::vector<std::shared_ptr<const ReleasedSource>> ReleaseSources(std::vector<TableResult>& tables);

}  // namespace korvel
