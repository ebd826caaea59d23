// Tests the parts of messages: quoting and suggestions.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "base/did_you_mean.h"
#include "base/similar_names.h"
#include "base/text.h"

namespace {

TEST(Quote, PlainText) {
  EXPECT_EQ(korvel::Quote(""), "''");
  EXPECT_EQ(korvel::Quote("a b"), "'a b'");
  EXPECT_EQ(korvel::Quote("ä€😀"), "'ä€😀'");
}

TEST(QuoteWhole, CutsNothing) {
  EXPECT_EQ(korvel::QuoteWhole(std::string(300, 'n') + "\n"), "'" + std::string(300, 'n') + "\\n'");
  EXPECT_EQ(korvel::QuoteWhole(""), "''");
}

TEST(Quote, KeepsTextOnOneLine) {
  EXPECT_EQ(korvel::Quote("a\n\r\tb"), "'a\\n\\r\\tb'");
  EXPECT_EQ(korvel::Quote("\x01\x1B[31m\x7F"), "'\\x01\\x1b[31m\\x7f'");
  EXPECT_EQ(korvel::Quote(std::string_view("\0", 1)), "'\\x00'");
}

TEST(Quote, EscapesInvisibleAndDirectionCharacters) {
  // In pieces, so that no literal in this file changes the text direction.
  const std::string turn = "\xE2\x80";
  EXPECT_EQ(korvel::Quote("\xC2\x85"), "'\\u0085'");
  EXPECT_EQ(korvel::Quote("\xE2\x80\xA8" + turn + "\xAE"), "'\\u2028\\u202e'");
  EXPECT_EQ(korvel::Quote("\xE2\x81" + std::string("\xA6\xEF\xBB\xBF\xE2\x80\x8B")), "'\\u2066\\ufeff\\u200b'");
}

TEST(Quote, EscapesInvalidUtf8) {
  EXPECT_EQ(korvel::Quote("\xFF\x80"), "'\\xff\\x80'");
  EXPECT_EQ(korvel::Quote("\xE2\x82"), "'\\xe2\\x82'") << "cut off";
  EXPECT_EQ(korvel::Quote("\xC0\xAF"), "'\\xc0\\xaf'") << "overlong";
  EXPECT_EQ(korvel::Quote("\xED\xA0\x80"), "'\\xed\\xa0\\x80'") << "surrogate";
  EXPECT_EQ(korvel::Quote("\xF4\x90\x80\x80"), "'\\xf4\\x90\\x80\\x80'") << "past the last character";
}

TEST(Quote, TruncatesLongTextBetweenCharacters) {
  EXPECT_EQ(korvel::Quote(std::string(60, 'a')), "'" + std::string(60, 'a') + "'");
  EXPECT_EQ(korvel::Quote(std::string(61, 'a')), "'" + std::string(60, 'a') + "...'");
  EXPECT_EQ(korvel::Quote(std::string(59, 'a') + "ä"), "'" + std::string(59, 'a') + "...'");
  EXPECT_EQ(korvel::Quote(std::string(58, 'a') + "ä"), "'" + std::string(58, 'a') + "ä'");
}

TEST(OneLine, EscapesWhatMustNotBeShown) {
  EXPECT_EQ(korvel::OneLine(""), "");
  EXPECT_EQ(korvel::OneLine("a \\ ä€😀 # ##"), "a \\ ä€😀 # ##");
  EXPECT_EQ(korvel::OneLine("a\n\xC2\xAD"
                            "b\xFF"),
            "a\\n\\u00adb\\xff");
  EXPECT_EQ(korvel::OneLine("ä ##[error]b ##x[c"), "ä \\x23#[error]b \\x23#x[c");
}

// A service takes a line that begins with "::", after blanks of any kind, for a command.
TEST(OneLine, BeginsNoCommand) {
  EXPECT_EQ(korvel::OneLine("::error::a"), "\\x3a:error::a");
  EXPECT_EQ(korvel::OneLine("  ::a"), "  \\x3a:a");
  EXPECT_EQ(korvel::OneLine("\xC2\xA0 \xE3\x80\x80::a"), "\xC2\xA0 \xE3\x80\x80\\x3a:a");
  EXPECT_EQ(korvel::OneLine("a::b"), "a::b");
  EXPECT_EQ(korvel::OneLine(korvel::OneLine("::a ##[b]")), korvel::OneLine("::a ##[b]"));
}

TEST(PathText, IsNeitherCommandNorOption) {
  EXPECT_EQ(korvel::PathText("a/-b::c.xml"), "a/-b::c.xml");
  EXPECT_EQ(korvel::PathText("::error::a.xml"), "./::error::a.xml");
  EXPECT_EQ(korvel::PathText(" ::a.xml"), "./ ::a.xml");
  EXPECT_EQ(korvel::PathText("-a.xml"), "./-a.xml");
  EXPECT_EQ(korvel::PathText("##[error]a.xml"), "./\\x23#[error]a.xml");
  EXPECT_EQ(korvel::PathText(""), "");
}

TEST(EscapeInJson, KeepsTheDocument) {
  EXPECT_EQ(korvel::EscapeInJson(""), "");
  EXPECT_EQ(korvel::EscapeInJson("{\n  \"#\": \"ä\"\n}"), "{\n  \"#\": \"ä\"\n}");
  EXPECT_EQ(korvel::EscapeInJson("[\"\x7F \xC2\x85 \xE2\x80\xAE\"]"), "[\"\\u007f \\u0085 \\u202e\"]");
  EXPECT_EQ(korvel::EscapeInJson("\"\xF3\xA0\x81\x81\""), "\"\\udb40\\udc41\"");
  EXPECT_EQ(korvel::EscapeInJson("\"##[a] ##\""), "\"\\u0023#[a] ##\"");
}

std::string OutputOf(const std::string& command) {
  std::FILE* const pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) return "(no shell)";
  std::string output;
  char block[256];
  while (const std::size_t size = std::fread(block, 1, sizeof block, pipe)) output.append(block, size);
  ::pclose(pipe);
  return output;
}

