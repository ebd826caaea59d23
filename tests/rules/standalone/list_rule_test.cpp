// CheckListMetaInfo and CompareSortListInfo with given results of CheckTable.

#include "rules/standalone/stand_in_test.h"

namespace standalone {
namespace {

constexpr char kRule[] = "CheckListMetaInfo";
constexpr char kSort[] = "CompareSortListInfo";

const TableFacts kOldKind = {.result = -46};

TableFacts Kind(int type, int number = 8) { return {.result = 0, .type = type, .number = number}; }
TableFacts Sorted(int fields, int rule = 0) {
  return {.result = 0, .type = 2, .number = 8, .sort_fields = fields, .sort_rule = rule};
}
TableFacts Protocol(const std::string& name) { return {.result = 0, .type = 1, .number = 8, .protocol = name}; }

std::string Seen(int old_type, int new_type) {
  return Info(kRule, "CheckListMetaInfo(mall%s) old_table_type:" + std::to_string(old_type) +
                         ",new_table_type:" + std::to_string(new_type));
}

Outcome Passed(int old_type, int new_type) { return {.log = {Seen(old_type, new_type)}}; }
Outcome Differs(int code, int old_type, int new_type, const std::string& text) {
  return {code, text, {Seen(old_type, new_type), Error(kRule, text)}};
}

struct ListRow {
  const char* name;
  TableFacts old_side;
  TableFacts new_side;
  int maybe_type;
  int maybe_number;
  Outcome expected;
};

void PrintTo(const ListRow& row, std::ostream* out) { *out << row.name; }
std::string ListRowName(const testing::TestParamInfo<ListRow>& info) { return info.param.name; }

class ListRule : public testing::TestWithParam<ListRow>, protected NewWorld {
 protected:
  FakeLibrary old_{"old"};
  FakeLibrary new_{"new"};
};

TEST_P(ListRule, HasExpectedOutcome) {
  const ListRow& row = GetParam();
  old_.table = row.old_side;
  new_.table = row.new_side;
  const auto call = [&](ModifyTable& checker, auto log) {
    return checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), log, row.maybe_type, row.maybe_number);
  };
  EXPECT_EQ(OutcomeOf(call), row.expected);
}

std::vector<ListRow> GainRows() {
  const Outcome sorted = Refused(-3, kRule, "Can't modify table type (table:mall%s) from others to sortlist ");
  const auto type = [](const std::string& from, const std::string& to) {
    return Refused(-4, kRule, "Can't change table_type(table:mall%s) from " + from + " to " + to);
  };
  const auto number = [](int from, int to) {
    return Refused(-5, kRule,
                   "Can't change table_list_num(table:mall%s) from " + std::to_string(from) + " to " + std::to_string(to));
  };
  return {
      {"both_old_kind", kOldKind, kOldKind, 7, -7, {}},
      {"sorted_first", kOldKind, Sorted(1), 0, 9, sorted},
      {"sorted_even_if_the_server_holds_it", kOldKind, Sorted(2), 1, 8, sorted},
      {"sort_fields_negative_are_none", kOldKind, {.result = 0, .type = 1, .number = 8, .sort_fields = -1}, 1, 8, {}},
      {"type_two_is_a_list", kOldKind, Kind(2), 1, 8, {}},
      {"callers_two_is_not", kOldKind, Kind(2), 2, 8, type("LIST", "LIST")},
      {"the_callers_two_matches_no_list", kOldKind, Kind(1), 2, 8, type("LIST", "LIST")},
      {"type_three_is_no_list", kOldKind, Kind(3), 1, 8, type("LIST", "LIST")},
      {"equal_odd_types", kOldKind, Kind(3), 3, 9, {}},
      {"negative_type", kOldKind, Kind(-1), 0, 8, type("GENERIC", "LIST")},
      {"generic_on_the_server", kOldKind, Kind(1), 0, 8, type("GENERIC", "LIST")},
      {"type_before_number", kOldKind, Kind(1), 0, 9, type("GENERIC", "LIST")},
      {"number_larger", kOldKind, Kind(1, 9), 1, 8, number(8, 9)},
      {"number_smaller", kOldKind, Kind(1, 7), 1, 8, number(8, 7)},
      {"number_is_not_compared_for_generic", kOldKind, Kind(0, 9), 0, 8, {}},
      {"number_is_compared_for_a_folded_type", kOldKind, Kind(2, 9), 1, 8, number(8, 9)},
      {"back_to_the_old_kind", Kind(1), kOldKind, 1, 8,
       Refused(-15, kRule, "Can't change table mall%s from new format to old format")},
  };
}

