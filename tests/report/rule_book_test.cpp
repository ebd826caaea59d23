// The rule book: a page for every row of the catalogue, a meaning for every result code, and no page that says less than it
// should. Whether its examples are true is asked in tests/tool/explain_test.cpp.
#include "rule_docs/rule_book.h"

#include <gmock/gmock.h>

#include <set>

#include "rule_docs/book_format.h"

namespace report_test {
namespace {

using namespace korvel;
using korvel::AllRefusals;
using korvel::RefusalRow;
using testing::ElementsAre;

TEST(RuleBook, HasOnePageForEveryRow) {
  std::multiset<std::string> rows;
  for (const RefusalRow* row : AllRefusals()) rows.insert(row->id);
  std::multiset<std::string> pages;
  for (const RulePage& page : AllPages()) pages.insert(page.id);
  EXPECT_EQ(pages, rows);
}

TEST(RuleBook, EveryPageSaysWhatItProtectsAndWhatIsAllowed) {
  for (const RulePage& page : AllPages()) {
    for (const std::string text : {page.protects, page.allowed, page.unheard == nullptr ? "." : page.unheard}) {
      EXPECT_TRUE(text.ends_with(".")) << page.id << ": " << text;
      EXPECT_EQ(text.find("  "), std::string::npos) << page.id << ": two blanks in a row";
    }
  }
}

TEST(RuleBook, APageHasAnExampleOrAReason) {
  for (const RulePage& page : AllPages()) {
    const bool has_files = page.example.code != 0;
    EXPECT_NE(has_files, page.unheard != nullptr) << page.id;
    EXPECT_EQ(HasExample(page), has_files) << page.id;
  }
}

TEST(RuleBook, TextsAreReplacedByThoseOfRulesThatCallersHear) {
  for (const RulePage& page : AllPages()) {
    if (page.replaced_by == nullptr) continue;
    const RulePage* heard = FindPage(page.replaced_by);
    ASSERT_NE(heard, nullptr) << page.id;
    EXPECT_EQ(heard->replaced_by, nullptr) << page.id;
    for (const int code : CodesOf(page)) EXPECT_THAT(CodesOf(*heard), testing::Contains(code)) << page.id;
  }
}

TEST(RuleBook, FindsPagesAndRowsByTheWholeId) {
  EXPECT_STREQ(FindPage("primary-key.size")->id, "primary-key.size");
  EXPECT_EQ(FindPage("primary-key.siz"), nullptr);
  EXPECT_STREQ(FindRow("primary-key.size-tlv")->id, "primary-key.size-tlv");
  EXPECT_EQ(FindRow(""), nullptr);
}

TEST(RuleBook, CodesAreThoseThatCallersSee) {
  EXPECT_THAT(CodesOf(*FindPage("primary-key.size")), ElementsAre(-3));
  EXPECT_THAT(CodesOf(*FindPage("primary-key.member")), ElementsAre(-4));  // its own, -7, is not handed on
  EXPECT_THAT(CodesOf(*FindPage("table.list-num")), ElementsAre(-5, -1));  // of the rule, of the whole check
  EXPECT_THAT(CodesOf(*FindPage("length.whitelist")), ElementsAre(-35));
}

TEST(RuleBook, EveryExampleIsReportedWithACodeOfItsPage) {
  for (const RulePage& page : AllPages()) {
    if (!HasExample(page)) continue;
    EXPECT_THAT(CodesOf(page), testing::Contains(page.example.code)) << page.id;
  }
}

// The codes of the rows' own, of what the drivers make of them, and success; no others are returned.
TEST(CodeBook, KnowsWhichCodesAreReturned) {
  std::vector<int> returned;
  for (const CodePage& page : AllCodes()) {
    if (page.returned) returned.push_back(page.code);
    EXPECT_TRUE(std::string(page.meaning).ends_with(".")) << page.code;
    EXPECT_EQ(page.rules.empty(), !page.returned || page.code == 0) << page.code;
  }
  EXPECT_THAT(returned, ElementsAre(0, -1, -2, -3, -4, -5, -6, -7, -8, -9, -10, -11, -15, -16, -17, -18, -19, -33, -34, -35));
}

TEST(CodeBook, ListsTheRulesOfACode) {
  std::vector<std::string> rules;
  for (const RefusalRow* row : FindCode(-9).rules) rules.emplace_back(row->id);
  EXPECT_THAT(rules, ElementsAre("field-name.invalid", "field-name.length", "table.old-field"));
}

TEST(BookFormat, PagesHaveFilesOfTheirOwn) {
  EXPECT_EQ(PageFile("primary-key.size"), "primary-key-size.md");
  std::set<std::string> files;
  for (const RulePage& page : AllPages()) EXPECT_TRUE(files.insert(PageFile(page.id)).second) << page.id;
}

TEST(BookFormat, WrapsAtBlanks) {
  EXPECT_EQ(Wrapped("one two three", 7), "one two\nthree\n");
  EXPECT_EQ(Wrapped("one two three", 6, "  "), "  one\n  two\n  three\n");
  EXPECT_EQ(Wrapped("longer-than-that", 4), "longer-than-that\n");
  EXPECT_EQ(Wrapped("", 4), "\n");
}

}  // namespace
}  // namespace report_test
