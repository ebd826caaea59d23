// Reads schema files of the project and breaks them.
#include "lsp/schema_files.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace lsp_test {
namespace {

namespace fs = std::filesystem;

std::string Contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The first block of XML on a page.
std::string FirstBlock(const std::string& page) {
  const std::size_t begin = page.find("```xml\n") + 7;
  return page.substr(begin, page.find("```", begin) - begin);
}

}  // namespace

std::vector<std::string> Examples() {
  const fs::path source(KORVEL_SOURCE_DIR);
  return {Contents(source / "examples/shop/v5.xml"), Contents(source / "examples/game/v13.xml"),
          FirstBlock(Contents(source / "docs/schema-files.md"))};
}

std::vector<std::string> NewSchemas() {
  std::vector<fs::path> paths;
  for (const auto& family : fs::directory_iterator(fs::path(KORVEL_SOURCE_DIR) / "tests/cases")) {
    if (!family.is_directory()) continue;
    for (const auto& one : fs::directory_iterator(family)) {
      if (fs::exists(one.path() / "new.xml")) paths.push_back(one.path() / "new.xml");
    }
  }
  std::ranges::sort(paths);
  std::vector<std::string> texts;
  std::ranges::transform(paths, std::back_inserter(texts), Contents);
  return texts;
}

void ForEachBrokenExample(const std::function<void(std::string_view, std::size_t)>& visit) {
  for (const std::string& example : Examples()) {
    for (std::size_t at = 0; at < example.size(); ++at) {
      visit(std::string_view(example).substr(0, at), at);
      std::string shorter = example;
      visit(shorter.erase(at, 1), at);
    }
  }
}

}  // namespace lsp_test
