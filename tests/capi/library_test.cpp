// Version, build information, formats and pages about rules.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "capi/example.h"
#include "report/render/render.h"
#include "rule_docs/rule_docs.h"

namespace capi_test {
namespace {

TEST(CApiLibrary, BuildInfoIsJson) {
  const auto info = nlohmann::json::parse(kc_build_info());
  EXPECT_EQ(info.at("version"), kc_version());
  EXPECT_EQ(info.at("version"), KORVEL_VERSION);
  EXPECT_EQ(info.at("abi"), KORVEL_ABI);
  EXPECT_EQ(info.at("report_version"), korvel::kReportJsonVersion);
  EXPECT_EQ(info.at("image_version"), 1);
  EXPECT_FALSE(info.at("compiler").empty());
  EXPECT_TRUE(info.contains("build_type"));
}

TEST(CApiLibrary, ListsAllFormats) {
  std::set<std::string> names;
  for (std::size_t i = 0; kc_format_name(i) != nullptr; ++i) names.insert(kc_format_name(i));
  EXPECT_EQ(names.size(), korvel::Formats().size());
  EXPECT_TRUE(names.contains("text"));
  EXPECT_TRUE(names.contains("sarif"));
  EXPECT_EQ(kc_format_name(SIZE_MAX), nullptr);
}

TEST(CApiLibrary, ExplainsEveryRule) {
  for (const auto docs : {korvel::AllRuleDocs(), korvel::AllAdviceDocs(), korvel::AllFaultDocs(), korvel::AllProjectDocs()}) {
    for (const korvel::RuleDoc& doc : docs) {
      const char* page = nullptr;
      ASSERT_EQ(kc_explain(doc.row->id, &page, nullptr), KC_OK) << doc.row->id;
      EXPECT_EQ(page, doc.page);
    }
  }
}

TEST(CApiLibrary, UnknownRuleIsAnError) {
  kc_error* error = nullptr;
  const char* page = "";
  EXPECT_EQ(kc_explain("no.rule", &page, &error), KC_ERROR_ARGUMENT);
  EXPECT_EQ(page, nullptr);
  EXPECT_STREQ(kc_error_message(error), "kc_explain: unknown rule 'no.rule'");
  kc_error_free(error);
}

}  // namespace
}  // namespace capi_test
