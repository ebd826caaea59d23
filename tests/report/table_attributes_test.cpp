// Attributes of tables as pairs: compares them and changes some of them.
#include "analysis/diff/table_attributes.h"

#include <gmock/gmock.h>

namespace report_test {
namespace {

using korvel::AttributeChange;
using korvel::ChangeAttributes;
using korvel::CompareAttributes;
using korvel::SplitAttributes;
using Text = std::optional<std::string>;

// "ListNum: 4 -> 5", joined by ", ".
std::string Changes(const Text& old_text, const Text& new_text) {
  std::string text;
  for (const AttributeChange& change : CompareAttributes(old_text, new_text)) {
    text += (text.empty() ? "" : ", ") + change.key + ": " + change.before + " -> " + change.after;
  }
  return text;
}

TEST(TableAttributes, SplitIntoPairsWithUniqueKeys) {
  EXPECT_EQ(SplitAttributes(std::nullopt)->size(), 0u);
  EXPECT_EQ(SplitAttributes("")->size(), 0u);
  EXPECT_EQ(SplitAttributes("A=1;B=")->size(), 2u);
  EXPECT_EQ(SplitAttributes("A=1=2")->front().value, "1=2");
  for (const char* text : {"A", "=1", " =1", "A=1;", ";A=1", "A=1;;B=2", "A=1;A=2", "A=1; a =2"}) {
    EXPECT_FALSE(SplitAttributes(text)) << text;
  }
}

TEST(TableAttributes, KnowTheirPlacesInTheText) {
  const Text text = "A=1; B = 2;C=";
  const auto pairs = SplitAttributes(text);
  ASSERT_TRUE(pairs);
  std::string parts;
  for (const korvel::AttributePair& pair : *pairs) {
    parts += "[" + text->substr(pair.span.begin, pair.span.end - pair.span.begin) + "]";
  }
  EXPECT_EQ(parts, "[A=1][ B = 2][C=]");
}

// A text that is constructed to be slow is compared as a whole.
TEST(TableAttributes, WithManyPairsAreOneText) {
  std::string text = "K0=0";
  for (std::size_t i = 1; i < korvel::kMaxAttributePairs; ++i) text += ";K" + std::to_string(i) + "=0";
  EXPECT_TRUE(SplitAttributes(text));
  EXPECT_FALSE(SplitAttributes(text + ";one=more"));
}

TEST(TableAttributes, ChangeKeyByKey) {
  EXPECT_EQ(Changes("A=1", "A=1"), "");
  EXPECT_EQ(Changes("A=1;B=2", "A=3;B=2"), "A: 1 -> 3");
  EXPECT_EQ(Changes(std::nullopt, "A=1;B=2"), "A:  -> 1, B:  -> 2");
  EXPECT_EQ(Changes("A=", "B="), "A: \"\" -> , B:  -> \"\"");
  EXPECT_EQ(Changes("A=1;B=2", "C=3"), "A: 1 -> , B: 2 -> , C:  -> 3");
}

// A key that is only spelled differently is not removed and added.
TEST(TableAttributes, ChangeOfSpellingIsOneChange) {
  EXPECT_EQ(Changes("ListNum=4", " ListNum = 5"), "ListNum: ListNum=4 ->  ListNum = 5");
  EXPECT_EQ(Changes("listnum =4", "ListNum=4"), "listnum: listnum =4 -> ListNum=4");
  EXPECT_EQ(Changes("ListNum=4", "ListNum= 4"), "ListNum: 4 ->  4");
  EXPECT_EQ(Changes("ListNum=4;x=1", "LisNum=5;X=1"), "ListNum: ListNum=4 -> LisNum=5, x: x=1 -> X=1");
  EXPECT_EQ(ChangeAttributes("A=1;B=2", " a =1;B=3", {"A"}), " a =1;B=2");
  EXPECT_EQ(ChangeAttributes(" a =1;B=2", "A=1;B=3", {"B"}), " a =1;B=3");
}

TEST(TableAttributes, ChangesHaveBothPlaces) {
  const auto places = [](const char* old_text, const char* new_text) {
    std::string text;
    for (const AttributeChange& change : CompareAttributes(old_text, new_text)) {
      const auto part = [](const char* of, const qmx::Span& span) {
        return std::string(of).substr(span.begin, span.end - span.begin);
      };
      text += "[" + part(old_text, change.old_part) + "|" + part(new_text, change.new_part) + "]";
    }
    return text;
  };
  EXPECT_EQ(places("A=1;B=2;C=3", "D=4;C=5;A=1"), "[B=2|][C=3|C=5][|D=4]");
  EXPECT_EQ(places("odd", "A=1"), "[|]") << "the text as a whole";
}

TEST(TableAttributes, ChangeAsAWholeIfNoKeyDiffers) {
  EXPECT_EQ(Changes("A=1;B=2", "B=2;A=1"), ": A=1;B=2 -> B=2;A=1");
  EXPECT_EQ(Changes("odd", "A=1"), ": odd -> A=1");
  EXPECT_EQ(Changes(std::nullopt, ""), ":  -> \"\"");
}

TEST(TableAttributes, ChangeInPart) {
  const Text before = "A=1;B=2;C=3";
  const Text after = "D=4;C=5;A=1";
  EXPECT_EQ(Changes(before, after), "B: 2 -> , C: 3 -> 5, D:  -> 4");
  EXPECT_EQ(ChangeAttributes(before, after, {}), before);
  EXPECT_EQ(ChangeAttributes(before, after, {"B"}), "A=1;C=3");
  EXPECT_EQ(ChangeAttributes(before, after, {"C", "D"}), "A=1;B=2;C=5;D=4");
  EXPECT_EQ(ChangeAttributes(before, after, {"B", "C", "D"}), after);
  EXPECT_EQ(ChangeAttributes("A=1", "B=2", {"A"}), std::nullopt);
  EXPECT_EQ(ChangeAttributes("odd", std::nullopt, {""}), std::nullopt);
}

}  // namespace
}  // namespace report_test
