// Tests what can be typed at the places of a text.
#include "lsp/completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lsp/context.h"
#include "lsp/marked_text.h"

namespace {

using korvel::lsp::CompletionFacts;
using korvel::lsp::CompletionItem;
using korvel::lsp::Completions;
using korvel::lsp::CompletionsAt;
using korvel::lsp::Context;
using korvel::lsp::ContextAt;
using korvel::lsp::kMaxCompletions;
using korvel::lsp::Outline;
using lsp_test::InMeta;
using lsp_test::MarkedText;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Place = Context::Place;

Completions At(const MarkedText& at, const CompletionFacts& facts = {}) {
  return CompletionsAt(Outline(at.text), at.offset, facts);
}

std::vector<std::string> Labels(const MarkedText& at, const CompletionFacts& facts = {}) {
  std::vector<std::string> labels;
  for (const CompletionItem& item : At(at, facts).items) labels.push_back(item.label);
  return labels;
}

// The text after the item with that label was taken, as plain text.
std::string Taken(const MarkedText& at, const std::string& label, const CompletionFacts& facts = {}) {
  const Completions completions = At(at, facts);
  for (const CompletionItem& item : completions.items) {
    const auto [begin, end] = completions.replace;
    if (item.label == label) return std::string(at.text).replace(begin, end - begin, item.insert_text);
  }
  return "no " + label;
}

std::string SnippetOf(const MarkedText& at, const std::string& label, const CompletionFacts& facts = {}) {
  for (const CompletionItem& item : At(at, facts).items) {
    if (item.label == label) return item.snippet;
  }
  return "no " + label;
}

// --- Places ---

// The place of the mark, the text before it in the word, and the whole word.
struct Seen {
  Place place;
  std::string prefix;
  std::string word;
  bool operator==(const Seen&) const = default;
};

Seen SeenAt(const std::string& marked) {
  const MarkedText at(marked);
  const Outline outline(at.text);
  const Context context = ContextAt(outline, at.offset);
  return {context.place, std::string(context.prefix), std::string(outline.Piece(context.replace))};
}

TEST(ContextTest, FindsPlaces) {
  EXPECT_EQ(SeenAt("<meta>|</meta>"), (Seen{Place::kContent, "", ""}));
  EXPECT_EQ(SeenAt("<me|ta>"), (Seen{Place::kElementName, "me", "meta"}));
  EXPECT_EQ(SeenAt("<|"), (Seen{Place::kElementName, "", ""}));
  EXPECT_EQ(SeenAt("<meta |>"), (Seen{Place::kAttributeName, "", ""}));
  EXPECT_EQ(SeenAt("<meta na|me='a'>"), (Seen{Place::kAttributeName, "na", "name"}));
  EXPECT_EQ(SeenAt("<meta |name='a'>"), (Seen{Place::kAttributeName, "", ""}));
  EXPECT_EQ(SeenAt("<meta name='a|b'>"), (Seen{Place::kAttributeValue, "a", "ab"}));
  EXPECT_EQ(SeenAt("<meta name='|"), (Seen{Place::kAttributeValue, "", ""}));
  EXPECT_EQ(SeenAt("<primarykey entries='a b|c d'>"), (Seen{Place::kAttributeValue, "b", "bc"}));
  EXPECT_EQ(SeenAt("<primarykey entries='a |'>"), (Seen{Place::kAttributeValue, "", ""}));
  EXPECT_EQ(SeenAt("<meta></me|"), (Seen{Place::kEndTagName, "me", "me"}));
}

TEST(ContextTest, KnowsPlacesWithoutWords) {
  for (const char* marked :
       {"<!-- | -->", "<!-- |", "<meta name='a'|>", "<meta/|>", "<?xml |?>", "<![CDATA[ | ]]>", "<|/meta>"}) {
    EXPECT_EQ(SeenAt(marked).place, Place::kNothing) << marked;
  }
}

// --- Elements ---

TEST(CompletionTest, ListsElementsThatAreAllowed) {
  EXPECT_THAT(Labels(MarkedText("|")), ElementsAre("metalib"));
  EXPECT_THAT(Labels(MarkedText("<metalib>|</metalib>")), ElementsAre("meta"));
  EXPECT_THAT(Labels(InMeta("|")), ElementsAre("entry", "primarykey", "splittablekey", "index"));
  EXPECT_THAT(Labels(InMeta("<e|")), ElementsAre("entry", "primarykey", "splittablekey", "index"));
  EXPECT_THAT(Labels(InMeta("<index name='i'>\n<|\n</index>")), ElementsAre("column"));
  EXPECT_THAT(Labels(InMeta("<entry>|</entry>")), IsEmpty());
  EXPECT_THAT(Labels(InMeta("<other>|</other>")), IsEmpty());
}

TEST(CompletionTest, ListsSingleElementsOnce) {
  EXPECT_THAT(Labels(MarkedText("<metalib/>|")), IsEmpty());
  EXPECT_THAT(Labels(InMeta("<primarykey entries='a'/><|")), ElementsAre("entry", "splittablekey", "index"));
  EXPECT_THAT(Labels(InMeta("<primaryk|ey")), Contains("primarykey"));
}

TEST(CompletionTest, WritesElementsWithRequiredAttributes) {
  EXPECT_EQ(Taken(MarkedText("<metalib>|</metalib>"), "meta"), "<metalib><meta name=\"\">\n</meta></metalib>");
  EXPECT_EQ(SnippetOf(MarkedText("<metalib><m|</metalib>"), "meta"), "meta name=\"$1\">\n  $0\n</meta>");
  EXPECT_EQ(SnippetOf(InMeta("<|"), "entry"), "entry name=\"$1\" type=\"$2\"/>");
  EXPECT_EQ(SnippetOf(InMeta("|"), "primarykey"), "<primarykey entries=\"$1\"/>");
}

TEST(CompletionTest, WritesOnlyTheNameOfAnExistingTag) {
  EXPECT_EQ(Taken(MarkedText("<meta><en| name='a'/></meta>"), "entry"), "<meta><entry name='a'/></meta>");
  EXPECT_EQ(SnippetOf(MarkedText("<meta><en|/></meta>"), "entry"), "");
}

TEST(CompletionTest, NewEntryGetsIdAndVersion) {
  CompletionFacts facts;
  facts.baseline_version = 7;
  facts.used["orders"] = {{"uid"}, {4}};
  EXPECT_EQ(SnippetOf(InMeta("<entry name='uid' id='3'/><|"), "entry", facts),
            "entry name=\"$1\" type=\"$2\" id=\"5\" version=\"8\"/>");
}

TEST(CompletionTest, ClosesTheInnermostElement) {
  EXPECT_EQ(Taken(MarkedText("<metalib><meta></|"), "meta"), "<metalib><meta></meta>");
  EXPECT_EQ(Taken(MarkedText("<metalib><meta></meta|"), "meta"), "<metalib><meta></meta>");
  EXPECT_EQ(Taken(MarkedText("<metalib><meta></m|></metalib>"), "meta"), "<metalib><meta></meta></metalib>");
}

// --- Attributes ---

TEST(CompletionTest, ListsAttributesThatAreNotPresent) {
  EXPECT_THAT(Labels(InMeta("<entry |/>")),
              ElementsAre("name", "type", "id", "version", "size", "count", "refer", "customattr2", "desc"));
  EXPECT_THAT(Labels(InMeta("<entry count='1' | name='a'/>")),
              ElementsAre("type", "id", "version", "size", "refer", "customattr2", "desc"));
  EXPECT_THAT(Labels(InMeta("<entry name='a' ty|/>")), Contains("type"));
  EXPECT_THAT(Labels(MarkedText("<other |>")), IsEmpty());
}

TEST(CompletionTest, ListsRequiredAttributesFirst) {
  EXPECT_THAT(Labels(InMeta("<entry name='a' type='string' |/>")),
              ElementsAre("size", "id", "version", "count", "refer", "customattr2", "desc"));
  EXPECT_THAT(Labels(InMeta("<entry name='a' type='int8' |/>")), Not(Contains("size")));
  EXPECT_THAT(Labels(MarkedText("<metalib protocol='TLV'><meta><entry desc='' |/></meta></metalib>")),
              ElementsAre("name", "type", "id", "version", "size", "count", "refer", "customattr2"));
}

TEST(CompletionTest, WritesAttributesWithTheirQuotes) {
  EXPECT_EQ(Taken(MarkedText("<meta na|>"), "name"), "<meta name=\"\">");
  EXPECT_EQ(SnippetOf(MarkedText("<meta |>"), "kind"), "kind=\"$1\"");
  EXPECT_EQ(Taken(MarkedText("<meta n|ane='a'>"), "name"), "<meta name='a'>");
  EXPECT_EQ(Taken(InMeta("<entry id='4'/><entry name='b' |/>"), "id"), InMeta("<entry id='4'/><entry name='b' id=\"5\"|/>").text);
}

// --- Values ---

TEST(CompletionTest, ListsChoices) {
  EXPECT_THAT(Labels(MarkedText("<metalib protocol='|'>")), ElementsAre("QMX", "TLV"));
  EXPECT_THAT(Labels(InMeta("<index><column desc='|'/></index>")), ElementsAre("true", "false"));
  EXPECT_THAT(Labels(InMeta("<entry desc='|'/>")), IsEmpty());
  EXPECT_THAT(Labels(InMeta("<entry other='|'/>")), IsEmpty());
}

TEST(CompletionTest, WritesMissingQuotes) {
  EXPECT_EQ(Taken(MarkedText("<metalib protocol='|"), "TLV"), "<metalib protocol='TLV'");
  EXPECT_EQ(Taken(MarkedText("<metalib protocol=|>"), "TLV"), "<metalib protocol=\"TLV\">");
  EXPECT_EQ(Taken(MarkedText("<metalib protocol='|'>"), "TLV"), "<metalib protocol='TLV'>");
}

const char* const kNested =
    "<metalib><meta name='a'><entry name='x' type='b'/></meta><meta name='b'><entry name='x' type='c'/></meta>"
    "<meta name='c'><entry name='x' type='TYPE'/></meta><meta name='d'><entry name='x' type='int8'/></meta>"
    "<meta name='int8'/><meta name='d'/><meta name='t'><primarykey entries='x'/></meta></metalib>";

TEST(CompletionTest, ListsTypesThatDoNotContainTheStructure) {
  std::string text = kNested;
  text.replace(text.find("TYPE"), 4, "|");
  EXPECT_THAT(Labels(MarkedText(text)), ElementsAre("int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64",
                                                    "float", "double", "bool", "datetime", "string", "bytes", "d", "t"));
}

TEST(CompletionTest, ListsEntriesThatTheKeyDoesNotHaveYet) {
  const std::string entries = "<entry name='a'/><entry name='b'/><entry name='b'/><entry name=''/><entry name='c'/>";
  EXPECT_THAT(Labels(InMeta(entries + "<primarykey entries='|'/>")), ElementsAre("a", "b", "c"));
  EXPECT_THAT(Labels(InMeta(entries + "<primarykey entries='b |'/>")), ElementsAre("a", "c"));
  EXPECT_THAT(Labels(InMeta(entries + "<primarykey entries='b| c'/>")), ElementsAre("a", "b"));
  EXPECT_THAT(Labels(InMeta(entries + "<index><column entry='a'/><column entry='|'/></index>")), ElementsAre("b", "c"));
  EXPECT_THAT(Labels(InMeta(entries + "<index><column entry='a'/><column entry='b|'/></index>")), ElementsAre("b", "c"));
}

TEST(CompletionTest, ReplacesOnlyTheWordOfAList) {
  EXPECT_EQ(Taken(InMeta("<entry name='uid'/><primarykey entries='a u|x c'/>"), "uid"),
            InMeta("<entry name='uid'/><primarykey entries='a uid| c'/>").text);
}

TEST(CompletionTest, ListsEarlierEntriesThatCanBeCounters) {
  EXPECT_THAT(Labels(InMeta(
                  "<entry name='a' type='uint8'/><entry name='b' type='string'/><entry name='c' type='int64' count='1'/>"
                  "<entry name='d' type='int8' count='2'/><entry name='e' type='int8' refer='|'/><entry name='f' type='int8'/>")),
              ElementsAre("a", "c"));
}

TEST(CompletionTest, ShowsWhatAnEntryIs) {
  const Completions completions = At(InMeta("<entry name='a' id='1' type='uint8' desc='the user'/><primarykey entries='|'/>"));
  ASSERT_EQ(completions.items.size(), 1U);
  EXPECT_EQ(completions.items[0].detail, "uint8, id 1");
  EXPECT_EQ(completions.items[0].documentation, "the user");
}

// The documentation of the item with that label.
std::string DocumentationOf(const MarkedText& at, const std::string& label) {
  for (const CompletionItem& item : At(at).items) {
    if (item.label == label) return item.documentation;
  }
  return "no " + label;
}

TEST(CompletionTest, ShowsTheDocumentationOfTheFormat) {
  const qmx::ElementForm& entry = *qmx::FindElement("entry");
  EXPECT_EQ(DocumentationOf(InMeta("<|"), "entry"), entry.doc);
  EXPECT_EQ(DocumentationOf(InMeta("<entry |/>"), "refer"), entry.Find("refer")->doc);
  const qmx::AttributeForm& protocol = *qmx::FindElement("metalib")->Find("protocol");
  EXPECT_EQ(DocumentationOf(MarkedText("<metalib protocol='|'>"), "TLV"), protocol.choices[1].doc);
}

TEST(CompletionTest, NextIdIsAboveAllThatWereUsed) {
  const std::string entries = "<entry name='a' id='3'/><entry name='b' id='9'/>";
  EXPECT_THAT(Labels(InMeta("<entry name='a' id='|'/>")), ElementsAre("1"));
  EXPECT_THAT(Labels(InMeta(entries + "<entry id='|'/>")), ElementsAre("10"));
  EXPECT_THAT(Labels(InMeta("<entry id='|'/>" + entries)), ElementsAre("10"));
  EXPECT_THAT(Labels(InMeta("<entry id='3'/><entry id='9|'/>")), ElementsAre("4"));
  CompletionFacts facts;
  facts.used["orders"].ids = {2, 12};
  facts.used["other"].ids = {99};
  EXPECT_THAT(Labels(InMeta(entries + "<entry id='|'/>"), facts), ElementsAre("13"));
  EXPECT_THAT(Labels(InMeta("<entry id='2147483647'/><entry id='|'/>")), IsEmpty());
}

TEST(CompletionTest, NewEntryNeedsTheVersionOfTheLibrary) {
  CompletionFacts facts;
  EXPECT_THAT(Labels(InMeta("<entry name='a' version='|'/>")), ElementsAre("7"));
  facts.baseline_version = 6;
  EXPECT_THAT(Labels(InMeta("<entry name='a' version='|'/>"), facts), ElementsAre("7"));
  facts.baseline_version = 7;
  EXPECT_THAT(Labels(InMeta("<entry name='a' version='|'/>"), facts), ElementsAre("8"));
  facts.used["orders"].names = {"a"};
  EXPECT_THAT(Labels(InMeta("<entry name='a' version='|'/>"), facts), IsEmpty());
  EXPECT_THAT(Labels(MarkedText("<entry version='|'/>")), IsEmpty());
}

TEST(CompletionTest, NextVersionOfLibraryIsAboveTheBaseline) {
  CompletionFacts facts;
  EXPECT_THAT(Labels(MarkedText("<metalib version='|'>"), facts), IsEmpty());
  facts.baseline_version = 41;
  EXPECT_THAT(Labels(MarkedText("<metalib version='|'>"), facts), ElementsAre("42"));
  facts.baseline_version = 2147483647;
  EXPECT_THAT(Labels(MarkedText("<metalib version='|'>"), facts), IsEmpty());
}

TEST(CompletionTest, ListsALimitedNumber) {
  std::string entries;
  for (int i = 0; i < 3000; ++i) entries += "<entry name='f" + std::to_string(i) + "'/>";
  const Completions all = At(InMeta(entries + "<primarykey entries='|'/>"));
  EXPECT_EQ(all.items.size(), kMaxCompletions);
  EXPECT_TRUE(all.is_incomplete);
  EXPECT_THAT(Labels(InMeta(entries + "<primarykey entries='f299|'/>")),
              ElementsAre("f299", "f2990", "f2991", "f2992", "f2993", "f2994", "f2995", "f2996", "f2997", "f2998", "f2999"));
}

}  // namespace
