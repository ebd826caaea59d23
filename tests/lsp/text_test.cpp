#include "lsp/text.h"

#include <gtest/gtest.h>

#include <string>

namespace korvel::lsp {
namespace {

constexpr char kFourBytes[] = "\xF0\x9F\x9A\x97";  // U+1F697: two UTF-16 code units
constexpr char kThreeBytes[] = "\xE2\x82\xAC";     // U+20AC: one

void ExpectPosition(const Text& text, std::size_t offset, std::size_t line, std::size_t character) {
  const Position position = text.At(offset);
  EXPECT_EQ(position.line, line) << "offset " << offset;
  EXPECT_EQ(position.character, character) << "offset " << offset;
  EXPECT_EQ(text.OffsetOf(position), offset);
}

TEST(TextTest, CountsUtf16CodeUnits) {
  const Text text(std::string("a") + kFourBytes + "b" + kThreeBytes + "c\n" + kFourBytes + "d");
  ExpectPosition(text, 0, 0, 0);
  ExpectPosition(text, 1, 0, 1);
  ExpectPosition(text, 5, 0, 3);   // behind the character of 4 bytes
  ExpectPosition(text, 6, 0, 4);   // behind 'b'
  ExpectPosition(text, 9, 0, 5);   // behind the character of 3 bytes
  ExpectPosition(text, 11, 1, 0);  // behind the line end
  ExpectPosition(text, 15, 1, 2);
  ExpectPosition(text, 16, 1, 3);
}

TEST(TextTest, TakesAnOffsetInsideACharacterAsItsBegin) {
  const Text text(std::string("a") + kFourBytes);
  EXPECT_EQ(text.At(3).character, 1U);
  EXPECT_EQ(text.OffsetOf(Position{0, 2}), 1U);  // between its two code units
}

TEST(TextTest, TakesEachByteThatIsNotUtf8AsACharacter) {
  const Text text("\xFF\xC3z");
  ExpectPosition(text, 1, 0, 1);
  ExpectPosition(text, 2, 0, 2);
  ExpectPosition(text, 3, 0, 3);
}

TEST(TextTest, KnowsAllLineEnds) {
  const Text text("a\r\nb\rc\nd");
  ExpectPosition(text, 3, 1, 0);
  ExpectPosition(text, 5, 2, 0);
  ExpectPosition(text, 7, 3, 0);
  EXPECT_EQ(text.OffsetOf(Position{0, 9}), 1U);  // in front of the line end
}

TEST(TextTest, ClampsPositionsBehindTheText) {
  const Text text("ab\ncd");
  EXPECT_EQ(text.OffsetOf(Position{1, 100}), 5U);
  EXPECT_EQ(text.OffsetOf(Position{100, 0}), 5U);
  EXPECT_EQ(text.At(100).character, 2U);
  EXPECT_EQ(Text("").OffsetOf(Position{0, 1}), 0U);
}

// Regression: each conversion counted from the begin of its line. This takes hours if it still does.
TEST(TextTest, ConvertsEveryPositionOfALongLine) {
  std::string line = "\xEF\xBB\xBF";
  while (line.size() < 2'000'000) line += std::string("ab") + kFourBytes + "\xFF" + kThreeBytes;
  const Text text(line + "\r\n" + line + "\n");
  std::size_t units = 1;
  std::size_t column = 2;
  for (std::size_t offset = 3; offset < line.size(); offset += 10, units += 6, column += 5) {
    ASSERT_EQ(text.At(offset).character, units);
    ASSERT_EQ(text.OffsetOf(Position{0, units}), offset);
    ASSERT_EQ(text.At(line.size() + 2 + offset + 7).character, units + 5);
    ASSERT_EQ(text.OffsetOf(Position{1, units + 3}), line.size() + 2 + offset + 2);  // inside of the character of 4 bytes
    ASSERT_EQ(text.OffsetOf(qmx::LineColumn{1, column - 1}), offset);
    ASSERT_EQ(text.OffsetOf(qmx::LineColumn{2, column + 3}), line.size() + 2 + offset + 6);
  }
  EXPECT_EQ(text.OffsetOf(Position{0, line.size()}), line.size());
  EXPECT_EQ(text.OffsetOf(qmx::LineColumn{1, line.size()}), line.size());
}

TEST(TextTest, FindsLinesAndCharactersOfMessages) {
  const Text text(std::string("\xEF\xBB\xBF<a>\n") + kFourBytes + "b");
  EXPECT_EQ(text.OffsetOf(qmx::LineColumn{1, 1}), 3U);  // a byte order mark is no column
  EXPECT_EQ(text.OffsetOf(qmx::LineColumn{2, 2}), 11U);
  EXPECT_EQ(text.OffsetOf(qmx::LineColumn{9, 1}), 12U);
  EXPECT_EQ(text.OffsetOf(qmx::LineColumn{0, 0}), 0U);
}

TEST(TextTest, ReplacesAPiece) {
  Text text("one\ntwo\n");
  text.Replace({3, 4}, "\r\n\r\n");
  EXPECT_EQ(text.bytes(), "one\r\n\r\ntwo\n");
  ExpectPosition(text, 7, 2, 0);
}

}  // namespace
}  // namespace korvel::lsp
