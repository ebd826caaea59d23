// What is suggested loses no data: no warning that the author's change does not have, and no field that is left out silently.
// KORVEL_SEED and KORVEL_PAIRS select another run.
#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "analysis/findings/findings.h"
#include "analysis/findings/run_checker.h"
#include "analysis/suggest/element_text.h"
#include "analysis/suggest/suggest.h"
#include "analysis/suggest/suggestions.h"
#include "analysis/warnings/warnings.h"
#include "base/text.h"
#include "models.h"
#include "read_source.h"
#include "schema/xml_writer.h"

namespace report_test {
namespace {

using namespace korvel;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kTable = "t";

// Rule, structure and field of each warning.
using Warnings = std::set<std::tuple<std::string, std::string, std::string>>;

Warnings WarningsAfter(const Source& old_source, const Source& new_source, const std::string& table, const Settings& settings) {
  Warnings warnings;
  const Advice advice = FindWarnings({old_source, new_source, table, settings}, nullptr);
  for (const Finding& finding : advice.findings) {
    const Edit& edit = advice.edits.at(finding.edits.front());
    if (finding.level == Level::kWarning) warnings.emplace(finding.verdict.rule, edit.meta, edit.item);
  }
  return warnings;
}

std::vector<std::string> TextsOf(const Warnings& warnings) {
  std::vector<std::string> texts;
  for (const auto& [rule, meta, item] : warnings) texts.push_back(rule + " at " + meta + "." + item);
  return texts;
}

// --- Single changes ---

struct Answer {
  std::string text;  // the suggested file
  std::vector<std::string> suggestions;
  std::vector<std::string> fixed;     // for each finding, the file after its fix
  std::vector<std::string> warnings;  // about the suggested file
};

// A library with a structure "s" and the table "t", which contains it.
std::string Library(const std::string& protocol, int version, const std::string& structure, const std::string& table) {
  return "<metalib name=\"m\" version=\"" + std::to_string(version) + "\" protocol=\"" + protocol + "\">\n" + structure +
         "<meta name=\"t\">\n" + table + "</meta>\n</metalib>\n";
}

Answer AnswerOf(const std::string& before, const std::string& after) {
  const Source old_source = ReadSource("old.xml", before);
  const Source new_source = ReadSource("new.xml", after);
  const Settings settings = ResolveSettings({}, old_source, kTable);
  const TableContext context{old_source, new_source, kTable, settings};
  const Verdict whole = RunChecker(old_source.Library(), new_source.Library(), kTable, settings);
  const Difference difference(old_source, new_source, kTable);
  Changes changes = FindChanges(context, difference, whole, kMaxFindings);
  SuggestionWork work;
  FindSuggestions(context, difference, changes, true, work);
  Answer answer;
  for (const Finding& finding : changes.findings) {
    answer.suggestions.push_back(finding.suggestion);
    answer.fixed.push_back(ApplyReplacements(new_source.text->Bytes(), finding.fix));
  }
  const SchemaSuggestion suggestion = SuggestSchema(old_source, new_source, {{kTable, settings}});
  EXPECT_THAT(suggestion.refused, IsEmpty());
  answer.text = suggestion.text;
  answer.warnings = TextsOf(WarningsAfter(old_source, ReadSource("suggested.xml", answer.text), kTable, settings));
  return answer;
}

struct LossRow {
  const char* label;
  const char* protocol;
  std::string old_structure;
  std::string new_structure;
  const char* table;
  const char* suggestion;
  std::string text;  // part of the suggested file
};

constexpr char kSplittable[] =
    "<entry name=\"uid\" type=\"uint32\"/>\n<entry name=\"in\" type=\"s\"/>\n<primarykey entries=\"uid\"/>\n"
    "<splittablekey entries=\"in\"/>\n";
constexpr char kUnionKey[] = "<entry name=\"k\" id=\"1\" type=\"u\"/>\n<primarykey entries=\"k\"/>\n";
constexpr char kBoxTable[] =
    "<entry name=\"uid\" id=\"1\" type=\"uint32\"/>\n<entry name=\"in\" id=\"2\" type=\"s\"/>\n<primarykey entries=\"uid\"/>\n";

// The structure "s" with a counter and more fields.
std::string Counted(const std::string& fields) {
  return "<meta name=\"s\">\n<entry name=\"n\" id=\"1\" type=\"uint8\"/>\n" + fields + "</meta>\n";
}

// The structure "s" with one field, and a union "u" that contains it.
std::string InUnion(const std::string& type) {
  return "<meta name=\"s\"><entry name=\"x\" id=\"1\" type=\"" + type + "\"/></meta>\n" +
         "<meta name=\"u\" kind=\"union\"><entry name=\"in\" id=\"1\" type=\"s\"/>"
         "<entry name=\"w\" id=\"2\" type=\"bytes\" size=\"16\"/></meta>\n";
}

const LossRow kLossRows[] = {
    {"a structure in a splittable key", "QMX", "<meta name=\"s\"><entry name=\"x\" type=\"uint32\"/></meta>\n",
     "<meta name=\"s\"><entry name=\"x\" type=\"uint64\"/></meta>\n", kSplittable, "leave out the change: keep x as uint32",
     "<meta name=\"s\"><entry name=\"x\" type=\"uint32\"/></meta>\n"},
    {"a structure in a union in the primary key", "QMX", InUnion("uint8"), InUnion("uint16"), kUnionKey,
     "leave out the change: keep x as uint8", InUnion("uint8")},
    {"the same in TLV", "TLV", InUnion("uint8"), InUnion("uint16"), kUnionKey, "leave out the change: keep x as uint8",
     InUnion("uint8")},
    {"an array with another name, type and count", "TLV",
     Counted("<entry name=\"a\" id=\"2\" type=\"uint16\" count=\"4\" refer=\"n\"/>\n"),
     Counted("<entry name=\"z\" id=\"2\" type=\"uint32\" count=\"8\" refer=\"n\"/>\n"), kBoxTable,
     "keep a with id 2; give z an id of its own (uint32 x 8, id 3, version 6), and a new field n_2 (uint8, id 4, "
     "version 6) that counts them",
     Counted("<entry name=\"a\" id=\"2\" type=\"uint16\" count=\"4\" refer=\"n\"/>\n"
             "<entry name=\"n_2\" id=\"4\" type=\"uint8\" version=\"6\"/>\n"
             "<entry name=\"z\" id=\"3\" type=\"uint32\" version=\"6\" count=\"8\" refer=\"n_2\"/>\n")},
    {"a field with another name and type", "TLV", Counted("<entry name=\"y\" id=\"2\" type=\"uint32\"/>\n"),
     Counted("<entry name=\"z\" id=\"2\" type=\"uint64\"/>\n"), kBoxTable,
     "keep y with id 2; give z an id of its own (uint64, id 3, version 6)",
     Counted("<entry name=\"y\" id=\"2\" type=\"uint32\"/>\n<entry name=\"z\" id=\"3\" type=\"uint64\" version=\"6\"/>\n")},
    {"two fields with other types, one with the name of the other", "TLV",
     Counted("<entry name=\"a\" id=\"2\" type=\"uint32\"/>\n<entry name=\"b\" id=\"3\" type=\"double\"/>\n"),
     Counted("<entry name=\"b\" id=\"2\" type=\"double\"/>\n<entry name=\"c\" id=\"3\" type=\"uint32\"/>\n"), kBoxTable,
     "keep a as it is; add a new field b_2 (double, id 4, version 6) for the new values; keep b as it is; add a new field c "
     "(uint32, "
     "id 5, version 6) for the new values",
     Counted("<entry name=\"a\" id=\"2\" type=\"uint32\"/>\n<entry name=\"b\" id=\"3\" type=\"double\"/>\n"
             "<entry name=\"b_2\" id=\"4\" type=\"double\" version=\"6\"/>\n"
             "<entry name=\"c\" id=\"5\" type=\"uint32\" version=\"6\"/>\n")},
    {"an array with another type and without its counter", "QMX",
     Counted("<entry name=\"a\" id=\"2\" type=\"uint16\" count=\"4\" refer=\"n\"/>\n"),
     Counted("<entry name=\"a\" id=\"2\" type=\"uint32\" count=\"4\"/>\n"), kBoxTable,
     "keep a as it is; add a new field a_2 (uint32 x 4, id 3, version 6) for the new values",
     Counted("<entry name=\"a\" id=\"2\" type=\"uint16\" count=\"4\" refer=\"n\"/>\n"
             "<entry name=\"a_2\" id=\"3\" type=\"uint32\" version=\"6\" count=\"4\"/>\n")},
    {"an array with another type and a new counter", "QMX",
     Counted("<entry name=\"a\" id=\"2\" type=\"uint16\" count=\"4\" refer=\"n\"/>\n"),
     Counted("<entry name=\"m\" id=\"3\" type=\"uint16\" version=\"6\"/>\n"
             "<entry name=\"a\" id=\"2\" type=\"uint32\" count=\"300\" refer=\"m\"/>\n"),
     kBoxTable, "keep a as it is; add a new field a_2 (uint32 x 300, id 4, version 6) for the new values",
     "<entry name=\"a\" id=\"2\" type=\"uint16\" count=\"4\" refer=\"n\"/>\n"
     "<entry name=\"a_2\" id=\"4\" type=\"uint32\" version=\"6\" count=\"300\" refer=\"m\"/>\n"},
    {"a new array with an old counter", "QMX", Counted(""),
     Counted("<entry name=\"a\" id=\"2\" type=\"uint8\" count=\"4\" refer=\"n\"/>\n"), kBoxTable,
     "set the version of a to 6, above the old library's 5; add a new field n_2 (uint8, id 3, version 6) that counts a",
     Counted("<entry name=\"n_2\" id=\"3\" type=\"uint8\" version=\"6\"/>\n"
             "<entry name=\"a\" id=\"2\" type=\"uint8\" version=\"6\" count=\"4\" refer=\"n_2\"/>\n")},
    {"a smaller text with another counter", "TLV",
     Counted("<entry name=\"m\" id=\"3\" type=\"uint8\"/>\n"
             "<entry name=\"a\" id=\"2\" type=\"string\" size=\"9\" count=\"4\" refer=\"n\"/>\n"),
     Counted("<entry name=\"m\" id=\"3\" type=\"uint8\"/>\n"
             "<entry name=\"a\" id=\"2\" type=\"string\" size=\"8\" count=\"4\" refer=\"m\"/>\n"),
     kBoxTable, "leave out the change: keep a at 9 bytes; so that old records read back, also: keep the refer of a: n",
     "<entry name=\"a\" id=\"2\" type=\"string\" size=\"9\" count=\"4\" refer=\"n\"/>\n"},
};

TEST(SuggestionWarnings, SuggestionsLoseNoData) {
  for (const LossRow& row : kLossRows) {
    SCOPED_TRACE(row.label);
    const Answer answer =
        AnswerOf(Library(row.protocol, 5, row.old_structure, row.table), Library(row.protocol, 6, row.new_structure, row.table));
    EXPECT_EQ(Join(answer.suggestions, "; "), row.suggestion);
    EXPECT_THAT(answer.warnings, IsEmpty());
    EXPECT_THAT(answer.text, HasSubstr(row.text));
    EXPECT_TRUE(answer.fixed.size() > 1 || answer.fixed.front() == answer.text) << answer.fixed.front();
  }
}

// Regression: the suggestion for a table that contains a structure changed the keys of another one.
TEST(SuggestionWarnings, SuggestionForOneTableKeepsTheKeysOfOthers) {
  const auto library = [](int version, const std::string& type) {
    return "<metalib name=\"m\" version=\"" + std::to_string(version) + "\">\n<meta name=\"s\"><entry name=\"x\" type=\"" + type +
           "\"/></meta>\n<meta name=\"a\">\n" + kBoxTable + "</meta>\n<meta name=\"t\">\n" + kSplittable +
           "</meta>\n</metalib>\n";
  };
  const Source old_source = ReadSource("old.xml", library(5, "uint32"));
  const Source new_source = ReadSource("new.xml", library(6, "uint64"));
  const Settings settings = ResolveSettings({}, old_source, kTable);
  const SchemaSuggestion suggestion = SuggestSchema(old_source, new_source, {{"a", settings}, {kTable, settings}});
  EXPECT_THAT(suggestion.refused, IsEmpty());
  EXPECT_EQ(suggestion.text, library(6, "uint32"));
}

// --- The law ---

std::string TextOf(const Model& model) {
  std::string text = "<metalib name=\"lib\" version=\"" + std::to_string(model.version) + "\"" +
                     (model.protocol == qmx::Protocol::kTlv ? " protocol=\"TLV\"" : "") + ">\n";
  for (const MetaModel& meta : model.metas) text += *ElementOf(meta, {"", "\n"}) + "\n";
  return text + "</metalib>";
}

// The words of all suggestions. They call a renamed field by its old name.
std::set<std::string> WordsOf(const Changes& changes) {
  std::set<std::string> words;
  std::string word;
  for (const Finding& finding : changes.findings) {
    for (const char c : finding.suggestion + " ") {
      if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_') {
        word += c;
      } else {
        words.insert(std::exchange(word, {}));
      }
    }
  }
  for (const Edit& edit : changes.edits) {
    if (edit.kind == EditKind::kEntryRenamed && words.contains(edit.item)) words.insert(edit.after);
  }
  return words;
}

// The new fields that reports list as blocked by a refused change.
std::set<std::pair<std::string, std::string>> BlockedFields(const Changes& changes) {
  std::set<std::pair<std::string, std::string>> blocked;
  for (std::size_t i = 0; i < changes.edits.size(); ++i) {
    if (changes.status[i] == EditStatus::kBlocked) blocked.emplace(changes.edits[i].meta, changes.edits[i].item);
  }
  return blocked;
}

struct LawCounts {
  std::uint64_t refused = 0;
  std::uint64_t suggested = 0;
  std::uint64_t with_warnings = 0;
  std::uint64_t fixes = 0;
};

// Every field of the author's new schema is in the suggested one, with its type, or a suggestion names it, or it is listed as
// blocked.
void ExpectFieldsOrWords(const Model& wanted, const Model& suggested, const Changes& changes) {
  const std::set<std::string> words = WordsOf(changes);
  const auto blocked = BlockedFields(changes);
  for (const MetaModel& meta : wanted.metas) {
    const auto kept = std::ranges::find(suggested.metas, meta.name, &MetaModel::name);
    if (kept == suggested.metas.end()) continue;  // the field that contained it is another one
    for (const EntryModel& entry : meta.entries) {
      const auto same = std::ranges::find(kept->entries, entry.name, &EntryModel::name);
      const bool is_kept = same != kept->entries.end() && same->type == entry.type;
      const bool is_listed = words.contains(entry.name) || blocked.contains({meta.name, entry.name});
      EXPECT_TRUE(is_kept || is_listed) << meta.name << "." << entry.name << " " << entry.type;
    }
  }
}

void ExpectLaw(const Source& old_source, const Source& new_source, LawCounts& counts) {
  const Settings settings = ResolveSettings({}, old_source, kTable);
  const Verdict whole = RunChecker(old_source.Library(), new_source.Library(), kTable, settings);
  if (!whole.Refused()) return;
  ++counts.refused;
  const Warnings before = WarningsAfter(old_source, new_source, kTable, settings);
  counts.with_warnings += before.empty() ? 0 : 1;
  const auto is_refused = [&](const Source& source) {
    return RunChecker(old_source.Library(), source.Library(), kTable, settings).Refused();
  };
  const auto expect_no_new_warnings = [&](const Source& source) {
    Warnings added;
    std::ranges::set_difference(WarningsAfter(old_source, source, kTable, settings), before, std::inserter(added, added.end()));
    EXPECT_THAT(TextsOf(added), IsEmpty()) << source.text->Bytes();
  };
  const TableContext context{old_source, new_source, kTable, settings};
  const Difference difference(old_source, new_source, kTable);
  Changes changes = FindChanges(context, difference, whole, kMaxFindings);
  SuggestionWork work;
  FindSuggestions(context, difference, changes, true, work);
  for (const Finding& finding : changes.findings) {
    if (finding.fix.empty()) continue;
    const Source fixed = ReadSource("fixed.xml", ApplyReplacements(new_source.text->Bytes(), finding.fix));
    if (is_refused(fixed)) continue;  // other changes are still there
    ++counts.fixes;
    expect_no_new_warnings(fixed);
  }
  const SchemaSuggestion suggestion = SuggestSchema(old_source, new_source, {{kTable, settings}});
  if (!suggestion.refused.empty()) return;
  ++counts.suggested;
  const Source suggested = ReadSource("suggested.xml", suggestion.text);
  EXPECT_FALSE(is_refused(suggested));
  expect_no_new_warnings(suggested);
  ExpectFieldsOrWords(difference.new_model(), ModelOf(suggested, kTable), changes);
}

TEST(SuggestionWarnings, RandomSuggestionsLoseNoData) {
  LawCounts counts;
  const std::uint64_t pairs = TestRandomModels(20261122, 2000, [&](ModelPair& models, std::mt19937_64&) {
    const auto source_of = [&](const char* name, const Model& model) {
      return SourceOfText(name, TextOf(ModelOf(SourceOf(name, model), kTable)));
    };
    const std::optional<Source> old_source = source_of("old.xml", models.old_model);
    const std::optional<Source> new_source = source_of("new.xml", models.new_model);
    if (!old_source || !new_source || !new_source->HasMeta(kTable)) return;
    SCOPED_TRACE(std::string(old_source->text->Bytes()) + "\n-->\n" + std::string(new_source->text->Bytes()));
    ExpectLaw(*old_source, *new_source, counts);
  });
  std::printf("%llu refused, %llu with warnings, %llu suggestions, %llu fixes\n", static_cast<unsigned long long>(counts.refused),
              static_cast<unsigned long long>(counts.with_warnings), static_cast<unsigned long long>(counts.suggested),
              static_cast<unsigned long long>(counts.fixes));
  if (pairs < 2000) return;
  EXPECT_GT(counts.suggested, counts.refused / 2);
  EXPECT_GT(counts.with_warnings, counts.refused / 20);
}

}  // namespace
}  // namespace report_test
