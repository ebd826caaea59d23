// Schema files of the project, and what must hold of every text that differs from them.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lsp_test {

// A few of the examples and the one of docs/schema-files.md.
std::vector<std::string> Examples();

// The new schema of every case.
std::vector<std::string> NewSchemas();

// Calls `visit(text, at)` with every prefix of each example, and with each example without one of its bytes. The text is broken
// at `at`.
void ForEachBrokenExample(const std::function<void(std::string_view, std::size_t)>& visit);

}  // namespace lsp_test