TEST(ShellWord, ShellPassesTheText) {
  EXPECT_EQ(korvel::ShellWord("origin/main:refs/heads/a@1"), "origin/main:refs/heads/a@1");
  EXPECT_EQ(korvel::ShellWord("a b"), "'a b'");
  EXPECT_EQ(korvel::ShellWord(""), "''");
  EXPECT_EQ(korvel::ShellWord("a\xE2\x80\xAE%-"), "\"$(printf 'a\\342\\200\\256\\045\\055')\"");
  for (const std::string text : {"", "a", "a;b", "it's", "$(touch x)", "`a`", "\"a\" $b\\n", "~", "a\n b", "%s\xE2\x80\xAE'\\",
                                 "\xFF", "ä", "-n\x1B", "::a", "##[a]", "!a", "{a,b}", "*", "#a"}) {
    const std::string word = korvel::ShellWord(text);
    EXPECT_EQ(OutputOf("/bin/sh -c 'printf %s \"$1\"' sh " + word), text) << word;
    EXPECT_EQ(korvel::OneLine(word), word);
  }
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

// Whatever the order of the names.
std::optional<std::size_t> Spelling(std::string_view a, std::string_view b) {
  EXPECT_EQ(korvel::SpellingDistance(a, b), korvel::SpellingDistance(b, a));
  return korvel::SpellingDistance(a, b);
}

TEST(SpellingDistance, CountsEditsOfMisspelledNames) {
  EXPECT_EQ(Spelling("field_07", "feild_07"), 1u);
  EXPECT_EQ(Spelling("customer", "custmer"), 1u);
  EXPECT_EQ(Spelling("adress_line_2", "address_line_2"), 1u);
  EXPECT_EQ(Spelling("quantity", "quanttiyy"), 2u);
  EXPECT_EQ(Spelling("first_adress_line", "frist_address_line"), 2u);
  EXPECT_EQ(Spelling("note", "notes"), 1u);
  EXPECT_EQ(Spelling("stra\u00dfe", "strasse"), std::nullopt) << "the character has two bytes";
  EXPECT_EQ(Spelling("gr\u00f6\u00dfe_1", "gr\u00f6\u00dffe_1"), 1u);
}

TEST(SpellingDistance, IgnoresCaseSeparatorsAndLeadingZeros) {
  EXPECT_EQ(Spelling("user_name", "userName"), 0u);
  EXPECT_EQ(Spelling("order_no", "ORDERNO"), 0u);
  EXPECT_EQ(Spelling("field-1", "field_1"), 0u);
  EXPECT_EQ(Spelling("field_7", "field_07"), 0u);
  EXPECT_EQ(Spelling("userNmae", "userName"), 1u);
  EXPECT_EQ(Spelling("same", "same"), 0u);
}

TEST(SpellingDistance, TellsNamesOfDifferentThingsApart) {
  EXPECT_EQ(Spelling("min_price", "max_price"), std::nullopt);
  EXPECT_EQ(Spelling("pos_x", "pos_y"), std::nullopt);
  EXPECT_EQ(Spelling("x1", "y1"), std::nullopt);
  EXPECT_EQ(Spelling("lat", "lon"), std::nullopt);
  EXPECT_EQ(Spelling("note_1", "note_2"), std::nullopt);
  EXPECT_EQ(Spelling("field_12", "field_21"), std::nullopt);
  EXPECT_EQ(Spelling("price", "price_2"), std::nullopt);
  EXPECT_EQ(Spelling("price", "unit_price"), std::nullopt);
  EXPECT_EQ(Spelling("zone", "note"), std::nullopt);
  EXPECT_EQ(Spelling("", "a"), std::nullopt);
  EXPECT_EQ(Spelling("one_misspeled_nmae_too_mcuh", "one_misspelled_name_too_much"), std::nullopt) << "three edits";
}

TEST(SpellingDistance, HasLimits) {
  const std::string half(10000, 'x');
  EXPECT_EQ(Spelling(half + "ab" + half, half + "ba" + half), 1u) << "a long word with one edit";
  EXPECT_EQ(Spelling(half, half + std::string(64, 'x')), std::nullopt);
  EXPECT_EQ(Spelling("a" + half + "a", "b" + half + "b"), std::nullopt) << "the edits are too far apart";
  std::string words;
  for (int i = 0; i < 4000; ++i) words += "word_";
  EXPECT_EQ(Spelling(words + "last", words + "lsat"), 1u);
  EXPECT_EQ(Spelling(words, words + "more"), std::nullopt);
}

}  // namespace
