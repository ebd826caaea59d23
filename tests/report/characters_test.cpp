// Tests characters: length, width, and how they are shown.
#include "base/characters.h"

#include <gtest/gtest.h>

namespace report_test {
namespace {

using korvel::CellsOf;
using korvel::CharacterLength;
using korvel::ValidUtf8;
using korvel::VisibleCharacter;

TEST(Characters, HaveLengthOfUtf8) {
  EXPECT_EQ(CharacterLength("ab"), 1u);
  EXPECT_EQ(CharacterLength("\xc3\xa9x"), 2u);
  EXPECT_EQ(CharacterLength("\xe4\xb8\xad"), 3u);
  EXPECT_EQ(CharacterLength("\xf0\x9f\x98\x80"), 4u);
  EXPECT_EQ(CharacterLength("\xa9x"), 1u) << "a continuation byte without a start";
  EXPECT_EQ(CharacterLength("\xe4\xb8"), 1u) << "a truncated character";
}

TEST(Characters, InvalidUtf8IsReplaced) {
  EXPECT_EQ(ValidUtf8(""), "");
  EXPECT_EQ(ValidUtf8("a\xc3\xa9z"), "a\xc3\xa9z");
  EXPECT_EQ(ValidUtf8("a\xffz\xc3"), "a\xef\xbf\xbdz\xef\xbf\xbd");
  EXPECT_EQ(ValidUtf8("\xed\xa0\x80"), "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd") << "half of a surrogate pair";
}

TEST(Characters, LineBreaksAreEscaped) {
  EXPECT_EQ(VisibleCharacter("a"), "a");
  EXPECT_EQ(VisibleCharacter("\xc3\xa9"), "\xc3\xa9");
  EXPECT_EQ(VisibleCharacter("\x1b"), "\\x1b");
  EXPECT_EQ(VisibleCharacter("\xff"), "\\xff");
}

TEST(Characters, WideCharactersTakeTwoCells) {
  EXPECT_EQ(CellsOf("a"), 1u);
  EXPECT_EQ(CellsOf("\xc3\xa9"), 1u);
  EXPECT_EQ(CellsOf("\xe4\xb8\xad"), 2u);      // U+4E2D
  EXPECT_EQ(CellsOf("\xf0\x9f\x98\x80"), 2u);  // U+1F600
  EXPECT_EQ(CellsOf("\xcc\x81"), 0u);          // U+0301, a combining accent
  EXPECT_EQ(CellsOf("\xf4\x8f\xbf\xbf"), 1u);  // after all ranges
}

}  // namespace
}  // namespace report_test
