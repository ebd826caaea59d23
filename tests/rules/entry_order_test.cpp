// CompareOrder.

#include "rules/rule_test.h"

namespace rules {
namespace {

using Names = std::vector<std::string>;

constexpr char kRule[] = "CompareOrder";
constexpr char kLookup[] = "CheckWhetherExistEntry";

std::vector<Field> Fields(const Names& names) {
  std::vector<Field> fields;
  for (const std::string& name : names) fields.push_back({.name = name});
  return fields;
}
Library Old(const Names& names) { return Of({{.name = "mall%s", .fields = Fields(names)}}); }
Library New(const Names& names) { return Of({{.name = "shop%s", .fields = Fields(names)}}); }

Call Order(const Library& old_library, const Library& new_library) {
  return Between(old_library, new_library,
                 [](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.CompareOrder(old_schema.Meta(), new_schema.Meta(), log);
                 });
}

Outcome Moved(const std::string& entry, const std::string& meta = "mall%s") {
  return Refused(-8, kRule, "Order of the entry can't be modified! entry:'" + entry + "' meta:'" + meta + "'");
}

std::vector<Row> Rows() {
  const Outcome null_meta = Refused(-1, kRule, "Invalid parameter, meta is null");
  const Library old_three = Old({"e1", "e2", "e%3"});
  const std::string empty_old = "Table dose not have entry, table:'mall%s'";
  const std::string bad = "Entry_name or meta is invalid";
  return {
      {"null_old_meta", Order(Absent(), New({})), null_meta},
      {"null_new_meta", Order(Old({}), Absent()), null_meta},
      {"new_without_entries", Order(old_three, New({})), {}},
      {"new_with_negative_entry_number", Order(old_three, New({"e2"}).With(support::EntryNumber("shop%s", -1))), {}},
      {"same", Order(old_three, New({"e1", "e2", "e%3"})), {}},
      {"added_everywhere", Order(old_three, New({"x1", "e1", "e2", "x2", "e%3", "x3"})), {}},
      {"added_in_front", Order(old_three, New({"x1", "x2", "e1", "e2", "e%3"})), {}},
      {"last_two_swapped", Order(old_three, New({"e1", "e%3", "e2"})), Moved("e%3")},
      {"first_two_swapped", Order(old_three, New({"e2", "e1", "e%3"})), Moved("e2")},
      {"moved_after_an_added_one", Order(old_three, New({"x1", "e2", "e1", "e%3"})), Moved("e2")},
      {"middle_removed", Order(old_three, New({"e1", "e%3"})), Moved("e%3")},
      {"last_removed", Order(old_three, New({"e1", "e2"})), {}},
      {"middle_renamed", Order(old_three, New({"e1", "y", "e%3"})), Moved("e%3")},
      {"last_renamed", Order(old_three, New({"e1", "e2", "y"})), {}},
      {"kept_name_is_duplicated", Order(old_three, New({"e1", "e1"})), Moved("e1")},
      {"no_entry_kept", Order(old_three, New({"x", "y"})), {}},
      {"old_without_entries",
       Order(Old({}), New({"x", "y"})),
       {0, empty_old, {Error(kLookup, empty_old), Error(kLookup, empty_old)}}},
      {"nameless_new_entry_counts_as_added",
       Order(old_three, New({"x", "e1"}).With(support::NoName("shop%s", "x"))),
       {0, bad, {Error(kLookup, bad)}}},
      {"nameless_old_entry", Order(old_three.With(support::NoName("mall%s", "e1")), New({"e1", "e2"})), Moved("e2")},
      {"nameless_meta", Order(old_three.With(support::NoTableName("mall%s")), New({"e2"})), Moved("e2", "(null)")},
  };
}

// A table whose entry "items" is composite, between others.
Library Boxed(const std::string& table, const Names& before, const std::string& box, const Names& members,
              enQMXType kind = QMX_TYPE_STRUCT) {
  std::vector<Field> fields = Fields(before);
  fields.push_back({.name = "items", .type = box});
  fields.push_back({.name = "tail"});
  return Of({{.name = table, .fields = fields}, {.name = box, .fields = Fields(members), .kind = kind}});
}

std::vector<Row> StructureRows() {
  const Outcome null_meta = Refused(-1, kRule, "Invalid parameter, meta is null");
  const Library old_box = Boxed("mall%s", {}, "box%s", {"a", "b"});
  const Library same_box = Boxed("shop%s", {}, "bag%s", {"a", "b"});
  const Library simple = New({"items", "tail"});
  return {
      {"kept", Order(old_box, same_box), {}},
      {"members_swapped", Order(old_box, Boxed("shop%s", {}, "bag%s", {"b", "a"})), Moved("b", "box%s")},
      {"members_of_a_union_swapped",
       Order(Boxed("mall%s", {}, "box%s", {"a", "b"}, QMX_TYPE_UNION), Boxed("shop%s", {}, "bag%s", {"b", "a"}, QMX_TYPE_UNION)),
       Moved("b", "box%s")},
      {"counter_starts_again_inside", Order(old_box, Boxed("shop%s", {"x", "y"}, "bag%s", {"a", "b"})), {}},
      {"counter_inside_does_not_reach_outside", Order(old_box, Boxed("shop%s", {}, "bag%s", {"x", "a", "b"})), {}},
      {"own_place_before_the_members",
       Order(Boxed("mall%s", {"k"}, "box%s", {"a", "b"}), Boxed("shop%s", {}, "bag%s", {"b", "a"})), Moved("items")},
      {"goes_on_after_a_structure",
       Order(old_box, Of({{.name = "shop%s", .fields = {{"items", "bag%s"}, {"items"}}},
                          {.name = "bag%s", .fields = Fields({"a", "b"})}})),
       Moved("items")},
      {"null_old_structure", Order(old_box.With(support::NoStructure("mall%s", "items")), same_box), null_meta},
      {"null_new_structure", Order(old_box, same_box.With(support::NoStructure("shop%s", "items"))), null_meta},
      {"no_longer_composite", Order(old_box, simple), null_meta},
      {"composite_only_now_is_not_descended_into", Order(Old({"items", "tail"}), same_box), {}},
      {"structure_without_entries",
       Order(Boxed("mall%s", {}, "box%s", {}), Boxed("shop%s", {}, "bag%s", {"x"})),
       {0, "Table dose not have entry, table:'box%s'", {Error(kLookup, "Table dose not have entry, table:'box%s'")}}},
  };
}

INSTANTIATE_TEST_SUITE_P(Order, RuleTest, testing::ValuesIn(Rows()), RowName);
INSTANTIATE_TEST_SUITE_P(OrderStructure, RuleTest, testing::ValuesIn(StructureRows()), RowName);

// Two metas of one library: the middle structure is the new one of one pair and the old one of the next.
TEST(Order, StructureMayBeOldInOnePairAndNewInTheNext) {
  const auto box = [](const std::string& name) {
    Table table{.name = name, .fields = Fields({"e1", "e2", "e3", "e4", "e5", "e6", "e7", "e8", "e9"})};
    table.fields[3].type = "leaf";
    return table;
  };
  const Schema schema = Of({{.name = "leaf", .fields = Fields({"x"})},
                            box("a"),
                            box("b"),
                            box("c"),
                            {.name = "mall%s", .fields = {{"first", "b"}, {"second", "a"}}},
                            {.name = "shop%s", .fields = {{"first", "c"}, {"second", "b"}}}})
                            .Build();
  ModifyTable checker;
  EXPECT_EQ(checker.CompareOrder(schema.Meta("mall%s"), schema.Meta("shop%s"), nullptr), 0);
  EXPECT_STREQ(checker.GetErrType(), "");
}

TEST(Order, InnerRefusalComesBeforeNextEntry) {
  const Library old_library = Boxed("mall%s", {}, "box%s", {"a", "b"});
  Library new_library = Boxed("shop%s", {}, "bag%s", {"b", "a"});
  new_library.tables[0].fields.insert(new_library.tables[0].fields.end() - 1, {.name = "items"});
  EXPECT_EQ(OutcomeOf(Order(old_library, new_library)), Moved("b", "box%s"));
}

}  // namespace
}  // namespace rules
