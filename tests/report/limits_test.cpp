// Compares docs/limits.md with the constants: every limit has one row with its value, and every row is a limit.
#include <gmock/gmock.h>

#include <map>
#include <regex>
#include <string>

#include "base/limits.h"
#include "cases/case_files.h"
#include "qmx/qmx_limits.h"

namespace report_test {
namespace {

using namespace korvel;
using Values = std::map<std::string, std::string>;

const std::string kRoot = KORVEL_SOURCE_DIR "/";

const std::map<std::string, std::uint64_t> kLimits = {
    {"kMaxFileBytes", qmx::kMaxFileBytes},
    {"kMaxMetas", qmx::kMaxMetas},
    {"kMaxEntries", qmx::kMaxEntries},
    {"kMaxPrimaryKeyMembers", qmx::kMaxPrimaryKeyMembers},
    {"kMaxNesting", qmx::kMaxNesting},
    {"kMaxPrologBytes", qmx::kMaxPrologBytes},
    {"kMaxElementDepth", qmx::kMaxElementDepth},
    {"kMaxNameBytes", qmx::kMaxNameBytes},
    {"kMaxAttributeBytes", qmx::kMaxAttributeBytes},
    {"kMaxErrors", qmx::kMaxErrors},
    {"kMaxRepeatedNames", qmx::kMaxRepeatedNames},
    {"kMaxFindings", kMaxFindings},
    {"kMaxWork", kMaxWork},
    {"kMaxPaths", kMaxPaths},
    {"kMaxAlso", kMaxAlso},
    {"kMaxAttributePairs", kMaxAttributePairs},
    {"kMaxInnerFields", kMaxInnerFields},
    {"kMaxSnippet", kMaxSnippet},
    {"kMaxLogBytes", kMaxLogBytes},
};

// The matches of a pattern in a text: the second group of each, by the first.
Values Found(const std::string& text, const std::string& pattern) {
  const std::regex wanted(pattern);
  Values found;
  for (std::sregex_iterator match(text.begin(), text.end(), wanted), end; match != end; ++match) {
    EXPECT_TRUE(found.emplace((*match)[1], (*match)[2]).second) << "twice: " << (*match)[1];
  }
  return found;
}

TEST(Limits, PageListsEachLimitWithItsValue) {
  // A row is | what | value | `constant` | ...
  const Values rows = Found(cases::ReadFile(kRoot + "docs/limits.md"), "[|] (?=[0-9]+ [|] `(kMax[A-Za-z]+)` [|])([0-9]+)");
  Values wanted;
  for (const auto& [name, value] : kLimits) wanted.emplace(name, std::to_string(value));
  EXPECT_EQ(rows, wanted);
}

TEST(Limits, EveryConstantOfTheHeadersIsChecked) {
  Values declared;
  for (const char* header : {"include/qmx/qmx_limits.h", "src/base/limits.h"}) {
    declared.merge(Found(cases::ReadFile(kRoot + header), "inline constexpr [a-z_:]+ (kMax[A-Za-z]+)( =)"));
  }
  Values wanted;
  for (const auto& [name, value] : kLimits) wanted.emplace(name, " =");
  EXPECT_EQ(declared, wanted);
}

}  // namespace
}  // namespace report_test
