// rules and explain: the pages about the rules and result codes of the checker. Tested by tests/tool/explain_test.cpp.
#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/text.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/commands/explain_finding.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

struct RulesArguments {
  OutputOption output;
  PageFormat page;
  bool codes = false;

  void AddTo(ArgumentList& arguments) {
    output.AddTo(arguments);
    page.AddTo(arguments);
    arguments.AddFlag("--codes", codes, "list the result codes, not the rules");
  }
};

int ListRules(const RulesArguments& arguments) {
  const RuleDocFormat& format = *arguments.page.format;
  arguments.output.Write(arguments.codes ? format.codes() : format.rules());
  return kAllAllowed;
}

struct ExplainArguments {
  std::vector<std::string> words;
  ExplainedCheck check;
  OutputOption output;
  PageFormat page;

  void AddTo(ArgumentList& arguments) {
    arguments
        .AddPositional(
            "TOPIC", "", words,
            "a rule, a family of rules, a result code or its name, a text of the checker, a word, or the fingerprint of "
            "a finding")
        .is_required = true;
    check.AddTo(arguments);
    output.AddTo(arguments);
    page.AddTo(arguments);
  }
};

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
  for (const AdviceRule* advice : AllAdvice()) words.emplace_back(advice->row.id);
  for (const RefusalRow& row : kFaultRules) words.emplace_back(row.id);
  for (const ProjectRule* rule : kProjectRules) words.emplace_back(rule->row.id);
  for (int code = 0; code > -kResultCodeCount; --code) words.emplace_back(ResultCodeName(code));
  return words;
}

// The pages of all rules, in the order of `rules`.
std::vector<const RuleDoc*> AllDocs() {
  std::vector<const RuleDoc*> docs;
  for (const auto all : {AllRuleDocs(), AllAdviceDocs(), AllFaultDocs(), AllProjectDocs()}) {
    for (const RuleDoc& doc : all) docs.push_back(&doc);
  }
  return docs;
}

// "primary-key" of "primary-key.size"
std::string FamilyOf(const RuleDoc& doc) {
  const std::string id = doc.row->id;
  return id.substr(0, id.find('.'));
}

[[noreturn]] void RefuseWord(const std::string& word) {
  std::vector<std::string> words = Words();
  for (const RuleDoc* doc : AllDocs()) words.push_back(FamilyOf(*doc));
  const std::vector<std::string_view> known(words.begin(), words.end());
  InputError error{{ToolMessage("explain: " + Quote(word) + " is neither a rule nor a result code nor a text of the checker" +
                                DidYouMean(word, known)),
                    "'korvelcheck rules' lists the rules, 'korvelcheck rules --codes' the codes: 0 to " +
                        std::to_string(1 - kResultCodeCount) + "."}};
  if (MayBeFingerprint(word)) {
    error.lines.emplace_back(
        "A fingerprint, from a report of 'korvelcheck check', requires what that check compared: OLD and NEW, or --against.");
  }
  throw error;
}

bool ContainsIgnoringCase(std::string_view text, std::string_view word) {
  const auto is_same = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
  return std::search(text.begin(), text.end(), word.begin(), word.end(), is_same) != text.end();
}

// The rules of a family, else those whose id or summary contains the word. A word of one or two characters says too little.
std::vector<const RuleDoc*> Matches(const std::string& word) {
  constexpr std::size_t kMinWord = 3;
  std::vector<const RuleDoc*> family = AllDocs();
  std::erase_if(family, [&](const RuleDoc* doc) { return FamilyOf(*doc) != word; });
  if (!family.empty() || word.size() < kMinWord) return family;
  std::vector<const RuleDoc*> docs = AllDocs();
  std::erase_if(docs, [&](const RuleDoc* doc) {
    return !ContainsIgnoringCase(doc->row->id, word) && !ContainsIgnoringCase(doc->row->summary, word);
  });
  return docs;
}

// The page of a rule or code, or a list of rules; nullopt for an unknown word.
std::optional<std::string> PageOf(const RuleDocFormat& format, const std::string& word) {
  if (const RuleDoc* doc = FindRuleDoc(word)) return format.rule(*doc);
  if (const std::optional<int> code = ParseCode(word)) return format.code(FindCodeDoc(*code));
  if (const RefusalRow* row = Identify(word)) return format.rule(*FindRuleDoc(row->id));
  const std::vector<const RuleDoc*> docs = Matches(word);
  if (docs.empty()) return std::nullopt;
  return docs.size() == 1 ? format.rule(*docs.front()) : format.list(docs);
}

// A word that is not one of the catalog may be a fingerprint, if there is anything to check.
std::optional<std::string> TextOf(const ExplainArguments& arguments) {
  const std::string& topic = arguments.words.front();
  const bool is_fingerprint = MayBeFingerprint(topic);
  if (arguments.check.IsGiven() && !is_fingerprint) {
    throw UsageError{Quote(topic) + " is not a fingerprint; allowed with files and --against: at least four hexadecimal digits"};
  }
  if (!arguments.check.IsGiven()) {
    if (std::optional<std::string> page = PageOf(*arguments.page.format, topic)) return page;
    if (!is_fingerprint) return std::nullopt;
  }
  if (arguments.page.format != &kRuleDocText) {
    throw UsageError{"a finding is explained as text; 'korvelcheck check' has it in other formats"};
  }
  return ExplainFinding(arguments.check, topic, arguments.output);
}

int Explain(const ExplainArguments& arguments) {
  const std::optional<std::string> text = TextOf(arguments);
  if (!text) RefuseWord(arguments.words.front());
  arguments.output.Write(*text);
  return kAllAllowed;
}

}  // namespace

const Command kRulesCommand{"rules", "list the rules of the checker, or its result codes", Declare<RulesArguments, ListRules>};
const Command kExplainCommand{"explain",
                              "explain a rule, a family of rules, a result code, a word, or a finding by its fingerprint",
                              Declare<ExplainArguments, Explain>, Words};

}  // namespace korvel::tool
