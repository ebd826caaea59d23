// rules: every refusal of the checker, or every result code, a line each. Held by tests/tool/explain_test.cpp.
#include "tool/cli/command.h"

namespace korvel::tool {
namespace {

std::string Make(const Options& options) {
  return options.codes ? options.rule_doc_format->codes() : options.rule_doc_format->rules();
}

}  // namespace

const Command kRulesCommand{
    .name = "rules",
    .summary = "list every refusal of the checker, or every result code",
    .first = kNoInput,
    .second = kNoInput,
    .options = kRuleDocOption | kCodesOption,
    .make = Make,
};

}  // namespace korvel::tool
