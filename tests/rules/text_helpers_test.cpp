// SplitString and RealCmpVersion.

#include "common/text_helpers.h"

#include <gtest/gtest.h>

namespace {

using Pieces = std::set<std::string>;

Pieces Split(const char* text, const char* separators = ";", Pieces already = {}) {
  SplitString(text, separators, already);
  return already;
}

TEST(SplitString, CutsAtEverySeparator) {
  EXPECT_EQ(Split("history;payload"), (Pieces{"history", "payload"}));
  EXPECT_EQ(Split("history"), (Pieces{"history"}));
  EXPECT_EQ(Split("a;b,c|d", ";,"), (Pieces{"a", "b", "c|d"}));
}

TEST(SplitString, KeepsPiecesUnchanged) { EXPECT_EQ(Split(" a ;A;a%s;\xc3\xa9"), (Pieces{" a ", "A", "a%s", "\xc3\xa9"})); }

TEST(SplitString, SkipsEmptyPieces) {
  EXPECT_EQ(Split(""), Pieces{});
  EXPECT_EQ(Split(";"), Pieces{});
  EXPECT_EQ(Split(";;a;;b;"), (Pieces{"a", "b"}));
}

TEST(SplitString, KeepsExistingElements) {
  EXPECT_EQ(Split("a;b", ";", {"b", "z"}), (Pieces{"a", "b", "z"}));
  EXPECT_EQ(Split(nullptr, ";", {"z"}), (Pieces{"z"}));
}

TEST(SplitString, NullSeparatorsSeparateNothing) {
  EXPECT_EQ(Split("a;b", nullptr), (Pieces{"a;b"}));
  EXPECT_EQ(Split("a;b", ""), (Pieces{"a;b"}));
  EXPECT_EQ(Split(nullptr, nullptr), Pieces{});
}

int Sign(int number) { return number < 0 ? -1 : number > 0 ? 1 : 0; }

// Compares in both directions, with and without the flag.
int Compare(const char* a, const char* b) {
  const int sign = Sign(RealCmpVersion(a, b, false));
  EXPECT_EQ(Sign(RealCmpVersion(b, a, false)), -sign) << "with swapped arguments";
  EXPECT_EQ(Sign(RealCmpVersion(a, b, true)), sign) << "with the flag set";
  return sign;
}

TEST(RealCmpVersion, ComparesNumberByNumber) {
  EXPECT_EQ(Compare("3.28.9", "3.29.0"), -1);
  EXPECT_EQ(Compare("3.29.0", "3.29.0"), 0);
  EXPECT_EQ(Compare("3.29.1", "3.29.0"), 1);
  EXPECT_EQ(Compare("3.100.0", "3.39.0"), 1);
  EXPECT_EQ(Compare("4", "3.99.99"), 1);
  EXPECT_EQ(Compare("10.0", "9.0"), 1);
}

TEST(RealCmpVersion, MissingNumberCountsAsZero) {
  EXPECT_EQ(Compare("3.29", "3.29.0"), 0);
  EXPECT_EQ(Compare("3.29", "3.29.0.0.1"), -1);
  EXPECT_EQ(Compare("3", "3.0.0.0"), 0);
  EXPECT_EQ(Compare("3..1", "3.0.1"), 0);
  EXPECT_EQ(Compare(".5", "0.5"), 0);
  EXPECT_EQ(Compare("3.29.", "3.29"), 0);
}

TEST(RealCmpVersion, NullAndEmptyTextsAreOlderThanAnyNumber) {
  EXPECT_EQ(Compare("", "0.0.1"), -1);
  EXPECT_EQ(Compare(nullptr, "0.0.1"), -1);
  EXPECT_EQ(Compare(nullptr, ""), 0);
  EXPECT_EQ(Compare(nullptr, nullptr), 0);
  EXPECT_EQ(Compare("", "0.0"), 0);
}

TEST(RealCmpVersion, IgnoresTextAfterDigits) {
  EXPECT_EQ(Compare("3.29.0-beta", "3.29.0"), 0);
  EXPECT_EQ(Compare("3.29x.1", "3.29.1"), 0);
  EXPECT_EQ(Compare("v3.29", "0.29"), 0);
}

TEST(RealCmpVersion, NumbersMayHaveAnyLength) {
  EXPECT_EQ(Compare("3.99999999999999999999999999", "3.100000000000000000000000000"), -1);
  EXPECT_EQ(Compare("3.4294967296", "3.0"), 1);
  EXPECT_EQ(Compare("3.18446744073709551616", "3.1"), 1);
  EXPECT_EQ(Compare("3.0029.000", "3.29"), 0);
  EXPECT_EQ(Compare("3.00000000000000000000000000000000000000001", "3.1"), 0);
}

}  // namespace
