// What is suggested loses no data: no warning that the author's change does not have.
#include <gmock/gmock.h>

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "analysis/findings/findings.h"
#include "analysis/findings/run_checker.h"
#include "analysis/suggest/element_text.h"
#include "analysis/suggest/suggest.h"
#include "analysis/suggest/suggestions.h"
#include "analysis/warnings/warnings.h"
#include "base/text.h"
#include "read_source.h"

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
     "keep a as it is; add a new field z (uint32 x 8, id 3, version 6) for the new values, and a new field n_2 (uint8, id 4, "
     "version 6) that counts them",
     Counted("<entry name=\"a\" id=\"2\" type=\"uint16\" count=\"4\" refer=\"n\"/>\n"
             "<entry name=\"n_2\" id=\"4\" type=\"uint8\" version=\"6\"/>\n"
             "<entry name=\"z\" id=\"3\" type=\"uint32\" version=\"6\" count=\"8\" refer=\"n_2\"/>\n")},
    {"a field with another name and type", "TLV", Counted("<entry name=\"y\" id=\"2\" type=\"uint32\"/>\n"),
     Counted("<entry name=\"z\" id=\"2\" type=\"uint64\"/>\n"), kBoxTable,
     "keep y as it is; add a new field z (uint64, id 3, version 6) for the new values",
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

}  // namespace
}  // namespace report_test
