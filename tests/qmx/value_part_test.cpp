// Parts of the value of an attribute, found in the text that was parsed.
#include "qmx/value_part.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The text of bytes [begin, end) of the value; "none" if they are not found.
std::string PartOf(const std::string& value, std::size_t begin, std::size_t end) {
  const std::string text = "<e a='" + value + "'/>";
  const auto span = qmx::FindValuePart(text, {6, 6 + value.size()}, {begin, end});
  return span ? text.substr(span->begin, span->end - span->begin) : "none";
}

TEST(FindValuePart, WithoutReferences) {
  EXPECT_EQ(PartOf("A=1;B=2", 4, 7), "B=2");
  EXPECT_EQ(PartOf("A=1;B=2", 0, 3), "A=1");
  EXPECT_EQ(PartOf("A=\xc3\xa9;B=2", 5, 8), "B=2");
}

TEST(FindValuePart, ReferencesStandForTheirCharacter) {
  EXPECT_EQ(PartOf("A=&amp;&lt;;B=2", 5, 8), "B=2");
  EXPECT_EQ(PartOf("A=&amp;&lt;;B=2", 0, 4), "A=&amp;&lt;");
  EXPECT_EQ(PartOf("A=1&#59;B=&quot;", 4, 7), "B=&quot;");
  EXPECT_EQ(PartOf("A&#x3D;&#x31;&#x3b;B", 4, 5), "B");
  EXPECT_EQ(PartOf("&#233;&#x20AC;&#128512;;B", 10, 11), "B") << "two, three and four bytes of UTF-8";
}

TEST(FindValuePart, LineEndIsOneSpace) {
  EXPECT_EQ(PartOf("A=1;\r\nB=2", 5, 8), "B=2");
  EXPECT_EQ(PartOf("A=1;\n\tB=2", 6, 9), "B=2");
  EXPECT_EQ(PartOf("A=1;\r\nB=2", 4, 8), "\r\nB=2");
}

TEST(FindValuePart, NothingOutsideTheValue) {
  EXPECT_EQ(PartOf("A=1", 0, 4), "none");
  EXPECT_EQ(PartOf("A=1", 4, 5), "none");
  EXPECT_EQ(PartOf("", 0, 1), "none");
}

TEST(FindValuePart, NoPartOfACharacterReference) {
  EXPECT_EQ(PartOf("&#233;B", 1, 3), "none");
  EXPECT_EQ(PartOf("A&#233;", 0, 2), "none");
}

TEST(FindValuePart, StaysInsideMalformedText) {
  for (const char* value : {"&amp", "&#", "&#;", "&#x;", "&#1a;", "&#99999999999;"}) {
    EXPECT_EQ(PartOf(value, 1, 2), "none") << value;
  }
  EXPECT_EQ(qmx::FindValuePart("ab", {5, 9}, {0, 1}), std::nullopt);
}

}  // namespace
