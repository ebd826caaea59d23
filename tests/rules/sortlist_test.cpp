// CompareSortListInfo on tables whose attributes CheckTable parses.

#include "rules/list_table.h"

namespace rules {
namespace {

constexpr char kSort[] = "CompareSortListInfo";
constexpr char kList8[] = "TableType=LIST;ListNum=8";

// Two tables of different names: the source's and the destination's.
Library Source(std::optional<std::string> attr, std::optional<std::string> level = {}, std::optional<std::string> score = {}) {
  return Mall(std::move(attr), std::move(level), std::move(score));
}
Library Destination(std::optional<std::string> attr, std::optional<std::string> level = {},
                    std::optional<std::string> score = {}) {
  Library library = Mall(std::move(attr), std::move(level), std::move(score));
  library.tables[0].name = "shop%s";
  return library;
}

Call SortList(const Library& source, const Library& destination) {
  return Between(source, destination, [](ModifyTable& checker, const Schema& src, const Schema& dst, auto log) {
    return checker.CompareSortListInfo(support::TableName("mall%s").c_str(), support::TableName("shop%s").c_str(), src.Lib(),
                                       dst.Lib(), log);
  });
}

std::vector<Row> SortRows() {
  const std::string sort = "TableType=SORTLIST;ListNum=8";
  const Library list = Source(kList8), plain = Source({});
  return {
      {"both_without", SortList(plain, Destination({})), {}},
      {"gains_list", SortList(plain, Destination(kList8)), {}},
      {"gains_sorted_list", SortList(plain, Destination(sort, "sort=1")),
       Refused(-3, kSort, "Can't modify table type (table:shop%s) from others to sortlist ")},
      {"loses_the_attributes", SortList(list, Destination({})),
       Refused(-15, kSort, "Can't change table mall%s from new format to old format")},
      {"one_sort_field_fewer", SortList(Source(sort, "sort=1", "sort=2"), Destination(sort, "sort=1")),
       Refused(-6, kSort, "Can't change sort_field_num from 2 to 1")},
      {"one_sort_field_more", SortList(Source(sort, "sort=1"), Destination(sort, "sort=1", "sort=2")), {}},
      {"list_becomes_sorted", SortList(list, Destination(sort, "sort=1")), {}},
      {"nothing_else_is_compared",
       SortList(Source(sort + ";SortRule=DESC;DataProtocol=QMX", "sort=1"),
                Destination("TableType=SORTLIST;ListNum=2;SortRule=INSC;DataProtocol=TLV", "x", "sort=1")),
       {}},
      {"generic_source", SortList(Source("TableType=GENERIC"), Destination(kList8)), {}},
  };
}

INSTANTIATE_TEST_SUITE_P(SortList, RuleTest, testing::ValuesIn(SortRows()), RowName);

TEST(SortList, FaultyAttributesAreReportedWithCheckTablesText) {
  const Library good_source = Source(kList8), good_destination = Destination(kList8);
  const Library bad_source = Source("TableType=HEAP"), bad_destination = Destination("ListNum=8;Foo=1");
  EXPECT_EQ(OutcomeOf(SortList(bad_source, good_destination)), Refused(-1, kSort, TableText(bad_source, "mall%s")));
  EXPECT_EQ(OutcomeOf(SortList(good_source, bad_destination)), Refused(-2, kSort, TableText(bad_destination, "shop%s")));
  EXPECT_EQ(OutcomeOf(SortList(bad_source, bad_destination)).code, -1);
}

}  // namespace
}  // namespace rules
