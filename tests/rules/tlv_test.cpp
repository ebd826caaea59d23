// CompareEntryValueFieldTLV and CheckWhetherExistEntryOfTLV: the TLV rules for fields of the table.

#include "rules/rule_test.h"

namespace rules {
namespace {

using support::Count;

constexpr char kRule[] = "CompareEntryValueFieldTLV";
constexpr char kSurvival[] = "CheckWhetherExistEntryOfTLV";
constexpr char kInside[] = "CompareEntrySubMetaFieldTLV";
constexpr char kById[] = "CheckWhetherExistEntryById";

Library Tlv(const std::string& table, const std::vector<Field>& fields, const std::vector<std::string>& key) {
  return {.protocol = qmx::Protocol::kTlv, .tables = {{.name = table, .fields = fields, .key = key}}};
}
Library Old(const std::vector<Field>& fields, const std::vector<std::string>& key = {}) { return Tlv("mall%s", fields, key); }
Library New(const std::vector<Field>& fields, const std::vector<std::string>& key = {}) { return Tlv("shop%s", fields, key); }

Field Id(const std::string& name, int id) { return {.name = name, .id = id}; }
Field Text(const std::string& name, int id, std::uint64_t size) {
  return {.name = name, .type = "string", .size = size, .id = id};
}

Call Fields(const Library& old_library, const Library& new_library) {
  return Between(old_library, new_library,
                 [](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.CompareEntryValueFieldTLV(old_schema.Meta(), new_schema.Meta(), log);
                 });
}

Outcome Broken(const std::string& text) { return Refused(-3, kRule, text); }
Outcome BrokenEntry(const std::string& text, const std::string& entry) {
  return Broken(text + " entry:'" + entry + "' metaname:'mall%s'");
}
std::string DeletedText(const std::string& entry) {
  return "The entry:" + entry + " can't be delete now,it will be supported by korvsvr of 3.28.0!";
}
Outcome Deleted(const std::string& entry) { return Broken(DeletedText(entry)); }

constexpr char kReduced[] = "The size of entry can't be reduced!";
constexpr char kKeySize[] = "The size of primorykey can't be modified!";
constexpr char kType[] = "The type of entry can't be modified!";
constexpr char kReferCount[] = "The count of entry can't be reduced if contain refer property!";
constexpr char kFixedCount[] = "The count of entry can't be modified if not contain refer property!";

std::vector<Row> SurvivalRows() {
  const Library uid = Old({Id("uid%d", 4)});
  const Outcome null_old = Refused(-1, kRule, "Invalid parameter, meta is null");
  const std::string empty = "Table dose not have entry, table:'shop%s'";
  const std::string negative = "The entry can't be modified! entry_id:'-1' metaname:'mall%s'";
  return {
      {"null_old_meta", Fields(Absent(), New({})), null_old},
      {"null_metas", Fields(Absent(), Absent()), null_old},
      {"null_new_meta", Fields(uid, Absent()), Broken("Can't modify the table name! table:'mall%s'")},
      {"meta_names_are_not_compared", Fields(uid, New({Id("uid%d", 4)})), {}},
      {"old_without_entries", Fields(Old({}), New({})), {}},
      {"old_with_negative_entry_number", Fields(uid.With(support::EntryNumber("mall%s", -1)), New({})), {}},
      {"removed", Fields(Old({Id("uid%d", 4), Id("zone", 5)}), New({Id("zone", 5)})), Deleted("uid%d")},
      {"renamed", Fields(uid, New({Id("UID%d", 4)})), Deleted("uid%d")},
      {"other_id", Fields(uid, New({Id("uid%d", 5)})), Deleted("uid%d")},
      {"id_and_name_in_two_entries", Fields(uid, New({Id("uid%d", 5), Id("x", 4)})), Deleted("uid%d")},
      {"stops_at_first_failure", Fields(Old({Id("a", 1), Id("uid%d", 4)}), New({Id("x", 9)})), Deleted("a")},
      {"added_and_moved_are_not_examined", Fields(Old({Id("a", 1), Id("b", 2)}), New({Id("x", 9), Id("b", 2), Id("a", 1)})), {}},
      {"new_without_entries",
       Fields(uid, New({})),
       {-3, DeletedText("uid%d"), {Error(kSurvival, empty), Error(kRule, DeletedText("uid%d"))}}},
      {"negative_id_survives_but_cannot_be_looked_up",
       Fields(Old({Id("uid%d", -1)}), New({Id("uid%d", -1)})),
       {-3, negative, {Error(kById, "Entry_name or meta is invalid"), Error(kRule, negative)}}},
      {"id_zero", Fields(Old({Id("uid%d", 0)}), New({Id("uid%d", 0)})), {}},
      {"nameless_old_entry", Fields(uid.With(support::NoName("mall%s", "uid%d")), New({Id("uid%d", 4)})), Deleted("(null)")},
      {"nameless_new_entry", Fields(uid, New({Id("uid%d", 4)}).With(support::NoName("shop%s", "uid%d"))), Deleted("uid%d")},
      {"nameless_entries_are_not_equal",
       Fields(uid.With(support::NoName("mall%s", "uid%d")), New({Id("uid%d", 4)}).With(support::NoName("shop%s", "uid%d"))),
       Deleted("(null)")},
  };
}

std::vector<Row> ShapeRows() {
  const Library plain = Old({Text("uid%d", 4, 8)}), key = Old({Text("uid%d", 4, 8)}, {"uid%d"});
  const Library wide = New({Text("uid%d", 4, 9)}), narrow = New({Text("uid%d", 4, 7)});
  const std::uint64_t top = 1ULL << 63;
  Library attribute = New({Id("uid%d", 4)});
  attribute.tables[0].fields[0].attr2 = "pii";
  return {
      {"grows", Fields(plain, wide), {}},
      {"shrinks", Fields(plain, narrow), BrokenEntry(kReduced, "uid%d")},
      {"key_grows", Fields(key, wide), BrokenEntry(kKeySize, "uid%d")},
      {"key_shrinks", Fields(key, narrow), BrokenEntry(kKeySize, "uid%d")},
      {"key_same", Fields(key, New({Text("uid%d", 4, 8)})), {}},
      {"the_new_flag_does_not_count", Fields(plain, New({Text("uid%d", 4, 9)}, {"uid%d"})), {}},
      {"other_bits_of_the_flag", Fields(plain.With(support::DBFlag("mall%s", "uid%d", 0xEF)), wide), {}},
      {"sizes_are_unsigned", Fields(plain.With(support::UnitSize("mall%s", "uid%d", top)), wide), BrokenEntry(kReduced, "uid%d")},
      {"other_type", Fields(Old({Id("uid%d", 4)}), New({{.name = "uid%d", .type = "int32", .id = 4}})),
       BrokenEntry(kType, "uid%d")},
      {"attribute_is_not_compared", Fields(Old({Id("uid%d", 4)}), attribute), {}},
      {"compared_with_the_first_entry_of_the_id", Fields(plain, New({Text("x", 4, 7), Text("uid%d", 4, 8)})),
       BrokenEntry(kReduced, "uid%d")},
      {"key_name_of_the_first_entry_of_the_id", Fields(key, New({Text("x", 4, 7), Text("uid%d", 4, 8)})),
       Broken("The name of primarykey can't be modified! entry_id:'4' metaname:'mall%s'")},
      {"key_name_missing_in_the_first_entry_of_the_id",
       Fields(key, New({Text("x", 4, 8), Text("uid%d", 4, 8)}).With(support::NoName("shop%s", "x"))),
       Broken("The name of primarykey can't be modified! entry_id:'4' metaname:'mall%s'")},
      {"name_of_the_first_entry_counts_for_keys_only", Fields(plain, New({Text("x", 4, 8), Text("uid%d", 4, 8)})), {}},
  };
}

Row CountRow(const std::string& name, bool old_refer, int old_count, bool new_refer, int new_count, const Outcome& outcome) {
  const auto fields = [](bool refer) {
    return std::vector<Field>{Id("n", 1), {.name = "list", .id = 2, .refer = refer ? "n" : ""}};
  };
  return {name,
          Fields(Old(fields(old_refer)).With(Count("mall%s", "list", old_count)),
                 New(fields(new_refer)).With(Count("shop%s", "list", new_count))),
          outcome};
}

std::vector<Row> CountRows() {
  const Outcome refer = BrokenEntry(kReferCount, "list"), fixed = BrokenEntry(kFixedCount, "list");
  return {
      CountRow("refer_grows", true, 10, true, 20, {}),
      CountRow("refer_same", true, 10, true, 10, {}),
      {"refer_same_after_an_added_entry",
       Fields(Old({Id("n", 1), {.name = "list", .id = 2, .refer = "n"}}),
              New({Id("added", 9), Id("n", 1), {.name = "list", .id = 2, .refer = "n"}})),
       {}},
      CountRow("refer_shrinks", true, 10, true, 9, refer),
      CountRow("fixed_grows", false, 10, false, 20, fixed),
      CountRow("fixed_shrinks", false, 10, false, 9, fixed),
      CountRow("the_old_refer_decides", true, 10, false, 20, {}),
      CountRow("the_new_refer_does_not", false, 10, true, 20, fixed),
      CountRow("counts_are_signed_grows", true, -1, true, 1, {}),
      CountRow("counts_are_signed_shrinks", true, 1, true, -1, refer),
  };
}

INSTANTIATE_TEST_SUITE_P(TlvSurvival, RuleTest, testing::ValuesIn(SurvivalRows()), RowName);
INSTANTIATE_TEST_SUITE_P(TlvShape, RuleTest, testing::ValuesIn(ShapeRows()), RowName);
INSTANTIATE_TEST_SUITE_P(TlvCount, RuleTest, testing::ValuesIn(CountRows()), RowName);

// Whether mall%s's first entry survives: 1 or 0.
Call Survives(const Library& old_library, const Library& new_library) {
  return Between(old_library, new_library,
                 [](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   LPQMXMETAENTRY entry = old_schema.Meta() == nullptr ? nullptr : old_schema.Entry("mall%s", "uid%d");
                   return checker.CheckWhetherExistEntryOfTLV(entry, new_schema.Meta(), log) ? 1 : 0;
                 });
}

std::vector<Row> DirectSurvivalRows() {
  const Library uid = Old({Id("uid%d", 4)});
  const Outcome null_argument = Refused(0, kSurvival, "needCheckPstEntry or new_meta can't be null");
  return {
      {"null_entry", Survives(Absent(), New({Id("uid%d", 4)})), null_argument},
      {"null_meta", Survives(uid, Absent()), null_argument},
      {"no_entries", Survives(uid, New({})), Refused(0, kSurvival, "Table dose not have entry, table:'shop%s'")},
      {"negative_entry_number", Survives(uid, New({Id("uid%d", 4)}).With(support::EntryNumber("shop%s", -1))),
       Refused(0, kSurvival, "Table dose not have entry, table:'shop%s'")},
      {"found", Survives(uid, New({Id("uid%d", 4)})), {.code = 1}},
      {"search_goes_on_after_another_name", Survives(uid, New({Id("x", 4), Id("uid%d", 3), Id("uid%d", 4)})), {.code = 1}},
      {"absent_is_silent", Survives(uid, New({Id("x", 4), Id("uid%d", 3)})), {}},
      {"negative_id", Survives(Old({Id("uid%d", -1)}), New({Id("uid%d", -1)})), {.code = 1}},
  };
}

INSTANTIATE_TEST_SUITE_P(TlvSurvivalDirect, RuleTest, testing::ValuesIn(DirectSurvivalRows()), RowName);

// Each new field violates one rule and all that follow it; the first of them is reported.
TEST(Tlv, RulesRunInTheirOrder) {
  const std::vector<std::string> key = {"f"};
  const Library old_library = Old({{.name = "f", .type = "string", .size = 8, .id = 7, .count = 2}}, key);
  const Field twin = {.name = "f", .type = "string", .size = 8, .id = 7, .count = 2};
  Field first = {.name = "x", .type = "bytes", .size = 9, .id = 7, .count = 3};
  const auto outcome = [&] { return OutcomeOf(Fields(old_library, New({first, twin}))); };
  EXPECT_EQ(outcome(), Broken("The name of primarykey can't be modified! entry_id:'7' metaname:'mall%s'"));
  first.name = "f";
  EXPECT_EQ(outcome(), BrokenEntry(kKeySize, "f"));
  first.size = 8;
  EXPECT_EQ(outcome(), BrokenEntry(kType, "f"));
  first.type = "string";
  EXPECT_EQ(outcome(), BrokenEntry(kFixedCount, "f"));
}

TEST(Tlv, CountComesBeforeTheStructure) {
  const auto boxed = [](const std::string& member_type, int count) {
    return Of({{.fields = {{.name = "items", .type = "box%s", .id = 1, .count = count}}},
               {.name = "box%s", .fields = {{.name = "x", .type = member_type, .id = 2}}}});
  };
  EXPECT_EQ(OutcomeOf(Fields(boxed("uint32", 1), boxed("int32", 2))), BrokenEntry(kFixedCount, "items"));
  EXPECT_EQ(OutcomeOf(Fields(boxed("uint32", 1), boxed("int32", 1))),
            Refused(-3, kInside, "The type of entry can't be modified!  entry_id:'2' metaname:'box%s'"));
}

// The callers of these rules test the flag word.
TEST(Tlv, FlagWordIsIgnored) {
  const Library old_library = Old({Id("uid%d", 4)}).With(support::Flag(0));
  EXPECT_EQ(OutcomeOf(Fields(old_library, New({Id("uid%d", 5)}).With(support::Flag(0)))), Deleted("uid%d"));
}

}  // namespace
}  // namespace rules
