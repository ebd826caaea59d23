// Every format over the cases and the shipped examples: goldens that somebody has read, and all documents held against their
// schemas, the sources and each other by a program that is not ours.
//
// A few cases that differ as much as possible, and each example, have goldens in every format. KORVEL_UPDATE_GOLDENS=1 writes the
// files instead.
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

// As unlike each other as cases get: what is no field's business, a table that is gone and one that is new, two findings, marks
// of formats in names, names beyond ASCII, a removed field deep inside, a setting, a schema that was refused before, no refusal.
const std::vector<std::string> kHandful = {
    "driver/protocols-record-to-tlv",
    "driver/table-gone",
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

// Names of cases, by the family that they are of.
std::map<std::string, std::vector<std::string>> Families() {
  std::map<std::string, std::vector<std::string>> families;
  for (const std::string& name : cases::Names()) families[name.substr(0, name.find('/'))].push_back(name);
  return families;
}

const std::set<std::string> kPages = {"game-v13-ladder-by-time", "shop-v7", "shop-v7-several-changes", "shop-v9-back-to-records"};

// Adds the names of the goldens to those `known`.
void ExpectGoldens(const fs::path& directory, const std::string& name, const Judged& checked, std::set<std::string>& known) {
  for (const Format& format : Formats()) {
    if (std::string_view(format.name) == "html" && !kPages.contains(name)) continue;
    const std::string file = name + "." + format.name;
    ExpectGolden(directory / file, GoldenText(format, checked.report));
    known.insert(file);
  }
}

TEST(GoldenReports, OfAHandfulOfCasesInEveryFormat) {
  std::set<std::string> known;
  ExpectGoldens(kGoldens / "handful", "handful", JudgeCases(kHandful), known);
  test_support::ExpectNoOtherGoldens(kGoldens / "handful", known);
}

TEST(GoldenReports, OfEveryExampleInEveryFormat) {
  std::set<std::string> known;
  for (const Example& example : Examples()) {
    ExpectGoldens(kGoldens / "examples", example.name, JudgeExample(example), known);
  }
  EXPECT_GT(known.size(), 100u);
  test_support::ExpectNoOtherGoldens(kGoldens / "examples", known);
}

TEST(GoldenReports, HaveNoOtherDirectory) { test_support::ExpectNoOtherGoldens(kGoldens, {"examples", "handful", "samples"}); }

// A directory of documents, NAME.FORMAT, for the time of a test.
class Documents {
 public:
  Documents() : directory_(fs::temp_directory_path() / ("korvel_reports." + std::to_string(::getpid()))) {
    fs::create_directory(directory_);
  }
  ~Documents() { fs::remove_all(directory_); }
  Documents(const Documents&) = delete;
  Documents& operator=(const Documents&) = delete;

  void Add(const std::string& name, const Judged& checked) const {
    for (const Format& format : Formats()) {
      std::ofstream(directory_ / (name + "." + format.name), std::ios::binary) << format.render(checked.report, false);
    }
  }

  // What the validator finds wrong with them, and its exit status.
  std::pair<std::string, int> Faults() const {
    const std::string command = KORVEL_PYTHON " '" + (kHere / "validate_reports.py").string() + "' '" + KORVEL_SOURCE_DIR +
                                "' '" + directory_.string() + "' 2>&1";
    std::string said;
    FILE* const pipe = ::popen(command.c_str(), "r");
    for (int c; (c = std::fgetc(pipe)) != EOF;) said += static_cast<char>(c);
    return {said, ::pclose(pipe)};
  }

 private:
  fs::path directory_;
};

TEST(GoldenReports, AreValidAndAgree) {
  const Documents documents;
  for (const auto& [family, names] : Families()) documents.Add(family, JudgeCases(names));
  for (const Example& example : Examples()) documents.Add(example.name, JudgeExample(example));
  EXPECT_EQ(documents.Faults(), std::pair(std::string(), 0));
}

}  // namespace
}  // namespace report_test
