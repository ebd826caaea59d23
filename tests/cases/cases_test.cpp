// Every pair of schema files under every public operation, compared byte for byte with the answers beside it.
//
// KORVEL_UPDATE_GOLDENS=1 writes the answers instead; read them before they are kept.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string_view>

#include "case_run.h"

namespace cases {
namespace {

enum class Side { kOld, kNew };

// Schemas that are refused against themselves, and why.
struct SelfRefusal {
  const char* name;
  Side side;
  int code;
  const char* reason;
};

constexpr char kNoRules[] = "a table made in TLV has no rules while its library is in the record format";
constexpr char kNoTable[] = "the table is not there";
constexpr char kNoKey[] = "a structure without a primary key is no table";
constexpr char kIndexOnList[] = "a list table may have no index, even one it always had";
constexpr char kLongKey[] = "the splittable key's text is too long to compare";
constexpr char kBadAttributes[] = "the table's attributes cannot be understood";
constexpr char kBadName[] = "the names of the new schema are checked whether they changed or not";
constexpr char kOversized[] = "the sizes of the new schema are checked whether they changed or not";

constexpr SelfRefusal kSelfRefusals[] = {
    {"driver/protocols-record", Side::kOld, -2, kNoRules},
    {"driver/protocols-record", Side::kNew, -2, kNoRules},
    {"driver/protocols-record-to-tlv", Side::kOld, -2, kNoRules},
    {"driver/table-gone", Side::kNew, -2, kNoTable},
    {"driver/table-new", Side::kOld, -2, kNoTable},
    {"driver/tlv-to-record", Side::kNew, -2, kNoRules},
    {"driver/tlv-to-unset", Side::kNew, -2, kNoRules},
    {"index/index-on-list-table", Side::kNew, -6, kIndexOnList},
    {"index/index-on-list-table-kept", Side::kOld, -6, kIndexOnList},
    {"index/index-on-list-table-kept", Side::kNew, -6, kIndexOnList},
    {"keys/percent-in-names", Side::kOld, -17, kBadName},
    {"keys/percent-in-names", Side::kNew, -17, kBadName},
    {"keys/primary-key-added", Side::kOld, -4, kNoKey},
    {"keys/primary-key-removed", Side::kNew, -4, kNoKey},
    {"length/limit-10m", Side::kNew, -2, kOversized},
    {"length/limit-128k", Side::kNew, -2, kOversized},
    {"length/limit-256k", Side::kNew, -2, kOversized},
    {"length/limit-times-count", Side::kNew, -2, kOversized},
    {"length/limit-two-fields", Side::kNew, -2, kOversized},
    {"length/whitelist-and-offender", Side::kNew, -2, kOversized},
    {"list/attributes-list-num-missing", Side::kNew, -1, kBadAttributes},
    {"list/attributes-malformed-new", Side::kNew, -1, kBadAttributes},
    {"list/attributes-malformed-old", Side::kOld, -1, kBadAttributes},
    {"list/attributes-percent", Side::kNew, -1, kBadAttributes},
    {"name/name-32-bytes", Side::kNew, -9, kBadName},
    {"name/name-blank", Side::kNew, -18, kBadName},
    {"name/name-character-before-length", Side::kNew, -18, kBadName},
    {"name/name-digit", Side::kNew, -17, kBadName},
    {"name/name-empty", Side::kNew, -19, kBadName},
    {"name/name-first-only", Side::kNew, -18, kBadName},
    {"name/name-hyphen", Side::kNew, -18, kBadName},
    {"name/name-kept", Side::kOld, -18, kBadName},
    {"name/name-kept", Side::kNew, -18, kBadName},
    {"name/name-non-ascii", Side::kNew, -18, kBadName},
    {"name/name-percent", Side::kNew, -18, kBadName},
    {"sortlist/sort-field-float", Side::kNew, -1, kBadAttributes},
    {"sortlist/sort-field-gap", Side::kNew, -1, kBadAttributes},
    {"sortlist/sort-field-none", Side::kNew, -1, kBadAttributes},
    {"splittable/splittable-key-new-text", Side::kNew, -5, kLongKey},
    {"splittable/splittable-key-old-text", Side::kOld, -5, kLongKey},
    {"splittable/splittable-key-text-both", Side::kOld, -5, kLongKey},
    {"splittable/splittable-key-text-both", Side::kNew, -5, kLongKey},
};

void ExpectSelfResult(const Case& input, const std::string& name, Side side) {
  const qmx::Metalib& library = side == Side::kOld ? input.old_lib : input.new_lib;
  const auto* end = std::end(kSelfRefusals);
  const auto* refusal = std::find_if(std::begin(kSelfRefusals), end, [&](const SelfRefusal& candidate) {
    return candidate.name == name && candidate.side == side;
  });
  EXPECT_EQ(AskMain(library.get(), library.get(), input.settings), refusal == end ? 0 : refusal->code)
      << (side == Side::kOld ? "old" : "new") << " against itself"
      << (refusal == end ? "" : std::string("; it should be refused, since ") + refusal->reason);
}

class CaseTest : public testing::TestWithParam<std::string> {};

TEST_P(CaseTest, AnswersAsExpected) {
  const std::string actual = Print(AskAll(Load(GetParam())));
  const auto golden = Folder(GetParam()) / "expected";
  if (std::getenv("KORVEL_UPDATE_GOLDENS") != nullptr) {
    std::ofstream(golden, std::ios::binary) << actual;
    GTEST_SKIP() << "written: " << golden;
  }
  EXPECT_EQ(ReadFile(golden), actual);
}

TEST_P(CaseTest, EachSideIsAllowedAgainstItself) {
  const Case input = Load(GetParam());
  ExpectSelfResult(input, GetParam(), Side::kOld);
  ExpectSelfResult(input, GetParam(), Side::kNew);
}

// The name promises what the main check says.
TEST_P(CaseTest, NameSaysWhetherAllowed) {
  const Case input = Load(GetParam());
  const bool allowed = AskMain(input.old_lib.get(), input.new_lib.get(), input.settings) == 0;
  EXPECT_EQ(allowed, GetParam().ends_with("-allowed"));
}

TEST_P(CaseTest, FolderHoldsWhatACaseHolds) {
  static const std::set<std::string> kFiles = {"old.xml", "new.xml", "expected", "findings"};
  std::set<std::string> found;
  for (const auto& file : std::filesystem::directory_iterator(Folder(GetParam()))) found.insert(file.path().filename().string());
  found.erase("settings");
  EXPECT_EQ(found, kFiles);
}

std::string TestName(const testing::TestParamInfo<std::string>& info) {
  constexpr std::string_view kAllowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  std::string name = info.param;
  for (char& c : name) c = kAllowed.find(c) == std::string_view::npos ? '_' : c;
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, CaseTest, testing::ValuesIn(Names()), TestName);

TEST(SelfRefusals, NameCasesThatExist) {
  const std::vector<std::string> names = Names();
  for (const SelfRefusal& refusal : kSelfRefusals) {
    EXPECT_TRUE(std::binary_search(names.begin(), names.end(), refusal.name)) << refusal.name;
  }
}

}  // namespace
}  // namespace cases
