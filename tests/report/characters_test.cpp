// Tests characters: length, width, and how they are shown.
#include "base/characters.h"

#include <gtest/gtest.h>

namespace report_test {
namespace {

using korvel::CellsOf;
using korvel::CharacterLength;
using korvel::IsHidden;
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

// The whole table, with the characters next to each range.
TEST(Characters, HiddenCharactersAreInOneTable) {
  constexpr std::uint32_t kRanges[][2] = {
      {0x0, 0x1F},      {0x7F, 0x9F},     {0xAD, 0xAD},     {0x34F, 0x34F},     {0x61C, 0x61C},     {0x115F, 0x1160},
      {0x17B4, 0x17B5}, {0x180E, 0x180E}, {0x200B, 0x200F}, {0x2028, 0x202E},   {0x2060, 0x206F},   {0x3164, 0x3164},
      {0xFEFF, 0xFEFF}, {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFFB}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF}};
  std::uint32_t next = 0;
  for (const auto& [first, last] : kRanges) {
    for (; next < first; ++next) EXPECT_FALSE(IsHidden(next)) << next;
    for (; next <= last; ++next) EXPECT_TRUE(IsHidden(next)) << next;
  }
  for (; next <= 0x10FFFF; ++next) EXPECT_FALSE(IsHidden(next)) << next;
}

TEST(Characters, HiddenCharactersAreEscaped) {
  EXPECT_EQ(VisibleCharacter("\n"), "\\n");
  EXPECT_EQ(VisibleCharacter("\t"), "\\t");
  EXPECT_EQ(VisibleCharacter("\x7f"), "\\x7f");
  EXPECT_EQ(VisibleCharacter("\xc2\xad"), "\\u00ad");
  EXPECT_EQ(VisibleCharacter("\xe2\x80\xae"), "\\u202e");
  EXPECT_EQ(VisibleCharacter("\xf3\xa0\x81\x81"), "\\U000e0041");
}

// Services look for these in every line of a log.
TEST(Characters, CommandsOfServicesAreEscaped) {
  EXPECT_EQ(VisibleCharacter("##[error]a"), "\\x23");
  EXPECT_EQ(VisibleCharacter("##vso[a]"), "\\x23");
  EXPECT_EQ(VisibleCharacter("#[a]"), "#");
  EXPECT_EQ(VisibleCharacter("## [a]"), "#");
  EXPECT_EQ(VisibleCharacter("##a"), "#");
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
