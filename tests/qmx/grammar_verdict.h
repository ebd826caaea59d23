// The verdict of the grammar docs/qmx.rng, as xmllint finds it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace grammar_test {

// Whether the grammar accepts each file, found by one process. Paths contain no single quotes.
std::vector<bool> GrammarAccepts(const std::vector<std::filesystem::path>& files);

// The same for texts.
std::vector<bool> GrammarAcceptsTexts(const std::vector<std::string>& texts);

}  // namespace grammar_test