std::vector<ListRow> KeepRows() {
  const std::string rule_text = "Can't change sort_rule from ";
  TableFacts everything = Sorted(2, 1), nothing = Sorted(1, 0);
  everything.protocol = "QMX";
  everything.number = 9;
  nothing.protocol = "TLV";
  TableFacts same_number = nothing, same_fields = nothing, same_rule = nothing;
  same_number.number = same_fields.number = same_rule.number = 9;
  same_fields.sort_fields = same_rule.sort_fields = 2;
  same_rule.sort_rule = 1;
  return {
      {"same", Kind(1), Kind(1), 7, 7, Passed(1, 1)},
      {"one_and_two_are_both_lists", Kind(1), Kind(2), 0, 0, Passed(1, 2)},
      {"two_and_one_are_both_lists", Kind(2), Kind(1), 0, 0, Passed(2, 1)},
      {"three_is_not_folded", Kind(1), Kind(3), 0, 0, Differs(-4, 1, 3, "Can't change table type from LIST to LIST")},
      {"generic_to_two", Kind(0), Kind(2), 0, 0, Differs(-4, 0, 2, "Can't change table type from GENERIC to LIST")},
      {"negative_to_generic", Kind(-1), Kind(0), 0, 0, Differs(-4, -1, 0, "Can't change table type from LIST to GENERIC")},
      {"number_grows", Kind(1, 10), Kind(1, 12), 0, 0, Passed(1, 1)},
      {"number_shrinks", Kind(1, 12), Kind(1, 10), 0, 0, Differs(-5, 1, 1, "Can't reduce list_num from 12 to 10")},
      {"number_shrinks_below_zero", Kind(0, 0), Kind(0, -1), 0, 0, Differs(-5, 0, 0, "Can't reduce list_num from 0 to -1")},
      {"sort_fields_more", Sorted(1), Sorted(2), 0, 0, Differs(-6, 2, 2, "Can't change sort_field_num from 1 to 2")},
      {"sort_fields_less", Sorted(2), Sorted(1), 0, 0, Differs(-6, 2, 2, "Can't change sort_field_num from 2 to 1")},
      {"sort_rule_0_to_1", Sorted(1, 0), Sorted(1, 1), 0, 0, Differs(-15, 2, 2, rule_text + "INSC to DESC")},
      {"sort_rule_1_to_0", Sorted(1, 1), Sorted(1, 0), 0, 0, Differs(-15, 2, 2, rule_text + "DESC to INSC")},
      {"sort_rule_counts_without_sort_fields", Sorted(0, 0), Sorted(0, 1), 0, 0, Differs(-15, 2, 2, rule_text + "INSC to DESC")},
      {"protocol_gained", Protocol(""), Protocol("TLV"), 0, 0, Passed(1, 1)},
      {"protocol_kept", Protocol("QMX"), Protocol("QMX"), 0, 0, Passed(1, 1)},
      {"protocol_lost", Protocol("QMX"), Protocol(""), 0, 0, Differs(-16, 1, 1, "Can't change DataProtocolType from QMX to ")},
      {"protocol_changed", Protocol("QMX"), Protocol("TLV"), 0, 0,
       Differs(-16, 1, 1, "Can't change DataProtocolType from QMX to TLV")},
      {"protocol_in_other_letter_case", Protocol("QMX"), Protocol("qmx"), 0, 0,
       Differs(-16, 1, 1, "Can't change DataProtocolType from QMX to qmx")},
      {"protocol_of_seven_bytes", Protocol("%s%n%dx"), Protocol("%s%n%dy"), 0, 0,
       Differs(-16, 1, 1, "Can't change DataProtocolType from %s%n%dx to %s%n%dy")},
      {"type_before_number", Kind(0, 9), Kind(1, 8), 0, 0, Differs(-4, 0, 1, "Can't change table type from GENERIC to LIST")},
      {"number_before_sort_fields", everything, nothing, 0, 0, Differs(-5, 2, 2, "Can't reduce list_num from 9 to 8")},
      {"sort_fields_before_sort_rule", everything, same_number, 0, 0,
       Differs(-6, 2, 2, "Can't change sort_field_num from 2 to 1")},
      {"sort_rule_before_protocol", everything, same_fields, 0, 0, Differs(-15, 2, 2, rule_text + "DESC to INSC")},
      {"protocol_before_attributes", everything, same_rule, 0, 0,
       Differs(-16, 2, 2, "Can't change DataProtocolType from QMX to TLV")},
      {"table_missing_after_the_attributes", Sorted(1), Sorted(1), 0, 0, Passed(2, 2)},
  };
}

