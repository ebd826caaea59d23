// The difference of two texts as programs that patch files take it.
#pragma once

#include <string>
#include <string_view>

namespace korvel {

// The unified form with three lines of context; empty for equal texts. Lines end in LF; a last line without one is marked as
// such. Not always the shortest: of lines that stand more than once in a text those beside others that match are matched. n log
// n.
std::string UnifiedDiff(std::string_view old_name, std::string_view old_text, std::string_view new_name,
                        std::string_view new_text);

}  // namespace korvel
