// Tests the parts of messages: quoting and suggestions.
#include <gtest/gtest.h>

#include <string>

#include "base/did_you_mean.h"
#include "base/text.h"

namespace {

TEST(Quote, PlainText) {
  EXPECT_EQ(korvel::Quote(""), "''");
  EXPECT_EQ(korvel::Quote("a b"), "'a b'");
  EXPECT_EQ(korvel::Quote("ä€😀"), "'ä€😀'");
}

TEST(Quote, KeepsTextOnOneLine) {
  EXPECT_EQ(korvel::Quote("a\n\r\tb"), "'a\\n\\r\\tb'");
  EXPECT_EQ(korvel::Quote("\x01\x1B[31m\x7F"), "'\\x01\\x1B[31m\\x7F'");
  EXPECT_EQ(korvel::Quote(std::string_view("\0", 1)), "'\\x00'");
}

TEST(Quote, EscapesInvisibleAndDirectionCharacters) {
  // In pieces, so that no literal in this file changes the text direction.
  const std::string turn = "\xE2\x80";
  EXPECT_EQ(korvel::Quote("\xC2\x85"), "'\\u0085'");
  EXPECT_EQ(korvel::Quote("\xE2\x80\xA8" + turn + "\xAE"), "'\\u2028\\u202E'");
  EXPECT_EQ(korvel::Quote("\xE2\x81" + std::string("\xA6\xEF\xBB\xBF\xE2\x80\x8B")), "'\\u2066\\uFEFF\\u200B'");
}

TEST(Quote, EscapesInvalidUtf8) {
  EXPECT_EQ(korvel::Quote("\xFF\x80"), "'\\xFF\\x80'");
  EXPECT_EQ(korvel::Quote("\xE2\x82"), "'\\xE2\\x82'") << "cut off";
  EXPECT_EQ(korvel::Quote("\xC0\xAF"), "'\\xC0\\xAF'") << "overlong";
  EXPECT_EQ(korvel::Quote("\xED\xA0\x80"), "'\\xED\\xA0\\x80'") << "surrogate";
  EXPECT_EQ(korvel::Quote("\xF4\x90\x80\x80"), "'\\xF4\\x90\\x80\\x80'") << "past the last character";
}

TEST(Quote, TruncatesLongTextBetweenCharacters) {
  EXPECT_EQ(korvel::Quote(std::string(60, 'a')), "'" + std::string(60, 'a') + "'");
  EXPECT_EQ(korvel::Quote(std::string(61, 'a')), "'" + std::string(60, 'a') + "...'");
  EXPECT_EQ(korvel::Quote(std::string(59, 'a') + "ä"), "'" + std::string(59, 'a') + "...'");
  EXPECT_EQ(korvel::Quote(std::string(58, 'a') + "ä"), "'" + std::string(58, 'a') + "ä'");
}

std::string Suggested(std::string_view word, std::vector<std::string_view> candidates) {
  return korvel::DidYouMean(word, candidates);
}

TEST(DidYouMean, NearWords) {
  EXPECT_EQ(Suggested("entri", {"meta", "entry", "entries"}), " (did you mean 'entry'?)");
  EXPECT_EQ(Suggested("nmae", {"type", "name"}), " (did you mean 'name'?)");
  EXPECT_EQ(Suggested("INT32", {"int8", "int32"}), " (did you mean 'int32'?)");
  EXPECT_EQ(Suggested("strng", {"string"}), " (did you mean 'string'?)");
  EXPECT_EQ(Suggested("sstrring", {"string"}), " (did you mean 'string'?)");
  EXPECT_EQ(Suggested("di", {"id"}), " (did you mean 'id'?)");
  EXPECT_EQ(Suggested("zone", {"note"}), "") << "two edits are too many for a short word";
  EXPECT_EQ(Suggested("ix", {"id"}), " (did you mean 'id'?)");
}

TEST(DidYouMean, NearestAndFirst) {
  EXPECT_EQ(Suggested("uint33", {"uint", "uint16", "uint32", "uint64"}), " (did you mean 'uint32'?)");
  EXPECT_EQ(Suggested("unit64", {"int64", "uint64"}), " (did you mean 'uint64'?)") << "two bytes swapped are one edit";
  EXPECT_EQ(Suggested("bat", {"cat", "hat", "bats"}), " (did you mean 'cat'?)");
  EXPECT_EQ(Suggested("Bat", {"cat", "bat"}), " (did you mean 'bat'?)");
}

TEST(DidYouMean, NothingNear) {
  EXPECT_EQ(Suggested("customer", {"entry", "meta"}), "");
  EXPECT_EQ(Suggested("", {"a"}), "");
  EXPECT_EQ(Suggested("n", {"m", "N"}), " (did you mean 'N'?)");
  EXPECT_EQ(Suggested("n", {"m", "no"}), "");
  EXPECT_EQ(Suggested("a", {""}), "");
  EXPECT_EQ(Suggested("abc", {}), "");
}

TEST(DidYouMean, HasLimits) {
  const std::string longest(64, 'x');
  EXPECT_NE(Suggested(longest.substr(1), {longest}), "");
  EXPECT_EQ(Suggested(longest, {longest + "x"}), "");
  EXPECT_EQ(Suggested(longest + "x", {longest}), "");
  std::vector<std::string_view> many(1000, "far away");
  many.emplace_back("word");
  EXPECT_EQ(Suggested("work", many), "");
  many.erase(many.begin());
  EXPECT_EQ(Suggested("work", many), " (did you mean 'word'?)");
}

}  // namespace
