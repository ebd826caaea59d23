// The completions of the shells, one file each.
#pragma once

#include <string>
#include <vector>

namespace korvel::tool {

std::string BashCompletion();
std::string ZshCompletion();
std::string FishCompletion();

// The words with a blank, or another text, between two of them.
std::string Join(const std::vector<std::string>& words, const char* between = " ");

// The text with `escape` in front of each of these characters.
std::string EscapeWith(const std::string& text, const std::string& characters, const std::string& escape);

}  // namespace korvel::tool
