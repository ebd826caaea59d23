// Laws about the edits of every case and example. The edits themselves are listed in the file `expected` of each case
// (tests/cases/cases_test.cpp), and those of the examples in tests/report/golden/examples.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "analysis/findings/findings.h"
#include "analysis/findings/run_checker.h"
#include "models.h"
#include "read_source.h"

namespace report_test {
namespace {

namespace fs = std::filesystem;
using korvel::Difference;
using korvel::RunChecker;
using korvel::Source;

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.good()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

struct SourcePair {
  std::string name;
  Source old_source;
  Source new_source;
};

SourcePair Load(const std::string& name, const fs::path& old_path, const fs::path& new_path) {
  return {name, ReadSource("old.xml", ReadFile(old_path)), ReadSource("new.xml", ReadFile(new_path))};
}

// All cases, and each example with one base version of its project. Sorted by name.
std::vector<SourcePair> AllPairs() {
  const fs::path top = KORVEL_SOURCE_DIR;
  std::vector<SourcePair> pairs;
  for (const auto& family : fs::directory_iterator(top / "tests/cases")) {
    if (!family.is_directory()) continue;
    for (const auto& folder : fs::directory_iterator(family)) {
      const std::string name = family.path().filename().string() + "/" + folder.path().filename().string();
      pairs.push_back(Load(name, folder.path() / "old.xml", folder.path() / "new.xml"));
    }
  }
  for (const auto& [folder, base] : {std::pair("shop", "v6.xml"), std::pair("game", "v12.xml")}) {
    for (const auto& file : fs::directory_iterator(top / "examples" / folder)) {
      if (file.path().extension() != ".xml") continue;
      pairs.push_back(Load("examples/" + std::string(folder) + "/" + file.path().filename().string(),
                           top / "examples" / folder / base, file.path()));
    }
  }
  std::ranges::sort(pairs, {}, &SourcePair::name);
  return pairs;
}

void ExpectSameVerdict(const SourcePair& pair, const std::string& table) {
  SCOPED_TRACE(pair.name + " " + table);
  const auto settings = ResolveSettings({}, pair.old_source, table);
  const auto whole = RunChecker(pair.old_source.Library(), pair.new_source.Library(), table, settings);
  const std::optional<qmx::Metalib> old_library = Build(ModelOf(pair.old_source, table));
  const std::optional<qmx::Metalib> new_library = Build(ModelOf(pair.new_source, table));
  ASSERT_TRUE(old_library && new_library);
  const auto part = RunChecker(old_library->get(), new_library->get(), table, settings);
  EXPECT_EQ(part.code, whole.code);
  EXPECT_EQ(part.text, whole.text);
}

// The verdict on the model of a table equals the verdict on the whole library.
TEST(DiffCases, ModelsGetSameVerdict) {
  std::size_t tables = 0;
  for (const SourcePair& pair : AllPairs()) {
    for (const std::string_view table : pair.old_source.tables) {
      if (!pair.new_source.HasMeta(std::string(table))) continue;
      ExpectSameVerdict(pair, std::string(table));
      ++tables;
    }
  }
  EXPECT_GT(tables, 150u);
}

// All edits applied give the new table; no edits give the old one.
TEST(DiffCases, ApplyGivesBothSides) {
  for (const SourcePair& pair : AllPairs()) {
    for (const std::string_view table : pair.old_source.tables) {
      if (!pair.new_source.HasMeta(std::string(table))) continue;
      SCOPED_TRACE(pair.name + " " + std::string(table));
      const Difference difference(pair.old_source, pair.new_source, std::string(table));
      const std::size_t edits = difference.edits().size();
      EXPECT_EQ(difference.Apply(std::vector<bool>(edits, true)), ModelOf(pair.new_source, std::string(table)));
      EXPECT_EQ(difference.Apply(std::vector<bool>(edits, false)), ModelOf(pair.old_source, std::string(table)));
    }
  }
}

}  // namespace
}  // namespace report_test
