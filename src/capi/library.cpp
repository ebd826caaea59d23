// About the library itself, and the pages about rules. Tested by tests/capi/library_test.cpp.
#include <cstdio>

#include "base/did_you_mean.h"
#include "base/text.h"
#include "capi/call.h"
#include "qmx/qmx_image.h"
#include "report/render/render.h"
#include "rule_docs/rule_docs.h"

namespace korvel::capi {
namespace {

// Made without memory of the heap.
struct BuildInfo {
  char text[512];

  BuildInfo() {
    std::snprintf(text, sizeof(text),
                  "{\"name\": \"korvelcheck\", \"version\": \"%s\", \"abi\": %d, \"report_version\": %d, \"image_version\": %u, "
                  "\"compiler\": \"%s\", \"build_type\": \"%s\"}",
                  KORVEL_VERSION, KORVEL_ABI, kReportJsonVersion, qmx::kImageVersion, KORVEL_COMPILER, KORVEL_BUILD_TYPE);
  }
};

const RuleDoc& FindDoc(const std::string& rule) {
  if (const RuleDoc* const doc = FindRuleDoc(rule)) return *doc;
  throw ArgumentError{"kc_explain: unknown rule " + Quote(rule)};
}

}  // namespace
}  // namespace korvel::capi

const char* kc_version(void) { return KORVEL_VERSION; }

const char* kc_build_info(void) {
  static const korvel::capi::BuildInfo kInfo;
  return kInfo.text;
}

const char* kc_format_name(size_t index) { return index < korvel::Formats().size() ? korvel::Formats()[index].name : nullptr; }

int kc_explain(const char* rule, const char** page, kc_error** error) {
  if (page != nullptr) *page = nullptr;
  return korvel::capi::Call(error, [&] {
    korvel::capi::Require(rule, "kc_explain", "rule");
    korvel::capi::Require(page, "kc_explain", "page");
    *page = korvel::capi::FindDoc(rule).page.data();  // a constant that ends with a zero byte
  });
}
