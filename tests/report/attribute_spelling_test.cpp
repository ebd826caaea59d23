// The spelling of table attributes: what was meant, and what to write instead.
#include "analysis/diff/attribute_spelling.h"

#include <gtest/gtest.h>

#include "common/check_table.h"
#include "common/result_codes.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::AttributeSuggestion;
using korvel::CorrectedAttribute;
using korvel::CorrectedAttributes;
using korvel::IsKnownAttribute;

// The checker's answer about a table with these attributes.
int CheckerAnswer(const std::string& attributes) {
  const korvel::Source source = ReadSource(
      "t.xml", "<metalib name=\"m\" version=\"1\"><meta name=\"t\" customattr=\"" + attributes +
                   "\"><entry name=\"k\" type=\"int32\" customattr2=\"sort=1\"/><primarykey entries=\"k\"/></meta></metalib>");
  int type{}, list_num{}, sort_field_num{}, sort_rule{};
  char protocol[8] = "";
  return CheckTable().CheckTableTypeByCustomAttr(source.Library(), "t", type, list_num, sort_field_num, sort_rule, protocol,
                                                 false, nullptr);
}

TEST(AttributeSpelling, KnowsWhatTheCheckerKnows) {
  for (const char* const pair : {"TableType=GENERIC", "TableType=LIST", "TableType=SORTLIST", "ListNum=1", "ListNum=2147483647",
                                 "ListNum=007", "SortRule=INSC", "SortRule=DESC", "DataProtocol=QMX", "DataProtocol=TLV"}) {
    EXPECT_TRUE(IsKnownAttribute(pair)) << pair;
    EXPECT_EQ(CorrectedAttribute(pair), std::nullopt) << pair;
    const bool is_list = std::string(pair).ends_with("LIST");
    const int answer = CheckerAnswer(is_list ? std::string(pair) + ";ListNum=2" : pair);
    EXPECT_TRUE(answer == 0 || answer == ERROR_OLD_TABLE_DEFINE) << pair;
  }
  for (const char* const pair : {"TableType", "TableType=", "TableType=HEAP", "tabletype=LIST", " TableType=LIST", "ListNum=0",
                                 "ListNum=-1", "ListNum=+1", "ListNum=1 ", "ListNum=2147483648", "SortRule=ASC", "Owner=me"}) {
    EXPECT_FALSE(IsKnownAttribute(pair)) << pair;
    EXPECT_EQ(CheckerAnswer(pair), ERROR_ATTEMPT_MODIFY_TABLE_CUSTOMATTR_STYLE) << pair;
  }
}

TEST(AttributeSpelling, CorrectsSpacesCaseAndTypos) {
  EXPECT_EQ(CorrectedAttribute(" ListNum = 10 "), "ListNum=10");
  EXPECT_EQ(CorrectedAttribute("ListNum= 10"), "ListNum=10");
  EXPECT_EQ(CorrectedAttribute("tabletype=list"), "TableType=LIST");
  EXPECT_EQ(CorrectedAttribute("TableTyp=SORT_LIST"), "TableType=SORTLIST");
  EXPECT_EQ(CorrectedAttribute("DataProtocol=TVL"), "DataProtocol=TLV");
  for (const char* const pair : {"", " ", "=", "ListNum", "ListNum=", "ListNum=ten", "ListNum=0", "TableType=HEAP", "Owner=me"}) {
    EXPECT_EQ(CorrectedAttribute(pair), std::nullopt) << pair;
  }
}

TEST(AttributeSpelling, CorrectsAWholeText) {
  EXPECT_EQ(CorrectedAttributes("TableType=LIST; ListNum = 10;"), "TableType=LIST;ListNum=10");
  EXPECT_EQ(CorrectedAttributes(";;ListNum=1"), "ListNum=1");
  EXPECT_EQ(CorrectedAttributes("TableType=LIST;Owner=me"), std::nullopt);
  EXPECT_EQ(CorrectedAttributes(""), std::nullopt);
}

TEST(AttributeSpelling, SaysWhatToWrite) {
  EXPECT_EQ(AttributeSuggestion(" ListNum = 10"), "write 'ListNum=10', without spaces");
  EXPECT_EQ(AttributeSuggestion("listnum = 10"), "write 'ListNum=10'");
  EXPECT_EQ(AttributeSuggestion("listnum=ten"), "give ListNum a number: 1 to 2147483647");
  EXPECT_EQ(AttributeSuggestion("TableType="), "give TableType one of these values: GENERIC, LIST, SORTLIST");
  EXPECT_EQ(AttributeSuggestion("Owner=me"), "remove it; known attributes are TableType, ListNum, SortRule, DataProtocol");
  EXPECT_EQ(AttributeSuggestion("  "), "remove the extra ';'");
}

}  // namespace
}  // namespace report_test
