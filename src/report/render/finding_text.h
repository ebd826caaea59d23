// The findings of a text report. Every line ends with a newline.
#pragma once

#include <cstddef>
#include <string>

#include "base/input_error.h"
#include "report/result/fold.h"
#include "report/result/report.h"
#include "report/result/text_ranges.h"

namespace korvel {

// " [primary-key.size]"; "" without a rule.
std::string InBrackets(const std::string& rule);

// A finding with all its lines. `ranges` has its locations (LocationsOf).
std::string FindingText(const FoldedReport& report, const FoldedFinding& folded, const TextRanges& ranges, bool color);

// A fault, and a finding about the project file, with all their lines.
std::string FaultText(const InputFault& fault, bool color);
std::string ProjectFindingText(const ProjectFinding& finding, bool color);

// One line for a finding that an earlier step of a history lists.
std::string KnownFindingText(const FoldedReport& report, const FoldedFinding& folded, const TextRanges& ranges, std::size_t step,
                             bool color);

// One line for consecutive findings that are listed with an earlier table.
std::string RepeatedFindingsText(const FoldedReport& report, const SharedItems& items, const TextRanges& ranges);

}  // namespace korvel
