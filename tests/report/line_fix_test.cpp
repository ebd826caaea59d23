// Fixes as whole lines: they give the bytes of the fix, or say why a service could not apply them.
#include "report/result/line_fix.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "analysis/suggest/element_text.h"

namespace report_test {
namespace {

using korvel::ApplyReplacements;
using korvel::LineFix;
using korvel::LineStarts;
using korvel::Replacement;
using testing::HasSubstr;

// The text after a service has replaced the lines.
std::string Applied(std::string_view text, const LineFix& fix) {
  std::string applied;
  std::size_t line = 1;
  for (std::size_t begin = 0; begin < text.size(); ++line) {
    const std::size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
    if (line == fix.first) applied += fix.text;
    if (line < fix.first || line > fix.last) applied += text.substr(begin, end - begin);
    begin = end;
  }
  return applied;
}

LineFix Fixed(std::string_view text, const std::vector<Replacement>& fix) { return LineStarts(text).Fixed(fix); }

TEST(LineFix, ReplacesTheLinesFromFirstToLastChange) {
  const LineFix fix = Fixed("1\n2\n3\n4\n5\n", {{{2, 3}, "two"}, {{6, 7}, "four"}});
  EXPECT_EQ(fix.problem, nullptr);
  EXPECT_EQ(fix.first, 2u);
  EXPECT_EQ(fix.last, 4u);
  EXPECT_EQ(fix.text, "two\n3\nfour\n");
}

TEST(LineFix, InsertionAtTheBeginOfALineKeepsTheLine) {
  const LineFix fix = Fixed("1\n2\n", {{{2, 2}, "new\n"}});
  EXPECT_EQ(std::pair(fix.first, fix.last), std::pair(std::size_t{2}, std::size_t{2}));
  EXPECT_EQ(fix.text, "new\n2\n");
}

// A block without lines would be ambiguous.
TEST(LineFix, RemovedLineIsReplacedTogetherWithTheNext) {
  const LineFix fix = Fixed("1\n2\n3\n", {{{2, 4}, ""}});
  EXPECT_EQ(std::pair(fix.first, fix.last), std::pair(std::size_t{2}, std::size_t{3}));
  EXPECT_EQ(fix.text, "3\n");
}

TEST(LineFix, SaysWhyAServiceCannotApplyIt) {
  const auto problem = [](std::string_view text, const std::vector<Replacement>& fix) {
    const char* const found = Fixed(text, fix).problem;
    return std::string(found == nullptr ? "none" : found);
  };
  EXPECT_THAT(problem("1\n2", {{{2, 3}, "x"}}), HasSubstr("no line end"));
  EXPECT_THAT(problem("1\n2\n", {{{2, 4}, ""}}), HasSubstr("no line end")) << "a text without lines";
  EXPECT_THAT(problem("1\r\n2\n", {{{0, 1}, "x"}}), HasSubstr("CR LF"));
  EXPECT_THAT(problem("\xef\xbb\xbf"
                      "1\n2\n",
                      {{{3, 4}, "x"}}),
              HasSubstr("characters"));
  EXPECT_THAT(problem("a\xff"
                      "1\n",
                      {{{2, 3}, "x"}}),
              HasSubstr("characters"));
  EXPECT_THAT(problem("1\n \t/close\n3\n", {{{0, 1}, "x"}, {{11, 12}, "x"}}), HasSubstr("command"));
  EXPECT_THAT(problem("/* 1\n", {{{3, 4}, "x"}}), HasSubstr("command"));
  EXPECT_THAT(problem("1\n", {{{0, 1}, std::string(30'000, 'x')}}), HasSubstr("too long"));
  const std::string lines(200, '\n');
  EXPECT_THAT(problem(lines, {{{0, 0}, "x"}, {{50, 50}, "x"}}), HasSubstr("far apart"));
  EXPECT_EQ(problem(lines, {{{0, 0}, "x"}, {{49, 49}, "x"}}), "none");
  EXPECT_EQ(problem("1\n2\t/close\n\r\n", {{{0, 1}, "x"}}), "none") << "other lines do not matter";
}

// Random fixes of random texts.
TEST(LineFix, GivesTheBytesOfTheFix) {
  std::mt19937 random(20260101);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same texts in every run
  const auto pick = [&](std::size_t below) { return random() % below; };
  const auto make = [&](std::size_t length) {
    std::string text;
    while (text.size() < length) text += "ab\n"[pick(3)];
    return text;
  };
  std::size_t exact = 0;
  for (int round = 0; round < 2000; ++round) {
    const std::string text = make(1 + pick(30)) + "\n";
    std::vector<Replacement> fix;
    for (std::size_t at = pick(8); at < text.size(); at += 1 + pick(8)) {
      const std::size_t end = std::min(at + pick(4), text.size());
      fix.push_back({{at, end}, make(pick(4))});
      at = end;
    }
    if (fix.empty()) continue;
    const LineFix lines = Fixed(text, fix);
    if (lines.problem != nullptr) continue;
    ++exact;
    EXPECT_EQ(Applied(text, lines), ApplyReplacements(text, fix)) << text;
  }
  EXPECT_GT(exact, 1000u);
}

}  // namespace
}  // namespace report_test
