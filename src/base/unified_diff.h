// The difference of two texts as a patch.
#pragma once

#include <string>
#include <string_view>

namespace korvel {

// A unified diff with three lines of context; "" for equal texts. Lines end in LF; a last line without LF is marked. Not always
// the shortest diff: see FindLineChanges. n log n. Names are written as they are: REQUIRES: they are on one line.
std::string UnifiedDiff(std::string_view old_name, std::string_view old_text, std::string_view new_name,
                        std::string_view new_text);

}  // namespace korvel