INSTANTIATE_TEST_SUITE_P(Gain, ListRule, testing::ValuesIn(GainRows()), ListRowName);
INSTANTIATE_TEST_SUITE_P(Keep, ListRule, testing::ValuesIn(KeepRows()), ListRowName);

using List = StandInTest;

TEST_F(List, SortRulesOneAndTwoDifferAlthoughBothAreNamedDESC) {
  old_.table = Sorted(1, 1);
  new_.table = Sorted(1, 2);
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) {
              return checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), log, 0, 0);
            }),
            Differs(-15, 2, 2, "Can't change sort_rule from DESC to DESC"));
}

TEST_F(List, LongTableNamesAreTruncatedInTheBufferOnly) {
  const std::string table(2000, 'm');
  const auto outcome = [&] {
    return OutcomeOf([&](ModifyTable& checker, auto log) {
      return checker.CheckListMetaInfo(table.c_str(), old_.Lib(), new_.Lib(), log, 1, 8);
    });
  };
  const auto cut = [](int code, const std::string& text) { return Refused(code, kRule, text.substr(0, 1023)); };
  new_.table = Sorted(1);
  EXPECT_EQ(outcome(), cut(-3, "Can't modify table type (table:" + table));
  new_.table = Kind(0);
  EXPECT_EQ(outcome(), cut(-4, "Can't change table_type(table:" + table));
  new_.table = Kind(1, 9);
  EXPECT_EQ(outcome(), cut(-5, "Can't change table_list_num(table:" + table));
  new_.table = kOldKind;
  old_.table = Kind(1);
  EXPECT_EQ(outcome(), cut(-15, "Can't change table " + table));
  new_.table = Kind(1);
  EXPECT_EQ(outcome().log, Texts{Info(kRule, "CheckListMetaInfo(" + table + ") old_table_type:1,new_table_type:1")});
}

// CompareSortListInfo, which compares less.
class SortListRule : public ListRule {};

TEST_P(SortListRule, HasExpectedOutcome) {
  const ListRow& row = GetParam();
  old_.table = row.old_side;
  new_.table = row.new_side;
  const auto call = [&](ModifyTable& checker, auto log) {
    return checker.CompareSortListInfo("mall%s", "shop%s", old_.Lib(), new_.Lib(), log);
  };
  EXPECT_EQ(OutcomeOf(call), row.expected);
}

std::vector<ListRow> SortRows() {
  TableFacts other = Protocol("QMX");
  other.sort_rule = 1;
  return {
      {"both_old_kind", kOldKind, kOldKind, 0, 0, {}},
      {"gains_sort_fields", kOldKind, Sorted(1), 0, 0,
       Refused(-3, kSort, "Can't modify table type (table:shop%s) from others to sortlist ")},
      {"gains_attributes", kOldKind, Kind(1), 0, 0, {}},
      {"gains_negative_sort_fields", kOldKind, Sorted(-1), 0, 0, {}},
      {"loses_attributes", Kind(1), kOldKind, 0, 0,
       Refused(-15, kSort, "Can't change table mall%s from new format to old format")},
      {"more_sort_fields", Sorted(2), Sorted(3), 0, 0, {}},
      {"same_sort_fields", Sorted(3), Sorted(3, 1), 0, 0, {}},
      {"fewer_sort_fields", Sorted(3), Sorted(2), 0, 0, Refused(-6, kSort, "Can't change sort_field_num from 3 to 2")},
      {"types_numbers_rules_and_protocols_are_not_compared", Kind(0, 99), other, 0, 0, {}},
  };
}

INSTANTIATE_TEST_SUITE_P(SortList, SortListRule, testing::ValuesIn(SortRows()), ListRowName);

TEST_F(List, LongTableNamesAreTruncatedForSortLists) {
  const std::string source(2000, 's'), destination(2000, 'd');
  const auto outcome = [&] {
    return OutcomeOf([&](ModifyTable& checker, auto log) {
      return checker.CompareSortListInfo(source.c_str(), destination.c_str(), old_.Lib(), new_.Lib(), log);
    });
  };
  new_.table = Sorted(1);
  EXPECT_EQ(outcome(), Refused(-3, kSort, ("Can't modify table type (table:" + destination).substr(0, 1023)));
  new_.table = kOldKind;
  old_.table = Kind(1);
  EXPECT_EQ(outcome(), Refused(-15, kSort, ("Can't change table " + source).substr(0, 1023)));
}

}  // namespace
}  // namespace standalone
