// CheckListMetaInfo on tables whose attributes CheckTable parses. Conditions that no attributes produce are tested in standalone.

#include <algorithm>

#include "rules/list_table.h"

namespace rules {
namespace {

constexpr char kRule[] = "CheckListMetaInfo";

Call Kind(const Library& old_library, const Library& new_library, int type = 0, int number = 0) {
  return Between(old_library, new_library,
                 [=](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.CheckListMetaInfo(support::TableName("mall%s").c_str(), old_schema.Lib(), new_schema.Lib(), log,
                                                    type, number);
                 });
}

std::string Seen(int old_type, int new_type) {
  return Info(kRule, "CheckListMetaInfo(mall%s) old_table_type:" + std::to_string(old_type) +
                         ",new_table_type:" + std::to_string(new_type));
}

Outcome Passed(int old_type, int new_type) { return {.log = {Seen(old_type, new_type)}}; }

Outcome Differs(int code, int old_type, int new_type, const std::string& text) {
  return {code, text, {Seen(old_type, new_type), Error(kRule, text)}};
}

constexpr char kList8[] = "TableType=LIST;ListNum=8";

std::vector<Row> GainRows() {
  const Library plain = Mall({}), list = Mall(kList8), generic = Mall("TableType=GENERIC");
  const Library sorted = Mall("TableType=SORTLIST;ListNum=8", "sort=1");
  return {
      {"both_without", Kind(plain, plain, 7, 7), {}},
      {"gains_generic", Kind(plain, generic, 0, 7), {}},
      {"gains_list_of_the_servers_length", Kind(plain, list, 1, 8), {}},
      {"gains_list_of_another_length", Kind(plain, list, 1, 9),
       Refused(-5, kRule, "Can't change table_list_num(table:mall%s) from 9 to 8")},
      {"gains_list_if_the_server_has_generic", Kind(plain, list, 0, 8),
       Refused(-4, kRule, "Can't change table_type(table:mall%s) from GENERIC to LIST")},
      {"gains_generic_if_the_server_has_list", Kind(plain, generic, 1, 8),
       Refused(-4, kRule, "Can't change table_type(table:mall%s) from LIST to GENERIC")},
      {"gains_sorted_list", Kind(plain, sorted, 1, 8),
       Refused(-3, kRule, "Can't modify table type (table:mall%s) from others to sortlist ")},
      {"gains_sorted_list_before_the_type", Kind(plain, sorted, 0, 9),
       Refused(-3, kRule, "Can't modify table type (table:mall%s) from others to sortlist ")},
      {"loses_the_attributes", Kind(list, plain, 1, 8),
       Refused(-15, kRule, "Can't change table mall%s from new format to old format")},
  };
}

std::vector<Row> KeepRows() {
  const Library list = Mall(kList8), generic = Mall("TableType=GENERIC");
  const std::string sort = "TableType=SORTLIST;ListNum=8";
  const Library one = Mall(sort, "sort=1"), two = Mall(sort, "sort=1", "sort=2"), two_swapped = Mall(sort, "sort=2", "sort=1");
  return {
      {"same_generic", Kind(generic, generic), Passed(0, 0)},
      {"same_list", Kind(list, list, 0, 9), Passed(1, 1)},
      {"same_sorted_list", Kind(two, two), Passed(2, 2)},
      {"generic_to_list", Kind(generic, list), Differs(-4, 0, 1, "Can't change table type from GENERIC to LIST")},
      {"list_to_generic", Kind(list, generic), Differs(-4, 1, 0, "Can't change table type from LIST to GENERIC")},
      {"longer_list", Kind(list, Mall("TableType=LIST;ListNum=12")), Passed(1, 1)},
      {"shorter_list", Kind(Mall("TableType=LIST;ListNum=12"), list), Differs(-5, 1, 1, "Can't reduce list_num from 12 to 8")},
      {"sorted_to_list_differs_in_sort_fields", Kind(one, list), Differs(-6, 2, 1, "Can't change sort_field_num from 1 to 0")},
      {"list_to_sorted_differs_in_sort_fields", Kind(list, one), Differs(-6, 1, 2, "Can't change sort_field_num from 0 to 1")},
      {"one_sort_field_more", Kind(one, two), Differs(-6, 2, 2, "Can't change sort_field_num from 1 to 2")},
      {"other_sort_rule", Kind(one, Mall(sort + ";SortRule=DESC", "sort=1")),
       Differs(-15, 2, 2, "Can't change sort_rule from INSC to DESC")},
      {"sort_rule_given_as_it_was_meant", Kind(one, Mall(sort + ";SortRule=INSC", "sort=1")), Passed(2, 2)},
      {"protocol_gained", Kind(list, Mall(std::string(kList8) + ";DataProtocol=TLV")), Passed(1, 1)},
      {"protocol_kept", Kind(Mall(std::string(kList8) + ";DataProtocol=TLV"), Mall(std::string(kList8) + ";DataProtocol=TLV")),
       Passed(1, 1)},
      {"protocol_changed", Kind(Mall(std::string(kList8) + ";DataProtocol=QMX"), Mall(std::string(kList8) + ";DataProtocol=TLV")),
       Differs(-16, 1, 1, "Can't change DataProtocolType from QMX to TLV")},
      {"protocol_lost", Kind(Mall(std::string(kList8) + ";DataProtocol=QMX"), list),
       Differs(-16, 1, 1, "Can't change DataProtocolType from QMX to ")},
      {"sort_fields_swapped", Kind(two, two_swapped),
       Differs(-11, 2, 2, "System error:old_customattr2:sort=1,new_customattr2:sort=2")},
      {"another_field_takes_the_place", Kind(one, Mall(sort, {}, "sort=1")), Passed(2, 2)},
      {"field_gains_an_attribute", Kind(one, Mall(sort, "sort=1", "pii")), Passed(2, 2)},
      {"attribute_outside_the_sort_fields_changes", Kind(Mall(sort, "sort=1", "pii"), Mall(sort, "sort=1", "pi%i")),
       Differs(-11, 2, 2, "System error:old_customattr2:pii,new_customattr2:pi%i")},
      {"field_loses_an_attribute", Kind(Mall(sort, "sort=1", "pii"), one), Passed(2, 2)},
      {"attributes_of_an_unsorted_list_are_not_compared", Kind(Mall(kList8, "a"), Mall(kList8, "b")), Passed(1, 1)},
  };
}

INSTANTIATE_TEST_SUITE_P(ListGain, RuleTest, testing::ValuesIn(GainRows()), RowName);
INSTANTIATE_TEST_SUITE_P(ListKeep, RuleTest, testing::ValuesIn(KeepRows()), RowName);

// In a long list fields are found in any order, each with its own attribute.
TEST(List, SortedListWithManyAttributesMayBeReordered) {
  Library old_library = Mall("TableType=SORTLIST;ListNum=8", "sort=1");
  old_library.tables[0].fields[0].attr2 = "of the first";
  for (int i = 0; i < 20; ++i) {
    old_library.tables[0].fields.push_back({.name = "f" + std::to_string(i), .attr2 = "of field " + std::to_string(i)});
  }
  EXPECT_EQ(OutcomeOf(Kind(old_library, old_library)), Passed(2, 2));
  Library new_library = old_library;
  std::reverse(new_library.tables[0].fields.begin(), new_library.tables[0].fields.end());
  EXPECT_EQ(OutcomeOf(Kind(old_library, new_library)), Passed(2, 2));
  new_library.tables[0].fields[3].attr2 = "another";
  EXPECT_EQ(OutcomeOf(Kind(old_library, new_library)),
            Differs(-11, 2, 2, "System error:old_customattr2:of field 16,new_customattr2:another"));
}

// The text is passed on, with old (-1) or new (-2).
TEST(List, FaultyAttributesAreReportedWithCheckTablesText) {
  const Library good = Mall(kList8), bad = Mall("TableType=HEAP");
  const std::string text = TableText(bad, "mall%s");
  EXPECT_EQ(OutcomeOf(Kind(bad, good)), Refused(-1, kRule, text));
  EXPECT_EQ(OutcomeOf(Kind(good, bad)), Refused(-2, kRule, text));
  EXPECT_EQ(OutcomeOf(Kind(bad, bad)), Refused(-1, kRule, text));
}

TEST(List, PercentSignIsKeptAlthoughTextIsAFormat) {
  const Library bad = Mall("TableType=LI%s%%ST%n");
  const Outcome outcome = OutcomeOf(Kind(bad, bad));
  EXPECT_EQ(outcome, Refused(-1, kRule, TableText(bad, "mall%s")));
  EXPECT_NE(outcome.buffer.find("'mall%s'"), std::string::npos) << outcome.buffer;
  EXPECT_NE(outcome.buffer.find("LI%s%%ST%n"), std::string::npos) << outcome.buffer;
}

// Wherever CheckTable truncates its text, the rest is a valid format; an invalid one would leave an empty buffer.
TEST(List, TextOfPercentSignsIsShownWhereverItIsTruncated) {
  for (std::size_t length = 440; length < 560; ++length) {
    const Library bad = Mall("TableType=" + std::string(length % 2, 'x') + std::string(length, '%'));
    const std::string text = OutcomeOf(Kind(bad, bad)).buffer;
    EXPECT_TRUE(text.starts_with("Table attributes")) << length;
    EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; })) << length;
  }
}

}  // namespace
}  // namespace rules
