// The completions of the shells, one file each.
#pragma once

#include <string>
#include <vector>

namespace korvel::tool {

std::string BashCompletion();
std::string ZshCompletion();
std::string FishCompletion();

// The text with `escape` in front of each of these characters.
std::string EscapeWith(const std::string& text, const std::string& characters, const std::string& escape);

}  // namespace korvel::tool
