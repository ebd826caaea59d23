// Findings as blocks of text.
#pragma once

#include <string>

#include "report/result/fold.h"
#include "report/result/text_ranges.h"

namespace korvel {

// The text between the codes that colour it on a terminal. `colour` is an SGR number.
std::string Coloured(const char* text, const char* colour, bool wanted);

// A finding with its snippets, old place, way out and the other ways to it.
std::string TextOfFinding(const FoldedFinding& folded, const TextRanges& marks, bool colour);

// One line for a finding that was told with an earlier table.
std::string TextOfRepeated(const TableResult& table, const Finding& finding, const TextRanges& marks);

}  // namespace korvel
