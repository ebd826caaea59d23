// ComparePrimaryKey and CheckWhetherPrimaryKey.

#include "rules/rule_test.h"

namespace rules {
namespace {

using Names = std::vector<std::string>;

constexpr char kRule[] = "ComparePrimaryKey";
constexpr char kMember[] = "CheckWhetherPrimaryKey";

// A table whose key has these members; old and new ones have different names, so that a text shows which one it names.
Library Keyed(const std::string& table, const Names& key) {
  return Of({{.name = table, .fields = {{.name = "uid%d"}, {.name = "zone"}, {.name = "area"}, {.name = "ZONE"}}, .key = key}});
}
Library Old(const Names& key) { return Keyed("mall%s", key); }
Library New(const Names& key) { return Keyed("shop%s", key); }

Call PrimaryKey(const Library& old_library, const Library& new_library) {
  return Between(old_library, new_library,
                 [](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.ComparePrimaryKey(old_schema.Meta(), new_schema.Meta(), log);
                 });
}

Call Member(const char* name, const Library& library) {
  return Between(library, Absent(), [name](ModifyTable& checker, const Schema& schema, const Schema&, auto log) {
    return checker.CheckWhetherPrimaryKey(name, schema.Meta(), log);
  });
}

support::Poke NoMember(const std::string& table, int position) {
  return [=](const Schema& schema) { schema.KeyMember(table, position)->ptrEntry = QMX_NO_REF; };
}

const Outcome kNullMeta = Refused(-1, kRule, "Invalid parameter, meta is null");
const Outcome kNoKey = Refused(-4, kRule, "Primaykey is invalid! table:'shop%s'");
const Outcome kOtherCount = Refused(-4, kRule, "Primarykey number can't be modified!  table:'shop%s'");

// The membership test writes its record before the rule does.
Outcome Foreign(const std::string& member_text, const std::string& text) {
  return {-4, text, {Error(kMember, member_text), Error(kRule, text)}};
}

std::vector<Row> RuleRows() {
  const Library one = Old({"uid%d"}), two = Old({"uid%d", "zone"});
  const Outcome area = Foreign("The entry is not belong to primarykey,entry:'area' table:'mall%s'",
                               "Primaykey can't be modified! primaykey:'area' table:'mall%s'");
  return {
      {"null_old_meta", PrimaryKey(Absent(), New({"uid%d"})), kNullMeta},
      {"null_new_meta", PrimaryKey(one, Absent()), kNullMeta},
      {"null_metas", PrimaryKey(Absent(), Absent()), kNullMeta},
      {"no_key_in_old", PrimaryKey(Old({}), New({"uid%d"})), kNoKey},
      {"no_key_in_new", PrimaryKey(one, New({})), kNoKey},
      {"no_key_at_all", PrimaryKey(Old({}), New({})), kNoKey},
      {"old_list_reference_none", PrimaryKey(one.With(support::KeyList("mall%s", -1, 1)), New({"uid%d"})), kNoKey},
      {"new_list_reference_none", PrimaryKey(one, New({"uid%d"}).With(support::KeyList("shop%s", -1, 1))), kNoKey},
      {"old_count_negative", PrimaryKey(one.With(support::KeyList("mall%s", 120, -1)), New({"uid%d"})), kNoKey},
      {"new_count_zero_with_a_list", PrimaryKey(one, New({"uid%d"}).With(support::KeyList("shop%s", 120, 0))), kNoKey},
      {"no_key_before_other_count", PrimaryKey(two, New({"uid%d"}).With(support::KeyList("shop%s", -1, 1))), kNoKey},
      {"one_member_more", PrimaryKey(one, New({"uid%d", "zone"})), kOtherCount},
      {"one_member_fewer", PrimaryKey(two, New({"uid%d"})), kOtherCount},
      {"other_count_before_foreign_member", PrimaryKey(two, New({"area"})), kOtherCount},
      {"same_key", PrimaryKey(two, New({"uid%d", "zone"})), {}},
      {"other_order", PrimaryKey(two, New({"zone", "uid%d"})), {}},
      {"second_member_foreign", PrimaryKey(two, New({"uid%d", "area"})), area},
      {"first_member_foreign", PrimaryKey(two, New({"area", "zone"})), area},
      {"stops_at_first_foreign_member", PrimaryKey(two, New({"area", "ZONE"})), area},
      {"other_letter_case", PrimaryKey(two, New({"uid%d", "ZONE"})),
       Foreign("The entry is not belong to primarykey,entry:'ZONE' table:'mall%s'",
               "Primaykey can't be modified! primaykey:'ZONE' table:'mall%s'")},
      {"percent_in_foreign_name", PrimaryKey(Old({"zone"}), New({"uid%d"})),
       Foreign("The entry is not belong to primarykey,entry:'uid%d' table:'mall%s'",
               "Primaykey can't be modified! primaykey:'uid%d' table:'mall%s'")},
      {"nameless_new_member", PrimaryKey(one, New({"uid%d"}).With(support::NoName("shop%s", "uid%d"))),
       Foreign("Entry_name or meta is invalid", "Primaykey can't be modified! primaykey:'(null)' table:'mall%s'")},
      {"new_member_without_entry", PrimaryKey(one, New({"uid%d"}).With(NoMember("shop%s", 0))),
       Foreign("Entry_name or meta is invalid", "Primaykey can't be modified! primaykey:'(null)' table:'mall%s'")},
      {"nameless_old_member_is_skipped", PrimaryKey(two.With(support::NoName("mall%s", "uid%d")), New({"zone", "zone"})), {}},
      {"nameless_old_member_equals_nothing", PrimaryKey(one.With(support::NoName("mall%s", "uid%d")), New({"uid%d"})),
       Foreign("The entry is not belong to primarykey,entry:'uid%d' table:'mall%s'",
               "Primaykey can't be modified! primaykey:'uid%d' table:'mall%s'")},
      {"old_member_without_entry", PrimaryKey(two.With(NoMember("mall%s", 0)), New({"zone", "zone"})), {}},
  };
}

std::vector<Row> MemberRows() {
  const Library two = Old({"uid%d", "zone"});
  const Outcome bad = Refused(-1, kMember, "Entry_name or meta is invalid");
  const Outcome keyless = Refused(-4, kMember, "Table dose not have primaykey, table:'mall%s'");
  return {
      {"null_name", Member(nullptr, two), bad},
      {"null_meta", Member("uid%d", Absent()), bad},
      {"no_key", Member("uid%d", Old({})), keyless},
      {"count_negative", Member("uid%d", two.With(support::KeyList("mall%s", 120, -1))), keyless},
      {"list_reference_none", Member("uid%d", two.With(support::KeyList("mall%s", -1, 2))), keyless},
      {"first_member", Member("uid%d", two), {}},
      {"last_member", Member("zone", two), {}},
      {"field_outside_the_key", Member("area", two),
       Refused(-7, kMember, "The entry is not belong to primarykey,entry:'area' table:'mall%s'")},
      {"prefix_of_a_member", Member("zon", two),
       Refused(-7, kMember, "The entry is not belong to primarykey,entry:'zon' table:'mall%s'")},
  };
}

INSTANTIATE_TEST_SUITE_P(PrimaryKey, RuleTest, testing::ValuesIn(RuleRows()), RowName);
INSTANTIATE_TEST_SUITE_P(PrimaryKeyMember, RuleTest, testing::ValuesIn(MemberRows()), RowName);

TEST(PrimaryKey, RepeatedMemberPasses) {
  EXPECT_EQ(OutcomeOf(PrimaryKey(Old({"uid%d", "zone"}), New({"uid%d", "uid%d"}))), Outcome{});
}

TEST(PrimaryKey, TypesAndSizesAreNotCompared) {
  Library wide = New({"uid%d"});
  wide.tables[0].fields[0] = {.name = "uid%d", .type = "string", .size = 64};
  EXPECT_EQ(OutcomeOf(PrimaryKey(Old({"uid%d"}), wide)), Outcome{});
}

}  // namespace
}  // namespace rules
