// CompareVersion. The version of the old library is always 5.

#include <climits>

#include "rules/rule_test.h"

namespace rules {
namespace {

constexpr char kRule[] = "CompareVersion";
constexpr char kLookup[] = "CheckWhetherExistEntry";
constexpr char kEmptyOld[] = "Table dose not have entry, table:'mall%s'";

Library Old(const std::vector<Field>& fields) { return Of({{.name = "mall%s", .fields = fields}}); }
Library New(const std::vector<Field>& fields) { return Of({{.name = "shop%s", .fields = fields}}); }

Field V(const std::string& name, int version) { return {.name = name, .version = version}; }

Call Version(const Library& old_library, const Library& new_library, int old_version = 5) {
  return Between(old_library, new_library,
                 [=](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.CompareVersion(old_schema.Meta(), new_schema.Meta(), old_version, log);
                 });
}

Outcome Changed(const std::string& entry, const std::string& meta) {
  return Refused(-8, kRule, "Version of the entry can't be modified! entry:'" + entry + "' meta:'" + meta + "'");
}

std::string TooOldText(const std::string& entry, const std::string& meta) {
  return "new entry version lower than old metalib version or misspell 'version', please check both. entry:'" + entry +
         "' meta:'" + meta + "'";
}
Outcome TooOld(const std::string& entry, const std::string& meta) { return Refused(-8, kRule, TooOldText(entry, meta)); }

std::vector<Row> Rows() {
  const Outcome null_meta = Refused(-1, kRule, "Invalid parameter, meta is null");
  const Library old_uid = Old({V("uid%d", 3)});
  const Library nameless = New({V("uid%d", 6)}).With(support::NoName("shop%s", "uid%d"));
  return {
      {"null_old_meta", Version(Absent(), New({})), null_meta},
      {"null_new_meta", Version(Old({}), Absent()), null_meta},
      {"new_without_entries", Version(old_uid, New({})), {}},
      {"new_with_negative_entry_number", Version(old_uid, New({V("x", 1)}).With(support::EntryNumber("shop%s", -1))), {}},
      {"kept", Version(old_uid, New({V("uid%d", 3)})), {}},
      {"kept_above_the_library", Version(Old({V("uid%d", 9)}), New({V("uid%d", 9)})), {}},
      {"kept_goes_up", Version(old_uid, New({V("uid%d", 4)})), Changed("uid%d", "mall%s")},
      {"kept_goes_above_the_library", Version(old_uid, New({V("uid%d", 6)})), Changed("uid%d", "mall%s")},
      {"kept_goes_down", Version(old_uid, New({V("uid%d", 2)})), Changed("uid%d", "mall%s")},
      {"new_equal_to_the_library", Version(old_uid, New({V("uid%d", 3), V("x%n", 5)})), TooOld("x%n", "shop%s")},
      {"new_below_the_library", Version(old_uid, New({V("uid%d", 3), V("x%n", 1)})), TooOld("x%n", "shop%s")},
      {"new_above_the_library", Version(old_uid, New({V("uid%d", 3), V("x%n", 6)})), {}},
      {"new_negative_above_the_library", Version(old_uid, New({V("x%n", -2)}), -3), {}},
      {"new_lowest", Version(old_uid, New({V("x%n", INT_MIN)}), INT_MAX), TooOld("x%n", "shop%s")},
      {"new_highest", Version(old_uid, New({V("x%n", INT_MAX)}), INT_MAX - 1), {}},
      {"removed_is_not_examined", Version(Old({V("uid%d", 3), V("gone", 9)}), New({V("uid%d", 3)})), {}},
      {"stops_at_first_failure", Version(Old({V("a", 1), V("b", 1)}), New({V("x", 6), V("a", 2), V("b", 2)})),
       Changed("a", "mall%s")},
      {"old_without_entries_new_above",
       Version(Old({}), New({V("x", 6), V("y", 7)})),
       {0, kEmptyOld, {Error(kLookup, kEmptyOld), Error(kLookup, kEmptyOld)}}},
      {"old_without_entries_new_equal",
       Version(Old({}), New({V("x", 5), V("y", 7)})),
       {-8, TooOldText("x", "shop%s"), {Error(kLookup, kEmptyOld), Error(kRule, TooOldText("x", "shop%s"))}}},
      {"nameless_new_entry_above",
       Version(old_uid, nameless),
       {0, "Entry_name or meta is invalid", {Error(kLookup, "Entry_name or meta is invalid")}}},
      {"nameless_new_entry_equal",
       Version(old_uid, nameless, 6),
       {-8,
        TooOldText("(null)", "shop%s"),
        {Error(kLookup, "Entry_name or meta is invalid"), Error(kRule, TooOldText("(null)", "shop%s"))}}},
      {"nameless_old_entry", Version(old_uid.With(support::NoName("mall%s", "uid%d")), New({V("uid%d", 3)})),
       TooOld("uid%d", "shop%s")},
      {"nameless_meta", Version(old_uid.With(support::NoTableName("mall%s")), New({V("uid%d", 4)})), Changed("uid%d", "(null)")},
  };
}

// A table whose entry "items" is composite.
Library Boxed(const std::string& table, const std::string& box, const std::vector<Field>& members, int version = 1) {
  return Of({{.name = table, .fields = {{.name = "items", .type = box, .version = version}, V("tail", version)}},
             {.name = box, .fields = members}});
}

// Three levels: mall, box, bag.
Library Deep(const std::string& table, const std::vector<Field>& innermost) {
  return Of({{.name = table, .fields = {{.name = "items", .type = "box%s"}}},
             {.name = "box%s", .fields = {{.name = "inner", .type = "bag%s"}}},
             {.name = "bag%s", .fields = innermost}});
}

std::vector<Row> StructureRows() {
  const Outcome null_meta = Refused(-1, kRule, "Invalid parameter, meta is null");
  const Library old_box = Boxed("mall%s", "box%s", {V("x", 2)});
  const Library same_box = Boxed("shop%s", "bag%s", {V("x", 2)});
  Library as_union = same_box, old_union = old_box;
  as_union.tables[1].kind = old_union.tables[1].kind = QMX_TYPE_UNION;
  as_union.tables[1].fields[0].version = 3;
  const Library simple = Of({{.name = "shop%s", .fields = {V("items", 1), V("tail", 1)}}});
  return {
      {"kept", Version(old_box, same_box), {}},
      {"member_changed", Version(old_box, Boxed("shop%s", "bag%s", {V("x", 3)})), Changed("x", "box%s")},
      {"member_of_a_union_changed", Version(old_union, as_union), Changed("x", "box%s")},
      {"member_added_equal", Version(old_box, Boxed("shop%s", "bag%s", {V("x", 2), V("y", 5)})), TooOld("y", "bag%s")},
      {"member_added_above", Version(old_box, Boxed("shop%s", "bag%s", {V("x", 2), V("y", 6)})), {}},
      {"depth_first",
       Version(old_box, Of({{.name = "shop%s", .fields = {{.name = "items", .type = "bag%s"}, V("tail", 2)}},
                            {.name = "bag%s", .fields = {V("x", 3)}}})),
       Changed("x", "box%s")},
      {"goes_on_after_a_structure",
       Version(old_box, Of({{.name = "shop%s", .fields = {{.name = "items", .type = "bag%s"}, V("tail", 2)}},
                            {.name = "bag%s", .fields = {V("x", 2)}}})),
       Changed("tail", "mall%s")},
      {"own_version_before_the_members", Version(old_box, Boxed("shop%s", "bag%s", {V("x", 3)}, 2)), Changed("items", "mall%s")},
      {"same_library_version_at_every_depth", Version(Deep("mall%s", {V("x", 2)}), Deep("shop%s", {V("x", 2), V("y", 5)})),
       TooOld("y", "bag%s")},
      {"structure_without_entries",
       Version(Boxed("mall%s", "box%s", {}), Boxed("shop%s", "bag%s", {V("y", 6)})),
       {0, "Table dose not have entry, table:'box%s'", {Error(kLookup, "Table dose not have entry, table:'box%s'")}}},
      {"null_old_structure", Version(old_box.With(support::NoStructure("mall%s", "items")), same_box), null_meta},
      {"null_new_structure", Version(old_box, same_box.With(support::NoStructure("shop%s", "items"))), null_meta},
      {"no_longer_composite", Version(old_box, simple), null_meta},
      {"composite_only_now_is_not_descended_into", Version(simple, Boxed("shop%s", "bag%s", {V("x", 1)})), {}},
      {"added_composite_is_not_descended_into", Version(Old({V("tail", 6)}), Boxed("shop%s", "bag%s", {V("x", 1)}, 6)), {}},
  };
}

INSTANTIATE_TEST_SUITE_P(Version, RuleTest, testing::ValuesIn(Rows()), RowName);
INSTANTIATE_TEST_SUITE_P(VersionStructure, RuleTest, testing::ValuesIn(StructureRows()), RowName);

}  // namespace
}  // namespace rules
