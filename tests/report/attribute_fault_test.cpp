// Which attribute or sort field the checker's text is about.
#include "analysis/findings/attribute_fault.h"

#include <gtest/gtest.h>

#include "analysis/findings/run_checker.h"
#include "read_source.h"
#include "report/result/text_ranges.h"

namespace report_test {
namespace {

using korvel::AttributeFault;
using korvel::Source;

// A table with these attributes, and with fields a, b ... of type int32 that have these marks. "double " before a mark is a type.
Source TableWith(const std::string& attributes, const std::vector<std::string>& marks) {
  std::string entries = "<entry name=\"k\" type=\"int32\"/>";
  for (std::size_t i = 0; i < marks.size(); ++i) {
    const bool is_double = marks[i].starts_with("double ");
    entries += "<entry name=\"" + std::string(1, static_cast<char>('a' + i)) + "\" type=\"" + (is_double ? "double" : "int32") +
               "\" customattr2=\"" + marks[i].substr(is_double ? 7 : 0) + "\"/>";
  }
  return ReadSource("t.xml", "<metalib name=\"m\" version=\"1\"><meta name=\"a%sb\" customattr=\"" + attributes + "\">" +
                                 entries + "<primarykey entries=\"k\"/></meta></metalib>");
}

// "[TEXT] SUGGESTION": the text at the fault that the checker reports; of a sort field, with its name.
std::string FaultOf(const std::string& attributes, const std::vector<std::string>& marks = {}) {
  const Source source = TableWith(attributes, marks);
  const korvel::Settings settings{.type = 1, .created_as = 1};
  const korvel::Verdict verdict = korvel::RunChecker(source.Library(), source.Library(), "a%sb", settings);
  const std::optional<AttributeFault> fault = FindAttributeFault(source, "a%sb", verdict.text);
  if (!fault) return verdict.Refused() ? "not found: " + verdict.text : "allowed";
  const auto range = korvel::FindTextRanges({fault->location}).at(0);
  const std::string_view text = source.text->Bytes();
  const bool is_field = fault->location.element.kind == qmx::ElementId::Kind::kEntry;
  const std::string name = is_field ? "kabcdefg"[fault->location.element.item] + std::string(" ") : "";
  return name + "[" + std::string(text.substr(range->span.begin, range->span.end - range->span.begin)) + "] " + fault->suggestion;
}

TEST(AttributeFault, NoneInValidAttributes) {
  EXPECT_EQ(FaultOf("TableType=LIST;ListNum=1"), "allowed");
  EXPECT_EQ(FaultOf("TableType=SORTLIST;ListNum=1", {"sort=2", "x", "sort=1"}), "allowed");
}

TEST(AttributeFault, IsInOneAttribute) {
  EXPECT_EQ(FaultOf("TableType=LIST; ListNum=1"), "[ ListNum=1] write 'ListNum=1', without spaces");
  EXPECT_EQ(FaultOf("TableType=LIST ;ListNum=1"), "[TableType=LIST ] write 'TableType=LIST', without spaces");
  EXPECT_EQ(FaultOf("TableType = LIST;ListNum=1"), "[TableType = LIST] write 'TableType=LIST', without spaces");
  EXPECT_EQ(FaultOf("TableType=List;ListNum=1"), "[TableType=List] write 'TableType=LIST'");
  EXPECT_EQ(FaultOf("TableType=LIST;listnum=1;x=y"), "[listnum=1] write 'ListNum=1'");
  EXPECT_EQ(FaultOf("TableType=LIST;ListNumber=1"),
            "[ListNumber=1] remove it; known attributes are TableType, ListNum, SortRule, "
            "DataProtocol");
  EXPECT_EQ(FaultOf("TableType=LIST;ListNum="), "[ListNum=] give ListNum a number: 1 to 2147483647");
  EXPECT_EQ(FaultOf("TableType=LIST;ListNum=1O;SortRule=X"), "[ListNum=1O] give ListNum a number: 1 to 2147483647");
  EXPECT_EQ(FaultOf("ListNum=1;TableType=%n"), "[TableType=%n] give TableType one of these values: GENERIC, LIST, SORTLIST");
  EXPECT_EQ(FaultOf("TableType&#61;list;ListNum=1"), "[TableType&#61;list] write 'TableType=LIST'");
}

TEST(AttributeFault, IsTheSecondOfTwo) {
  EXPECT_EQ(FaultOf("ListNum=1;TableType=LIST;ListNum=1;x"), "[ListNum=1] give ListNum only once");
  EXPECT_EQ(FaultOf("ListNum=1;TableType=LIST;ListNum=2"), "[ListNum=2] give ListNum only once");
  EXPECT_EQ(FaultOf("ListNum=1;TableType=LIST; listnum=2"), "[ listnum=2] give ListNum only once");
}

TEST(AttributeFault, IsASemicolon) {
  EXPECT_EQ(FaultOf("TableType=GENERIC;"), "[;] remove the extra ';'");
  EXPECT_EQ(FaultOf("TableType=GENERIC;&#59;ListNum=1"), "[&#59;] remove the extra ';'");
  EXPECT_EQ(FaultOf(";TableType=GENERIC"), "[;] remove the extra ';'");
  EXPECT_EQ(FaultOf(";"), "[;] remove the extra ';'");
  EXPECT_EQ(FaultOf("TableType=GENERIC; "), "[ ] remove the extra ';'");
  EXPECT_EQ(FaultOf(" "), "[ ] remove the spaces, or the whole customattr");
}

TEST(AttributeFault, OfMissingListNumIsTheTableType) {
  EXPECT_EQ(FaultOf("SortRule=INSC;TableType=LIST"), "[TableType=LIST] add the number of slots: ListNum=NUMBER");
  EXPECT_EQ(FaultOf("TableType=SORTLIST", {"sort=1"}), "[TableType=SORTLIST] add the number of slots: ListNum=NUMBER");
}

TEST(AttributeFault, IsASortField) {
  const std::string mark = "mark one to four integer fields with customattr2 sort=1, sort=2 and so on";
  const std::string sorted = "TableType=SORTLIST;ListNum=1";
  EXPECT_EQ(FaultOf(sorted, {"sort=1", "sort=x"}), "b [sort=x] " + mark);
  EXPECT_EQ(FaultOf(sorted, {"sort=9", "sort=5"}), "a [sort=9] " + mark) << "the checker stops at the first";
  EXPECT_EQ(FaultOf(sorted, {"sort=1", "x", "sort=1"}), "c [sort=1] " + mark);
  EXPECT_EQ(FaultOf(sorted, {"sort=1", "double sort=2"}), "b [sort=2] " + mark);
  EXPECT_EQ(FaultOf(sorted, {"sort=1", "sort=3"}), "b [sort=3] " + mark);
  EXPECT_EQ(FaultOf(sorted, {"sort=4", "sort=2", "sort=1"}), "a [sort=4] " + mark) << "sort=3 is missing";
  EXPECT_EQ(FaultOf(sorted, {"sort=4", "sort=3", "sort=2", "sort=1", "sort=1"}), "e [sort=1] " + mark);
  EXPECT_EQ(FaultOf(sorted, {"Sort=1"}), "[TableType=SORTLIST] " + mark);
}

TEST(AttributeFault, OfAnotherTextIsNotFound) {
  const Source source = TableWith("TableType=HEAP", {});
  EXPECT_TRUE(FindAttributeFault(source, "a%sb", "TableType is 'HEAP'; allowed: GENERIC, LIST, SORTLIST"));
  EXPECT_FALSE(FindAttributeFault(source, "a%sb", "TableType is 'QUEUE'; allowed: GENERIC, LIST, SORTLIST"));
}

}  // namespace
}  // namespace report_test
