// Reports of the cases and the shipped examples: golden files, and a validator that compares all formats with their schemas, with
// the sources and with each other.
//
// There are text and JSON for each example, HTML for some examples, and every format for a few cases that differ as much as
// possible and for the cases with warnings. KORVEL_UPDATE_GOLDENS=1 writes the files instead.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>

#include "checked.h"
#include "golden_text.h"
#include "support/golden.h"

namespace report_test {
namespace {

using korvel::Format;
using korvel::Formats;
using test_support::ExpectGolden;

namespace fs = std::filesystem;

const fs::path kHere = fs::path(KORVEL_SOURCE_DIR) / "tests" / "report";
const fs::path kGoldens = kHere / "golden";

// A change of the library, a removed and a new table, two findings, format characters and non-ASCII characters in names, a
// removed field inside a structure, a setting, a pre-existing refusal, no refusal.
const std::vector<std::string> kHandful = {
    "driver/protocols-record-to-tlv",
    "driver/table-removed",
    "driver/table-new",
    "index/index-renamed",
    "keys/percent-in-names",
    "length/whitelist-and-offender",
    "name/name-non-ascii",
    "record/field-removed-nested",
    "sortlist/sort-field-gap",
    "splittable/splittable-key-old-text",
    "tlv/count-refer-reduced",
};

// The names of the cases of each family.
std::map<std::string, std::vector<std::string>> Families() {
  std::map<std::string, std::vector<std::string>> families;
  for (const std::string& name : cases::Names()) families[name.substr(0, name.find('/'))].push_back(name);
  return families;
}

// Examples with an HTML golden.
const std::set<std::string> kPages = {"game-v13-ladder-by-time", "shop-v7", "shop-v7-several-changes", "shop-v9-back-to-records"};

// Compares the report in the formats for which `wants` is true. Adds the names of the files to `known`.
template <class Wants>
void ExpectGoldens(const fs::path& directory, const std::string& name, const CheckedReport& checked, Wants wants,
                   std::set<std::string>& known) {
  for (const Format& format : Formats()) {
    if (!wants(std::string_view(format.name))) continue;
    const std::string file = name + "." + format.name;
    ExpectGolden(directory / file, GoldenText(format, checked.report));
    known.insert(file);
  }
}

TEST(GoldenReports, SomeCasesInEveryFormatButHtml) {
  std::set<std::string> known;
  ExpectGoldens(
      kGoldens / "handful", "handful", CheckCases(kHandful), [](std::string_view format) { return format != "html"; }, known);
  test_support::ExpectNoOtherGoldens(kGoldens / "handful", known);
}

TEST(GoldenReports, WarningsInEveryFormat) {
  std::set<std::string> known;
  ExpectGoldens(
      kGoldens / "warnings", "warnings", CheckCases(Families()["warnings"]), [](std::string_view) { return true; }, known);
  test_support::ExpectNoOtherGoldens(kGoldens / "warnings", known);
}

// The other formats are tested with the hand-made reports of formats_test.cpp and by AreValidAndAgree.
TEST(GoldenReports, EveryExampleAsTextAndJson) {
  std::set<std::string> known;
  for (const Example& example : Examples()) {
    const auto wants = [&](std::string_view format) {
      return format == "text" || format == "json" || (format == "html" && kPages.contains(example.name));
    };
    ExpectGoldens(kGoldens / "examples", example.name, CheckExample(example), wants, known);
  }
  EXPECT_GT(known.size(), 40u);
  test_support::ExpectNoOtherGoldens(kGoldens / "examples", known);
}

// Each of these directories is checked for files that no test reads; no other directory may be added.
TEST(GoldenReports, EveryDirectoryIsRead) {
  test_support::ExpectNoOtherGoldens(kGoldens, {"examples", "handful", "samples", "warnings"});
}

// A temporary directory of documents NAME.FORMAT.
class Documents {
 public:
  Documents() : directory_(fs::temp_directory_path() / ("korvel_reports." + std::to_string(::getpid()))) {
    fs::create_directory(directory_);
  }
  ~Documents() { fs::remove_all(directory_); }
  Documents(const Documents&) = delete;
  Documents& operator=(const Documents&) = delete;

  void Add(const std::string& name, const CheckedReport& checked) const {
    for (const Format& format : Formats()) {
      std::ofstream(directory_ / (name + "." + format.name), std::ios::binary) << format.Render(checked.report, false);
    }
  }

  // The output and the exit status of the validator.
  std::pair<std::string, int> Faults() const {
    const std::string command = KORVEL_PYTHON " '" + (kHere / "validate_reports.py").string() + "' '" + KORVEL_SOURCE_DIR +
                                "' '" + directory_.string() + "' 2>&1";
    std::string output;
    FILE* const pipe = ::popen(command.c_str(), "r");
    for (int c; (c = std::fgetc(pipe)) != EOF;) output += static_cast<char>(c);
    return {output, ::pclose(pipe)};
  }

 private:
  fs::path directory_;
};

TEST(GoldenReports, AreValidAndAgree) {
  const Documents documents;
  for (const auto& [family, names] : Families()) documents.Add(family, CheckCases(names));
  for (const Example& example : Examples()) documents.Add(example.name, CheckExample(example));
  EXPECT_EQ(documents.Faults(), std::pair(std::string(), 0));
}

}  // namespace
}  // namespace report_test
