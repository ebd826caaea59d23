// explain: what a refusal protects, an example, what is allowed instead; what a result code means. Held by
// tests/tool/explain_test.cpp.
#include <charconv>
#include <cstdlib>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/quote.h"
#include "tool/cli/command.h"

namespace korvel::tool {
namespace {

// The code of a word: "-4", "4" or "ERROR_PRIMARYKEY_FIELD".
std::optional<int> ParseCode(const std::string& word) {
  int number = 0;
  const char* const end = word.data() + word.size();
  if (const auto [stop, error] = std::from_chars(word.data(), end, number); error == std::errc() && stop == end) {
    if (number >= kResultCodeCount || number <= -kResultCodeCount) return std::nullopt;
    return -std::abs(number);
  }
  for (int code = 0; code > -kResultCodeCount; --code) {
    if (word == ResultCodeName(code)) return code;
  }
  return std::nullopt;
}

std::vector<std::string> Words() {
  std::vector<std::string> words;
  for (const RefusalRow* row : AllRefusals()) words.emplace_back(row->id);
  for (int code = 0; code > -kResultCodeCount; --code) words.emplace_back(ResultCodeName(code));
  return words;
}

[[noreturn]] void RefuseWord(const std::string& word) {
  const std::vector<std::string> words = Words();
  const std::vector<std::string_view> known(words.begin(), words.end());
  throw InputError{{ToolMessage("explain: " + Quote(word) + " is neither a rule nor a result code nor a text of the checker" +
                                DidYouMean(word, known)),
                    "'korvelcheck rules' lists the rules, 'korvelcheck rules --codes' the codes: 0 to " +
                        std::to_string(1 - kResultCodeCount) + "."}};
}

std::string Make(const Options& options) {
  const std::string& word = options.word;
  if (const RuleDoc* doc = FindRuleDoc(word)) return options.rule_doc_format->rule(*doc);
  if (const std::optional<int> code = ParseCode(word)) return options.rule_doc_format->code(FindCodeDoc(*code));
  if (const RefusalRow* row = Identify(word)) return options.rule_doc_format->rule(*FindRuleDoc(row->id));
  RefuseWord(word);
}

}  // namespace

const Command kExplainCommand{
    .name = "explain",
    .summary = "explain a refusal, by its rule or its text, or a result code",
    .first = {"RULE-OR-CODE", "a rule, a result code or its name, or a text of the checker"},
    .second = kNoInput,
    .options = kRuleDocOption | kTakesWord,
    .make = Make,
    .words = Words,
};

}  // namespace korvel::tool
