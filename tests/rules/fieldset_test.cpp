// CompareTableField.

#include "rules/rule_test.h"

namespace rules {
namespace {

constexpr char kRule[] = "CompareTableField";

// A table with these fields, and one structure that its fields may use.
Library With(const std::string& table, const std::vector<Field>& fields,
             const Table& box = {.name = "box%s", .fields = {{"x"}}}) {
  return Of({{.name = table, .fields = fields}, box});
}
Library Old(const std::vector<Field>& fields) { return With("mall%s", fields); }
Library New(const std::vector<Field>& fields) { return With("shop%s", fields); }

Call FieldSet(const Library& old_library, const Library& new_library) {
  return Between(old_library, new_library,
                 [](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.CompareTableField(old_schema.Meta(), new_schema.Meta(), log);
                 });
}

std::string Passed(const std::string& table) {
  return Info(kRule, "CompareValueField between new and old table:" + table + " successed");
}

const Outcome kSame = {.log = {Passed("mall%s")}};

Outcome Differs(const std::string& text) { return Refused(-34, kRule, text); }

std::vector<Row> Rows() {
  const Library one = Old({{"uid%d"}}), two = Old({{"uid%d"}, {"zone"}});
  return {
      {"null_old_meta", FieldSet(Absent(), New({{"uid%d"}})), Refused(-1, kRule, "old_meta is NULL!")},
      {"null_new_meta", FieldSet(one, Absent()), Refused(-1, kRule, "new_meta is NULL!")},
      {"null_metas", FieldSet(Absent(), Absent()), Refused(-1, kRule, "old_meta is NULL!")},
      {"one_entry_more", FieldSet(two, New({{"uid%d"}, {"zone"}, {"area"}})),
       Refused(-33, kRule, "mall%s ValueFieldNum(2) is not equal to shop%s ValueFieldNum(3)")},
      {"one_entry_fewer", FieldSet(two, New({{"uid%d"}})),
       Refused(-33, kRule, "mall%s ValueFieldNum(2) is not equal to shop%s ValueFieldNum(1)")},
      {"no_entries", FieldSet(Old({}), New({})), kSame},
      {"same", FieldSet(two, New({{"uid%d"}, {"zone"}})), kSame},
      {"other_order", FieldSet(two, New({{"zone"}, {"uid%d"}})), kSame},
      {"other_name", FieldSet(one, New({{"zone"}})), Differs("can not find value_entry:uid%d in shop%s")},
      {"other_letter_case", FieldSet(one, New({{"UID%d"}})), Differs("can not find value_entry:uid%d in shop%s")},
      {"other_type", FieldSet(one, New({{"uid%d", "int32"}})),
       Differs(
           "mall%s value_entry:uid%d type(7) != shop%s value_entry:uid%d type(6) or src entry count(1) != dst entry count(1) or "
           "src entry size(4) != dst entry size(4)")},
      {"other_count", FieldSet(Old({{.name = "uid%d", .count = 8}}), New({{.name = "uid%d", .count = 16}})),
       Differs(
           "mall%s value_entry:uid%d type(7) != shop%s value_entry:uid%d type(7) or src entry count(8) != dst entry count(16) or "
           "src entry size(4) != dst entry size(4)")},
      {"smaller_unit", FieldSet(Old({{"note", "string", 9}}), New({{"note", "string", 8}})),
       Differs(
           "mall%s value_entry:note type(14) != shop%s value_entry:note type(14) or src entry count(1) != dst entry count(1) or "
           "src entry size(9) != dst entry size(8)")},
      {"unit_size_of_64_bits", FieldSet(one.With(support::UnitSize("mall%s", "uid%d", ~0ULL)), New({{"uid%d"}})),
       Differs(
           "mall%s value_entry:uid%d type(7) != shop%s value_entry:uid%d type(7) or src entry count(1) != dst entry count(1) or "
           "src entry size(18446744073709551615) != dst entry size(4)")},
      {"stops_at_first_difference", FieldSet(two, New({{"area"}, {"far"}})), Differs("can not find value_entry:uid%d in shop%s")},
      {"first_of_a_name_is_used", FieldSet(Old({{"uid%d"}, {"uid%d"}}), New({{"uid%d"}, {"uid%d", "int32"}})), kSame},
      {"nameless_old_entry", FieldSet(one.With(support::NoName("mall%s", "uid%d")), New({{"uid%d"}})),
       Differs("can not find value_entry:(null) in shop%s")},
      {"nameless_new_entry", FieldSet(one, New({{"uid%d"}}).With(support::NoName("shop%s", "uid%d"))),
       Differs("can not find value_entry:uid%d in shop%s")},
      {"nameless_entries_are_not_equal",
       FieldSet(one.With(support::NoName("mall%s", "uid%d")), New({{"uid%d"}}).With(support::NoName("shop%s", "uid%d"))),
       Differs("can not find value_entry:(null) in shop%s")},
      {"nameless_metas",
       FieldSet(two.With(support::NoTableName("mall%s")), New({{"uid%d"}}).With(support::NoTableName("shop%s"))),
       Refused(-33, kRule, "(null) ValueFieldNum(2) is not equal to (null) ValueFieldNum(1)")},
      {"ids_versions_keys_and_attributes_are_not_compared",
       FieldSet(one,
                Of({{.name = "shop%s", .fields = {{.name = "uid%d", .id = 9, .version = 3, .attr2 = "pii"}}, .key = {"uid%d"}}})),
       kSame},
  };
}

// Structures: a union keeps its size when it gains a member, so that the difference is found inside.
Library Boxed(const std::string& table, const std::string& box, const std::vector<Field>& fields,
              enQMXType kind = QMX_TYPE_UNION) {
  return With(table, {{.name = "uid%d", .type = box}, {"rest"}}, {.name = box, .fields = fields, .kind = kind});
}

std::vector<Row> StructureRows() {
  const Library old_box = Boxed("mall%s", "box%s", {{"x"}});
  const Library new_box = Boxed("shop%s", "bag%s", {{"x"}});
  const Library old_struct = Boxed("mall%s", "box%s", {{"x"}, {"y"}}, QMX_TYPE_STRUCT);
  const Library new_struct = Boxed("shop%s", "bag%s", {{"y"}, {"z"}}, QMX_TYPE_STRUCT);
  return {
      {"inner_passes_first", FieldSet(old_box, new_box), {.log = {Passed("box%s"), Passed("mall%s")}}},
      {"inner_gains_an_entry", FieldSet(old_box, Boxed("shop%s", "bag%s", {{"x"}, {"y"}})),
       Refused(-33, kRule, "box%s ValueFieldNum(1) is not equal to bag%s ValueFieldNum(2)")},
      {"inner_of_a_structure_differs", FieldSet(old_struct, new_struct), Differs("can not find value_entry:x in bag%s")},
      {"goes_on_after_a_structure",
       FieldSet(old_box, With("shop%s", {{.name = "uid%d", .type = "bag%s"}, {"other"}},
                              {.name = "bag%s", .fields = {{"x"}}, .kind = QMX_TYPE_UNION})),
       {-34,
        "can not find value_entry:rest in shop%s",
        {Passed("box%s"), Error(kRule, "can not find value_entry:rest in shop%s")}}},
      {"null_old_structure", FieldSet(old_box.With(support::NoStructure("mall%s", "uid%d")), new_box),
       Refused(-1, kRule, "old_meta is NULL!")},
      {"null_new_structure", FieldSet(old_box, new_box.With(support::NoStructure("shop%s", "uid%d"))),
       Refused(-1, kRule, "new_meta is NULL!")},
      {"inner_refusal_before_the_next_entry",
       FieldSet(old_struct,
                With("shop%s", {{.name = "uid%d", .type = "bag%s"}, {"other"}}, {.name = "bag%s", .fields = {{"y"}, {"z"}}})),
       Differs("can not find value_entry:x in bag%s")},
  };
}

INSTANTIATE_TEST_SUITE_P(FieldSet, RuleTest, testing::ValuesIn(Rows()), RowName);
INSTANTIATE_TEST_SUITE_P(FieldSetStructure, RuleTest, testing::ValuesIn(StructureRows()), RowName);

TEST(FieldSet, EveryLevelLogsSuccessInnermostFirst) {
  const auto nested = [](const std::string& table) {
    return Of({{.name = table, .fields = {{"a", "box%s"}, {"b", "box%s"}}},
               {.name = "box%s", .fields = {{"c", "bag%s"}}},
               {.name = "bag%s", .fields = {{"d"}}}});
  };
  const Outcome passed = {.log = {Passed("bag%s"), Passed("box%s"), Passed("bag%s"), Passed("box%s"), Passed("mall%s")}};
  EXPECT_EQ(OutcomeOf(FieldSet(nested("mall%s"), nested("shop%s"))), passed);
}

TEST(FieldSet, GrownUnitIsADifference) {
  EXPECT_EQ(
      OutcomeOf(FieldSet(Old({{"note", "string", 8}}), New({{"note", "string", 16}}))),
      Differs("mall%s value_entry:note type(14) != shop%s value_entry:note type(14) or src entry count(1) != dst entry count(1) "
              "or src entry size(8) != dst entry size(16)"));
}

}  // namespace
}  // namespace rules
