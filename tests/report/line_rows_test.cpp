// Aligns two texts side by side: every line once, equal lines in one row, and changed lines in one row where possible.
#include "base/alignment.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <random>
#include <string>

namespace report_test {
namespace {

using namespace korvel;
using testing::ElementsAre;

// "1=1" for equal lines, "2~2" for different lines in one row, "3-" and "+3" for single lines.
std::vector<std::string> ToText(const std::vector<LineRow>& rows) {
  std::vector<std::string> shown;
  for (const LineRow& row : rows) {
    const std::string before = row.old_line == 0 ? "" : std::to_string(row.old_line);
    const std::string after = row.new_line == 0 ? "" : std::to_string(row.new_line);
    const char* const sign = row.same ? "=" : before.empty() ? "+" : after.empty() ? "-" : "~";
    shown.push_back(before + sign + after);
  }
  return shown;
}

TEST(SourceLines, EndAtAnyLineEnd) {
  EXPECT_THAT(SourceLines("a\nb\r\nc\rd"), ElementsAre("a", "b", "c", "d"));
  EXPECT_THAT(SourceLines("a\n\nb\n"), ElementsAre("a", "", "b"));
  EXPECT_THAT(SourceLines("\xEF\xBB\xBFx\n"), ElementsAre("x"));
  EXPECT_THAT(SourceLines(""), ElementsAre());
}

TEST(AlignLines, EqualLinesShareARow) {
  EXPECT_THAT(ToText(AlignLines({"a", "b", "c"}, {"a", "x", "c"}, {})), ElementsAre("1=1", "2-", "+2", "3=3"));
  EXPECT_THAT(ToText(AlignLines({"a", "c"}, {"a", "b", "c"}, {})), ElementsAre("1=1", "+2", "2=3"));
  EXPECT_THAT(ToText(AlignLines({}, {"a"}, {})), ElementsAre("+1"));
  EXPECT_THAT(ToText(AlignLines({"a"}, {"a"}, {})), ElementsAre("1=1"));
}

TEST(AlignLines, KnownPairsShareARowUnlessTheyCross) {
  EXPECT_THAT(ToText(AlignLines({"a", "b", "c"}, {"x", "B", "c"}, {{2, 2}})), ElementsAre("1-", "+1", "2~2", "3=3"));
  EXPECT_THAT(ToText(AlignLines({"b", "c"}, {"C", "B"}, {{2, 1}, {1, 2}})), ElementsAre("1-", "2~1", "+2"));
  EXPECT_THAT(ToText(AlignLines({"b"}, {"B", "C"}, {{1, 2}, {1, 2}})), ElementsAre("+1", "1~2")) << "listed twice";
}

TEST(AlignLines, MovedLineHasARowOnEachSide) {
  EXPECT_THAT(ToText(AlignLines({"a", "b", "c", "m"}, {"m", "a", "b", "c"}, {{4, 1}})),
              ElementsAre("+1", "1=2", "2=3", "3=4", "4-"));
}

TEST(AlignLines, EveryLineOccursOnceAndInOrder) {
  const char* const given = std::getenv("KORVEL_SEED");
  const unsigned seed = given == nullptr ? std::random_device()() : static_cast<unsigned>(std::strtoul(given, nullptr, 10));
  SCOPED_TRACE("KORVEL_SEED=" + std::to_string(seed));
  std::mt19937 random(seed);
  const auto below = [&](std::size_t end) { return static_cast<std::size_t>(random() % end); };
  static constexpr std::string_view kWords[] = {"a", "b", "c", "d", "e", "f", "g", "h"};
  for (int round = 0; round < 2000; ++round) {
    Lines old_lines(below(12));
    Lines new_lines(below(12));
    for (auto& line : old_lines) line = kWords[below(8)];
    for (auto& line : new_lines) line = kWords[below(8)];
    std::vector<LineMatch> known(below(6));
    for (LineMatch& match : known) match = {below(old_lines.size() + 2), below(new_lines.size() + 2)};
    std::size_t next_old = 1;
    std::size_t next_new = 1;
    for (const LineRow& row : AlignLines(old_lines, new_lines, known)) {
      ASSERT_TRUE(row.old_line > 0 || row.new_line > 0);
      if (row.old_line > 0) {
        ASSERT_EQ(row.old_line, next_old++);
      }
      if (row.new_line > 0) {
        ASSERT_EQ(row.new_line, next_new++);
      }
      const bool same = row.old_line > 0 && row.new_line > 0 && old_lines[row.old_line - 1] == new_lines[row.new_line - 1];
      ASSERT_TRUE(same || !row.same);
    }
    ASSERT_EQ(next_old, old_lines.size() + 1);
    ASSERT_EQ(next_new, new_lines.size() + 1);
  }
}

}  // namespace
}  // namespace report_test
