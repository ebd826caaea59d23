// Characters: where they end, how wide they stand, what of them can be shown.
#include "base/characters.h"

#include <gtest/gtest.h>

namespace report_test {
namespace {

using korvel::CellsOf;
using korvel::CharacterLength;
using korvel::ValidUtf8;
using korvel::VisibleCharacter;

TEST(Characters, EndWhereUtf8Says) {
  EXPECT_EQ(CharacterLength("ab"), 1u);
  EXPECT_EQ(CharacterLength("\xc3\xa9x"), 2u);
  EXPECT_EQ(CharacterLength("\xe4\xb8\xad"), 3u);
  EXPECT_EQ(CharacterLength("\xf0\x9f\x98\x80"), 4u);
  EXPECT_EQ(CharacterLength("\xa9x"), 1u) << "a byte that continues nothing";
  EXPECT_EQ(CharacterLength("\xe4\xb8"), 1u) << "a character that is cut";
}

TEST(Characters, BytesThatAreNoUtf8AreReplaced) {
  EXPECT_EQ(ValidUtf8(""), "");
  EXPECT_EQ(ValidUtf8("a\xc3\xa9z"), "a\xc3\xa9z");
  EXPECT_EQ(ValidUtf8("a\xffz\xc3"), "a\xef\xbf\xbdz\xef\xbf\xbd");
  EXPECT_EQ(ValidUtf8("\xed\xa0\x80"), "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd") << "half of a surrogate pair";
}

TEST(Characters, WhatBreaksALineIsShownEscaped) {
  EXPECT_EQ(VisibleCharacter("a"), "a");
  EXPECT_EQ(VisibleCharacter("\xc3\xa9"), "\xc3\xa9");
  EXPECT_EQ(VisibleCharacter("\x1b"), "\\x1b");
  EXPECT_EQ(VisibleCharacter("\xff"), "\\xff");
}

TEST(Characters, WideOnesTakeTwoCells) {
  EXPECT_EQ(CellsOf("a"), 1u);
  EXPECT_EQ(CellsOf("\xc3\xa9"), 1u);
  EXPECT_EQ(CellsOf("\xe4\xb8\xad"), 2u);      // U+4E2D
  EXPECT_EQ(CellsOf("\xf0\x9f\x98\x80"), 2u);  // U+1F600
  EXPECT_EQ(CellsOf("\xcc\x81"), 0u);          // U+0301, a combining accent
  EXPECT_EQ(CellsOf("\xf4\x8f\xbf\xbf"), 1u);  // past all ranges
}

}  // namespace
}  // namespace report_test
