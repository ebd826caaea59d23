// CompareEntrySubMetaFieldTLV: the TLV rules for members of structures, and how their refusals reach the caller.

#include "rules/rule_test.h"

namespace rules {
namespace {

using support::Count;

constexpr char kInside[] = "CompareEntrySubMetaFieldTLV";
constexpr char kById[] = "CheckWhetherExistEntryById";

// A table with one composite entry of fixed size, so that every difference is found inside.
Library Boxed(const std::string& table, const std::string& box, const std::vector<Field>& members,
              const std::vector<std::string>& key) {
  const Library library = {.protocol = qmx::Protocol::kTlv,
                           .tables = {{.name = table, .fields = {{.name = "items", .type = box, .id = 1}}},
                                      {.name = box, .fields = members, .key = key}}};
  return library.With(support::UnitSize(table, "items", 64));
}
Library Old(const std::vector<Field>& members, const std::vector<std::string>& key = {}) {
  return Boxed("mall%s", "box%s", members, key);
}
Library New(const std::vector<Field>& members) { return Boxed("shop%s", "bag%s", members, {}); }

Field Id(const std::string& name, int id) { return {.name = name, .id = id}; }
Field Text(const std::string& name, int id, std::uint64_t size) {
  return {.name = name, .type = "string", .size = size, .id = id};
}

Call Fields(const Library& old_library, const Library& new_library) {
  return Between(old_library, new_library,
                 [](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   // The caller gives the table the same name on both sides; no rule requires it.
                   return checker.CompareEntryValueFieldTLV(old_schema.Meta(), new_schema.Meta(), log);
                 });
}

Outcome Broken(const std::string& text) { return Refused(-3, kInside, text); }
Outcome BrokenType(int id) {
  return Broken("The type of entry can't be modified!  entry_id:'" + std::to_string(id) + "' metaname:'box%s'");
}
Outcome Reduced(const std::string& entry) {
  return Broken("The size of entry can't be reduced! entry:'" + entry + "' metaname:'box%s'");
}
Outcome Fewer(const std::string& entry) {
  return Broken("The count of entry can't be reduced! entry:'" + entry + "' metaname:'box%s'");
}

std::vector<Row> Rows() {
  const Library old_x = Old({Id("x%d", 4)});
  const Outcome null_meta = Broken("Invalid parameter, meta is null");
  const std::string empty = "Table dose not have entry, table:'bag%s'";
  const std::string bad = "Entry_name or meta is invalid";
  Library old_union = old_x, new_union = New({{.name = "x%d", .type = "int32", .id = 4}});
  old_union.tables[1].kind = new_union.tables[1].kind = QMX_TYPE_UNION;
  Library attribute = New({Id("x%d", 4)});
  attribute.tables[1].fields[0].attr2 = "pii";
  return {
      {"same", Fields(old_x, New({Id("x%d", 4)})), {}},
      {"null_old_structure", Fields(old_x.With(support::NoStructure("mall%s", "items")), New({Id("x%d", 4)})), null_meta},
      {"null_new_structure", Fields(old_x, New({Id("x%d", 4)}).With(support::NoStructure("shop%s", "items"))), null_meta},
      {"old_without_members", Fields(Old({}), New({})), {}},
      {"new_without_members",
       Fields(Old({Id("x%d", 4), Id("y", 5)}), New({})),
       {0, empty, {Error(kById, empty), Error(kById, empty)}}},
      {"member_removed", Fields(Old({Id("x%d", 4), Id("y", 5)}), New({Id("y", 5)})), {}},
      {"member_renamed", Fields(old_x, New({Id("z", 4)})), {}},
      {"member_with_another_id", Fields(old_x, New({{.name = "x%d", .type = "int32", .id = 5}})), {}},
      {"member_with_a_negative_id", Fields(Old({Id("x%d", -1)}), New({Id("x%d", -1)})), {0, bad, {Error(kById, bad)}}},
      {"search_goes_on_after_a_removed_member",
       Fields(Old({Id("x%d", 4), Id("y", 5)}), New({{.name = "y", .type = "int32", .id = 5}})), BrokenType(5)},
      {"other_type", Fields(old_x, New({{.name = "x%d", .type = "int32", .id = 4}})), BrokenType(4)},
      {"other_type_in_a_union", Fields(old_union, new_union), BrokenType(4)},
      {"grows", Fields(Old({Text("x%d", 4, 8)}), New({Text("x%d", 4, 9)})), {}},
      {"shrinks", Fields(Old({Text("x%d", 4, 8)}), New({Text("x%d", 4, 7)})), Reduced("x%d")},
      {"shrinks_and_renamed", Fields(Old({Text("x%d", 4, 8)}), New({Text("z", 4, 7)})), Reduced("x%d")},
      {"sizes_are_unsigned", Fields(old_x.With(support::UnitSize("box%s", "x%d", 1ULL << 63)), New({Id("x%d", 4)})),
       Reduced("x%d")},
      {"key_membership_is_not_consulted", Fields(Old({Text("x%d", 4, 8)}, {"x%d"}), New({Text("x%d", 4, 9)})), {}},
      {"count_grows_without_refer", Fields(old_x, New({Id("x%d", 4)}).With(Count("bag%s", "x%d", 2))), {}},
      {"count_shrinks", Fields(old_x.With(Count("box%s", "x%d", 2)), New({Id("x%d", 4)})), Fewer("x%d")},
      {"counts_are_signed_grows", Fields(old_x.With(Count("box%s", "x%d", -1)), New({Id("x%d", 4)})), {}},
      {"counts_are_signed_shrinks", Fields(old_x, New({Id("x%d", 4)}).With(Count("bag%s", "x%d", -1))), Fewer("x%d")},
      {"attribute_is_not_compared", Fields(old_x, attribute), {}},
      {"compared_with_the_first_member_of_the_id", Fields(Old({Text("x%d", 4, 8)}), New({Text("a", 4, 7), Text("x%d", 4, 8)})),
       Reduced("x%d")},
      {"nameless_members_are_compared_anyway",
       Fields(Old({Text("x%d", 4, 8)}).With(support::NoName("box%s", "x%d")), New({Text("x%d", 4, 7)})), Reduced("(null)")},
      {"stops_at_first_failure", Fields(Old({Text("x%d", 4, 8), Text("y", 5, 8)}), New({Text("x%d", 4, 7), Text("y", 5, 7)})),
       Reduced("x%d")},
  };
}

INSTANTIATE_TEST_SUITE_P(TlvStructure, RuleTest, testing::ValuesIn(Rows()), RowName);

// Three levels: the innermost member is one level deeper than in the rows above.
Library Deep(const Field& innermost) {
  const Library library = {.protocol = qmx::Protocol::kTlv,
                           .tables = {{.fields = {{.name = "items", .type = "box%s", .id = 1}}},
                                      {.name = "box%s", .fields = {{.name = "in", .type = "bag%s", .id = 2}}},
                                      {.name = "bag%s", .fields = {innermost}}}};
  return library.With(support::UnitSize("mall%s", "items", 64)).With(support::UnitSize("box%s", "in", 64));
}

TEST(TlvStructure, SameRulesApplyAtEveryLevel) {
  EXPECT_EQ(OutcomeOf(Fields(Deep(Text("x", 4, 8)), Deep(Text("z", 4, 9)))), Outcome{});
  EXPECT_EQ(OutcomeOf(Fields(Deep(Text("x", 4, 8)), Deep(Text("x", 4, 7)))),
            Broken("The size of entry can't be reduced! entry:'x' metaname:'bag%s'"));
}

TEST(TlvStructure, MissingInnerStructureBecomesMinusThree) {
  const Library deep = Deep(Id("x", 4));
  EXPECT_EQ(OutcomeOf(Fields(deep, deep.With(support::NoStructure("box%s", "in")))), Broken("Invalid parameter, meta is null"));
}

TEST(TlvStructure, RulesRunInTheirOrder) {
  const Library old_library = Old({{.name = "x", .type = "string", .size = 8, .id = 4, .count = 2}});
  Field worse = {.name = "x", .type = "bytes", .size = 7, .id = 4, .count = 1};
  EXPECT_EQ(OutcomeOf(Fields(old_library, New({worse}))), BrokenType(4));
  worse.type = "string";
  EXPECT_EQ(OutcomeOf(Fields(old_library, New({worse}))), Reduced("x"));
  worse.size = 8;
  EXPECT_EQ(OutcomeOf(Fields(old_library, New({worse}))), Fewer("x"));
}

// A structure that passes ends neither the check of the table nor that of the structure that contains it.
TEST(TlvStructure, RulesContinueAfterStructureThatPasses) {
  const auto library = [](std::uint64_t table_tail, std::uint64_t box_tail) {
    return Of({{.fields = {{.name = "items", .type = "box%s", .id = 1}, Text("tail", 9, table_tail)}},
               {.name = "box%s", .fields = {{.name = "in", .type = "bag%s", .id = 2}, Text("end", 3, box_tail)}},
               {.name = "bag%s", .fields = {Id("x", 4)}}})
        .With(support::UnitSize("mall%s", "items", 64));
  };
  EXPECT_EQ(OutcomeOf(Fields(library(8, 8), library(8, 7))), Reduced("end"));
  EXPECT_EQ(OutcomeOf(Fields(library(8, 8), library(7, 8))),
            Refused(-3, "CompareEntryValueFieldTLV", "The size of entry can't be reduced! entry:'tail' metaname:'mall%s'"));
}

TEST(TlvStructure, CountComesBeforeTheStructureInside) {
  const Library fewer = Deep({.name = "x", .type = "int32", .id = 4});
  EXPECT_EQ(OutcomeOf(Fields(Deep(Id("x", 4)).With(Count("box%s", "in", 2)), fewer)), Fewer("in"));
}

TEST(TlvStructure, NullMetaIsMinusOneIfCalledDirectly) {
  const Outcome null_meta = Refused(-1, kInside, "Invalid parameter, meta is null");
  const auto call = [](const Library& old_library, const Library& new_library) {
    return Between(old_library, new_library,
                   [](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                     return checker.CompareEntrySubMetaFieldTLV(old_schema.Meta(), new_schema.Meta(), log);
                   });
  };
  EXPECT_EQ(OutcomeOf(call(Absent(), New({}))), null_meta);
  EXPECT_EQ(OutcomeOf(call(Old({}), Absent())), null_meta);
}

// The second old structure is compared after all ids of the new one are known: the second entry with an id is not like the first.
TEST(TlvStructure, ComparesFirstWithAnIdInStructureVisitedTwice) {
  std::vector<Field> twice = {Id("a", 1), Id("b", 2), Id("c", 3), Id("d", 4), Id("e", 5),
                              Id("f", 6), Id("g", 7), Id("h", 8), Id("i", 9), {.name = "j", .type = "int64", .id = 6}};
  const std::vector<Field> once = {Id("i", 9), Id("b", 2)};
  const auto library = [](const std::string& first, const std::vector<Table>& boxes) {
    Library made = Of({{.fields = {{.name = "x", .type = first, .id = 1}, {.name = "y", .type = "bag%s", .id = 2}}}});
    made.tables.insert(made.tables.end(), boxes.begin(), boxes.end());
    return made.With(support::UnitSize("mall%s", "x", 64));
  };
  const Library old_library = library("box%s", {{.name = "box%s", .fields = once}, {.name = "bag%s", .fields = twice}});
  const Library new_library = library("bag%s", {{.name = "bag%s", .fields = twice}});
  const Outcome refused = Refused(-3, kInside, "The type of entry can't be modified!  entry_id:'6' metaname:'bag%s'");
  EXPECT_EQ(OutcomeOf(Fields(old_library, new_library)), refused);
}

TEST(TlvStructure, AllowsDeletingMemberButNotField) {
  EXPECT_EQ(OutcomeOf(Fields(Old({Id("x", 4), Id("y", 5)}), New({Id("y", 5)}))).code, 0);
  Library no_items = New({Id("x", 4)});
  no_items.tables[0].fields = {{.name = "rest", .id = 9}};
  no_items.pokes.clear();
  EXPECT_EQ(
      OutcomeOf(Fields(Old({Id("x", 4)}), no_items)),
      Refused(-3, "CompareEntryValueFieldTLV", "The entry:items can't be delete now,it will be supported by korvsvr of 3.28.0!"));
}

}  // namespace
}  // namespace rules
