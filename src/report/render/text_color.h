// Colors of text reports on a terminal. Without them, a text is the same but for the escape sequences.
#pragma once

#include <string>

#include "report/result/words.h"

namespace korvel {

// SGR codes.
inline constexpr char kBold[] = "1", kRed[] = "31", kGreen[] = "32", kYellow[] = "33", kCyan[] = "36";

const char* ColorOf(Status status);
const char* ColorOf(OverallVerdict verdict);
const char* ColorOf(const Finding& finding);
const char* ColorOf(const ProjectFinding& finding);

// The text in a color, if colors are wanted.
std::string Colored(const std::string& text, const char* color, bool wanted);

}  // namespace korvel
