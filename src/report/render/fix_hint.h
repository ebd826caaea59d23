// The line of a text report that names the command that fixes the refused changes.
#pragma once

#include <span>
#include <string>

#include "report/result/fold.h"

namespace korvel {

// "To fix what is refused: korvelcheck suggest --write", with its line end; "" if the command (Report::fix_command) fixes none of
// these findings of the report.
std::string FixHint(const FoldedReport& report, std::span<const FoldedFinding> findings);

}  // namespace korvel
