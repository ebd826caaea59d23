// Suggestions: what is suggested for which change, that the checker allows it, and that a fix makes exactly this change.
#include "analysis/suggest/suggestions.h"
#include "analysis/findings/run_checker.h"

#include <gmock/gmock.h>

#include <functional>

#include "analysis/findings/findings.h"
#include "analysis/suggest/element_text.h"
#include "analysis/suggest/suggest.h"
#include "read_source.h"
#include "schema/source.h"

namespace report_test {
namespace {

const std::string kTable = "t";

using namespace korvel;

struct Sides {
  std::string old_fields;
  std::string new_fields;
  std::string protocol = "QMX";
  int old_version = 5;
  int new_version = 6;
  std::string old_attributes = {};
  std::string new_attributes = {};
  PartialSettings given = {};
};

std::string Library(int version, const std::string& protocol, const std::string& attributes, const std::string& fields) {
  return "<metalib name=\"m\" version=\"" + std::to_string(version) + "\" protocol=\"" + protocol + "\">\n" +
         "<meta name=\"box\"><entry name=\"a\" id=\"1\" type=\"int8\"/></meta>\n" +
         "<meta name=\"bag\"><entry name=\"a\" id=\"1\" type=\"int8\"/></meta>\n<meta name=\"t\"" +
         (attributes.empty() ? "" : " customattr=\"" + attributes + "\"") +
         ">\n<entry name=\"uid\" id=\"1\" type=\"uint32\"/>\n" + fields + "<primarykey entries=\"uid\"/>\n</meta>\n</metalib>\n";
}

// The findings of a change, and its fixed versions.
struct Fixed {
  Changes changes;
  Suggestion suggestion;
  std::vector<std::string> fixed;  // for each finding, the file after its fix
};

Fixed Fix(const Sides& sides) {
  const Source old_source =
      ReadSource("old.xml", Library(sides.old_version, sides.protocol, sides.old_attributes, sides.old_fields));
  const Source new_source =
      ReadSource("new.xml", Library(sides.new_version, sides.protocol, sides.new_attributes, sides.new_fields));
  const Settings settings = ResolveSettings(sides.given, old_source, "t");
  const Verdict whole = RunChecker(old_source.Library(), new_source.Library(), "t", settings);
  const TableContext context{old_source, new_source, kTable, settings};
  const Difference difference(old_source, new_source, "t");
  Fixed fixed;
  fixed.changes = FindChanges(context, difference, whole, kMaxFindings);
  SuggestionWork work;
  fixed.suggestion = Suggest(context, difference, fixed.changes, WarningsOf(context, &fixed.changes), work.search);
  FindSuggestions(context, difference, fixed.changes, true, work);
  const auto built = Build(fixed.suggestion.model);
  EXPECT_TRUE(built);
  const bool refused = RunChecker(old_source.Library(), built->get(), "t", settings).Refused();
  EXPECT_EQ(fixed.suggestion.allowed, !refused) << "the verdict on the suggestion";
  for (const Finding& finding : fixed.changes.findings) {
    fixed.fixed.push_back(ApplyReplacements(new_source.text->Bytes(), finding.fix));
    EXPECT_FALSE(finding.suggestion.empty());
  }
  return fixed;
}

struct AlternativeRow {
  const char* label;
  Sides sides;
  bool has_fix;
  const char* suggestion;
  const char* fixed;  // part of the fixed file
};

const AlternativeRow kAlternativeRows[] = {
    {"an added field without a version",
     {"", "<entry name=\"note\" id=\"2\" type=\"int8\"/>\n"},
     true,
     "set the version of note to 6, above the old library's 5",
     "<entry name=\"note\" id=\"2\" type=\"int8\" version=\"6\"/>\n"},
    {"the library keeps its version",
     {"", "<entry name=\"note\" id=\"2\" type=\"int8\" version=\"5\"/>\n", "QMX", 5, 5},
     true,
     "set the version of note to 6, above the old library's 5",
     "<metalib name=\"m\" version=\"6\" protocol=\"QMX\">"},
    {"a name with illegal bytes",
     {"", "<entry name=\"net price\" id=\"2\" type=\"int8\" version=\"6\"/>\n"},
     true,
     "rename it to net_price",
     "<entry name=\"net_price\" id=\"2\""},
    {"a name that starts with a digit",
     {"", "<entry name=\"2nd\" id=\"2\" type=\"int8\" version=\"6\"/>\n"},
     true,
     "rename it to _2nd",
     "name=\"_2nd\""},
    {"an empty name",
     {"", "<entry name=\"\" id=\"2\" type=\"int8\" version=\"6\"/>\n"},
     true,
     "rename it to field",
     "name=\"field\""},
    {"a name that is too long, whose shortened form is used",
     {"<entry name=\"nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn\" id=\"2\" type=\"int8\"/>\n",
      "<entry name=\"nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn\" id=\"2\" type=\"int8\"/>\n"
      "<entry name=\"nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn\" id=\"3\" type=\"int8\" version=\"6\"/>\n"},
     true,
     "rename it to nnnnnnnnnnnnnnnnnnnnnnnnnnnnn_2",
     "name=\"nnnnnnnnnnnnnnnnnnnnnnnnnnnnn_2\" id=\"3\""},
    {"both a name and a version",
     {"", "<entry name=\"a-b\" id=\"2\" type=\"int8\"/>\n"},
     true,
     "set the version of a-b to 6, above the old library's 5; rename it to a_b",
     "<entry name=\"a_b\" id=\"2\" type=\"int8\" version=\"6\"/>\n"},
    {"another type of a field",
     {"<entry name=\"zone\" id=\"2\" type=\"uint32\"/>\n", "<entry name=\"zone\" id=\"2\" type=\"int64\"/>\n"},
     true,
     "keep zone as it is; add a new field zone_2 (int64, id 3, version 6) for the new values",
     "<entry name=\"zone\" id=\"2\" type=\"uint32\"/>\n<entry name=\"zone_2\" id=\"3\" type=\"int64\" version=\"6\"/>\n"},
    {"a larger fixed count",
     {"<entry name=\"zone\" id=\"2\" type=\"int8\" count=\"3\"/>\n",
      "<entry name=\"zone\" id=\"2\" type=\"int8\" count=\"4\"/>\n"},
     true,
     "keep zone as it is; add a new field zone_2 (int8 x 4, id 3, version 6) for the new values",
     "<entry name=\"zone_2\" id=\"3\" type=\"int8\" version=\"6\" count=\"4\"/>\n"},
    {"a smaller fixed count",
     {"<entry name=\"zone\" id=\"2\" type=\"int8\" count=\"3\"/>\n",
      "<entry name=\"zone\" id=\"2\" type=\"int8\" count=\"2\"/>\n"},
     false,
     "leave out the change: keep zone at a count of 3",
     "<entry name=\"zone\" id=\"2\" type=\"int8\" count=\"3\"/>\n"},
    {"another structure",
     {"<entry name=\"in\" id=\"2\" type=\"box\"/>\n", "<entry name=\"in\" id=\"2\" type=\"bag\"/>\n"},
     true,
     "keep in as it is; add a new field in_2 (bag, id 3, version 6) for the new values",
     "<entry name=\"in\" id=\"2\" type=\"box\"/>\n"},
    {"a smaller text",
     {"<entry name=\"s\" id=\"2\" type=\"string\" size=\"9\"/>\n", "<entry name=\"s\" id=\"2\" type=\"string\" size=\"8\"/>\n"},
     false,
     "leave out the change: keep s at 9 bytes",
     "size=\"9\""},
    {"a removed field",
     {"<entry name=\"s\" id=\"2\" type=\"int8\"/>\n", ""},
     false,
     "leave out the change: keep field s; programs that no longer need it can stop writing it",
     "<entry name=\"s\" id=\"2\" type=\"int8\"/>\n"},
    {"a renamed field",
     {"<entry name=\"s\" id=\"2\" type=\"int8\"/>\n", "<entry name=\"r\" id=\"2\" type=\"int8\"/>\n", "TLV"},
     false,
     "leave out the change: keep the name s",
     "<entry name=\"s\" id=\"2\" type=\"int8\"/>\n"},
    {"a misspelled field",
     {"<entry name=\"stock\" type=\"int8\"/>\n", "<entry name=\"stokc\" type=\"int8\"/>\n"},
     false,
     "renamed? fields are matched by name; keep stock instead of stokc",
     "<entry name=\"stock\" type=\"int8\"/>\n"},
    {"a moved field",
     {"<entry name=\"s\" id=\"2\" type=\"int8\"/>\n<entry name=\"r\" id=\"3\" type=\"int8\"/>\n",
      "<entry name=\"r\" id=\"3\" type=\"int8\"/>\n<entry name=\"s\" id=\"2\" type=\"int8\"/>\n"},
     false,
     "leave out the change: leave field r where it is",
     "<entry name=\"s\" id=\"2\" type=\"int8\"/>\n<entry name=\"r\" id=\"3\" type=\"int8\"/>\n"},
    {"an index",
     {"", "<index name=\"i\"><column entry=\"uid\"/></index>\n"},
     false,
     "leave out the change: do not add index i; a new table may have it",
     "<primarykey entries=\"uid\"/>\n</meta>"},
    {"a number of list slots that differs from the server's",
     {"", "", "QMX", 5, 6, "", "TableType=LIST;ListNum=12", {1, std::nullopt, std::nullopt, std::nullopt, 10}},
     true,
     "set ListNum=10, the value on the server",
     "customattr=\"TableType=LIST;ListNum=10\""},
    {"a misspelled table type that is not the one on the server",
     {"", "", "QMX", 5, 6, "", "TableTyp=LIST;ListNum=8"},
     false,
     "leave out the change: do not add TableTyp to table t",
     "customattr=\"ListNum=8\""},
    {"a misspelled table type",
     {"", "", "QMX", 5, 6, "", "TableTyp=LIST;ListNum=8", {1, std::nullopt, std::nullopt, std::nullopt, 8}},
     true,
     "write 'TableType=LIST'",
     "customattr=\"TableType=LIST;ListNum=8\""},
    {"an invalid attribute",
     {"", "", "QMX", 5, 6, "TableType=GENERIC;DataProtocol=QMX", "odd"},
     false,
     "leave out the change: keep the attributes of table t: TableType=GENERIC;DataProtocol=QMX",
     "customattr=\"TableType=GENERIC;DataProtocol=QMX\""},
    {"a table type where none was declared",
     {"", "", "QMX", 5, 6, "", "TableType=GENERIC", {1, std::nullopt, std::nullopt, std::nullopt, 10}},
     false,
     "leave out the change: do not add TableType to table t",
     "<meta name=\"t\">"},
    {"a splittable key",
     {"", "<splittablekey entries=\"uid\"/>\n"},
     false,
     "leave out the change: do not add a splittable key; a new table may have one",
     "<primarykey entries=\"uid\"/>\n</meta>"},
    {"a second attribute",
     {"<entry name=\"s\" id=\"2\" type=\"int8\"/>\n", "<entry name=\"s\" id=\"2\" type=\"int8\" customattr2=\"pii\"/>\n"},
     false,
     "leave out the change: do not add a customattr2 to s",
     "<entry name=\"s\" id=\"2\" type=\"int8\"/>\n"},
    {"fewer slots",
     {"", "", "QMX", 5, 6, "TableType=LIST;ListNum=12", "TableType=LIST;ListNum=10"},
     false,
     "leave out the change: keep ListNum of table t: 12",
     "customattr=\"TableType=LIST;ListNum=12\""},
};

TEST(Suggestions, AreExpectedForEachChange) {
  for (const AlternativeRow& row : kAlternativeRows) {
    SCOPED_TRACE(row.label);
    const Fixed fixed = Fix(row.sides);
    ASSERT_FALSE(fixed.changes.findings.empty());
    for (const Finding& finding : fixed.changes.findings) {
      EXPECT_EQ(finding.suggestion, row.suggestion);
      EXPECT_EQ(finding.has_fix, row.has_fix);
    }
    EXPECT_NE(fixed.fixed.front().find(row.fixed), std::string::npos) << fixed.fixed.front();
    EXPECT_TRUE(fixed.suggestion.allowed);
  }
}

TEST(Suggestions, AllowedChangeIsItsOwnSuggestion) {
  const Fixed fixed = Fix({"", "<entry name=\"note\" id=\"2\" type=\"int8\" version=\"6\"/>\n"});
  EXPECT_TRUE(fixed.changes.findings.empty());
  EXPECT_TRUE(fixed.suggestion.allowed);
  EXPECT_EQ(fixed.suggestion.model.metas.front().entries.back().name, "note");
}

// A library with "t" and another table "u" with one field.
std::string TwoTables(const std::string& protocol, const std::string& fields, const std::string& other_id) {
  return "<metalib name=\"m\" version=\"5\" protocol=\"" + protocol +
         "\">\n<meta name=\"t\"><entry name=\"uid\" id=\"1\" type=\"int8\"/>" + fields +
         "<primarykey entries=\"uid\"/></meta>\n<meta name=\"u\"><entry name=\"uid\" " + other_id +
         " type=\"int8\"/><primarykey entries=\"uid\"/></meta>\n</metalib>\n";
}

// The findings of "t" with suggestions.
Changes SuggestionsFor(const std::string& before, const Source& new_source) {
  const Source old_source = ReadSource("old.xml", before);
  const Settings settings = ResolveSettings({}, old_source, "t");
  const Verdict whole = RunChecker(old_source.Library(), new_source.Library(), "t", settings);
  const TableContext context{old_source, new_source, kTable, settings};
  const Difference difference(old_source, new_source, "t");
  Changes changes = FindChanges(context, difference, whole, kMaxFindings);
  SuggestionWork work;
  FindSuggestions(context, difference, changes, true, work);
  return changes;
}

// If the protocol is restored to TLV while a field of any table has no id, the file is not a valid schema file.
TEST(Suggestions, UnreadableFixIsNotOffered) {
  const Source without_ids = ReadSource("new.xml", TwoTables("QMX", "", ""));
  const Changes changes = SuggestionsFor(TwoTables("TLV", "", "id=\"1\""), without_ids);
  ASSERT_EQ(changes.findings.size(), 1u);
  EXPECT_EQ(changes.findings[0].verdict.rule, "library.tlv-to-qmx");
  EXPECT_THAT(changes.findings[0].fix, testing::IsEmpty());
  const Source with_ids = ReadSource("new.xml", TwoTables("QMX", "", "id=\"1\""));
  EXPECT_EQ(SuggestionsFor(TwoTables("TLV", "", "id=\"1\""), with_ids).findings.at(0).fix.size(), 1u);
}

TEST(Suggestions, FieldWithoutIdGetsOneInTlv) {
  const Source new_source =
      ReadSource("new.xml", TwoTables("QMX", "<entry name=\"n\" type=\"int8\" version=\"6\"/>", "id=\"1\""));
  const Source old_source = ReadSource("old.xml", TwoTables("TLV", "", "id=\"1\""));
  const Settings settings = ResolveSettings({}, old_source, "t");
  const SchemaSuggestion suggestion = SuggestSchema(old_source, new_source, {{"t", settings}});
  EXPECT_THAT(suggestion.refused, testing::IsEmpty());
  EXPECT_THAT(suggestion.text, testing::HasSubstr("protocol=\"TLV\""));
  EXPECT_THAT(suggestion.text, testing::HasSubstr("<entry name=\"n\" id=\"2\" type=\"int8\" version=\"6\"/>"));
}

// New fields cannot all be left out if no old field is left.
TEST(Suggestions, FixLeavesNoStructureWithoutFields) {
  const auto library = [](const std::string& field) {
    return "<metalib name=\"m\" version=\"5\" protocol=\"QMX\">\n<meta name=\"t\"><entry name=\"" + field +
           "\" type=\"int8\" version=\"6\"/><primarykey entries=\"" + field + "\"/></meta>\n</metalib>\n";
  };
  const Source new_source = ReadSource("new.xml", library("9b"));
  for (const Finding& finding : SuggestionsFor(library("a"), new_source).findings) {
    EXPECT_NE(SourceOfText("fixed.xml", ApplyReplacements(new_source.text->Bytes(), finding.fix)), std::nullopt)
        << finding.verdict.text;
  }
}

// In TLV, ids are permanent.
TEST(Suggestions, ReusedIdIsRestoredToItsField) {
  const Fixed fixed = Fix({"<entry name=\"leader\" id=\"3\" type=\"uint64\"/>\n",
                           "<entry name=\"motto\" id=\"3\" type=\"string\" size=\"9\" version=\"6\"/>\n"
                           "<entry name=\"leader\" id=\"6\" type=\"uint64\"/>\n",
                           "TLV"});
  ASSERT_TRUE(fixed.suggestion.allowed);
  const std::vector<EntryModel> expected = {{.name = "uid", .type = "uint32", .id = 1},
                                            {.name = "leader", .type = "uint64", .id = 3},
                                            {.name = "motto", .type = "string", .size = 9, .id = 7, .version = 6}};
  EXPECT_EQ(fixed.suggestion.model.metas.front().entries, expected);
}

TEST(Suggestions, BlockedFieldIsAllowedWithTheAlternative) {
  const Fixed fixed = Fix({"",
                           "<entry name=\"n\" id=\"2\" type=\"uint32\"/>\n"
                           "<entry name=\"list\" id=\"3\" type=\"int8\" count=\"9\" refer=\"n\"/>\n"});
  ASSERT_TRUE(fixed.suggestion.allowed);
  const auto& entries = fixed.suggestion.model.metas.front().entries;
  ASSERT_EQ(entries.size(), 3u);
  EXPECT_EQ(entries[2].refer, "n");
  EXPECT_EQ(entries[2].version, 6);
}

// Regression: the new array had the counter of the old one, so that only arrays of the same length could be stored.
TEST(Suggestions, NewArrayHasACounterOfItsOwn) {
  const Fixed fixed =
      Fix({"<entry name=\"n\" id=\"2\" type=\"uint16\"/>\n"
           "<entry name=\"list\" id=\"3\" type=\"int8\" count=\"9\" refer=\"n\"/>\n",
           "<entry name=\"n\" id=\"2\" type=\"uint16\"/>\n"
           "<entry name=\"list\" id=\"3\" type=\"int32\" count=\"9\" refer=\"n\"/>\n"});
  ASSERT_TRUE(fixed.suggestion.allowed);
  const std::vector<EntryModel> expected = {
      {.name = "uid", .type = "uint32", .id = 1},
      {.name = "n", .type = "uint16", .id = 2},
      {.name = "list", .type = "int8", .id = 3, .count = 9, .refer = "n"},
      {.name = "n_2", .type = "uint16", .id = 5, .version = 6},
      {.name = "list_2", .type = "int32", .id = 4, .version = 6, .count = 9, .refer = "n_2"}};
  EXPECT_EQ(fixed.suggestion.model.metas.front().entries, expected);
  EXPECT_EQ(
      fixed.changes.findings.front().suggestion,
      "keep list as it is; add a new field list_2 (int32 x 9, id 4, version 6) for the new values, and a new field n_2 (uint16, "
      "id 5, version 6) that counts them");
}

TEST(Suggestions, EachFixAppliesOneAlternative) {
  const Fixed fixed = Fix({"<entry name=\"s\" id=\"2\" type=\"int16\"/>\n",
                           "<entry name=\"s\" id=\"2\" type=\"int8\"/>\n<entry name=\"n\" id=\"3\" type=\"int8\"/>\n"});
  ASSERT_EQ(fixed.changes.findings.size(), 2u);
  EXPECT_NE(fixed.fixed[0].find("name=\"s\" id=\"2\" type=\"int16\""), std::string::npos) << fixed.fixed[0];
  EXPECT_NE(fixed.fixed[0].find("<entry name=\"n\" id=\"3\" type=\"int8\"/>"), std::string::npos) << fixed.fixed[0];
  EXPECT_NE(fixed.fixed[1].find("name=\"s\" id=\"2\" type=\"int8\""), std::string::npos) << fixed.fixed[1];
  EXPECT_NE(fixed.fixed[1].find("<entry name=\"n\" id=\"3\" type=\"int8\" version=\"6\"/>"), std::string::npos) << fixed.fixed[1];
}

// An added field would need a larger version.
TEST(Suggestions, LargestVersionCannotBeExceeded) {
  const Fixed fixed = Fix({"", "<entry name=\"n\" id=\"2\" type=\"int8\"/>\n", "QMX", 2147483647, 2147483647});
  ASSERT_EQ(fixed.changes.findings.size(), 1u);
  EXPECT_EQ(fixed.changes.findings[0].suggestion, "leave out the change: do not add field n");
  EXPECT_FALSE(fixed.changes.findings[0].has_fix);
  EXPECT_TRUE(fixed.suggestion.allowed);
}

TEST(Suggestions, PreexistingRefusalHasNoSuggestion) {
  const std::string field = "<entry name=\"a-b\" id=\"2\" type=\"int8\"/>\n";
  const Fixed fixed = Fix({field, field + "<entry name=\"n\" id=\"3\" type=\"int8\"/>\n"});
  EXPECT_FALSE(fixed.suggestion.allowed);
  bool found = false;
  for (const Finding& finding : fixed.changes.findings) {
    EXPECT_FALSE(finding.has_fix) << "nothing can be verified on top of it";
    if (!finding.edits.empty()) continue;
    found = true;
    EXPECT_TRUE(finding.suggestion.starts_with("no allowed alternative: ")) << finding.suggestion;
  }
  EXPECT_TRUE(found);
}

TEST(Suggestions, RemovedTableIsRestored) {
  const Source old_source = ReadSource("old.xml", Library(5, "QMX", "", ""));
  const Source new_source = ReadSource(
      "new.xml",
      "<metalib name=\"m\" version=\"6\" protocol=\"QMX\"><meta name=\"s\"><entry name=\"a\" type=\"int8\"/></meta></metalib>");
  const Settings settings = ResolveSettings({}, old_source, "t");
  const Verdict whole = RunChecker(old_source.Library(), new_source.Library(), "t", settings);
  const TableContext context{old_source, new_source, kTable, settings};
  Changes changes = FindRemovedTable(context, whole);
  const Suggestion suggestion = FindSuggestionsForRemovedTable(context, "", changes);
  EXPECT_TRUE(suggestion.allowed);
  EXPECT_EQ(suggestion.model.version, 6);
  EXPECT_EQ(changes.findings.at(0).suggestion, "no allowed alternative: keep table t, even if it is unused");
  EXPECT_FALSE(changes.findings[0].has_fix);
}

}  // namespace
}  // namespace report_test
