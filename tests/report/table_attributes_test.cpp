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
  for (const char* text : {"A", "=1", "A=1;", ";A=1", "A=1;;B=2", "A=1;A=2"}) EXPECT_FALSE(SplitAttributes(text)) << text;
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
