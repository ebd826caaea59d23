// CompareEntryValueField: the field rules of the record format.

#include "rules/rule_test.h"

namespace rules {
namespace {

constexpr char kRule[] = "CompareEntryValueField";
constexpr char kLookup[] = "CheckWhetherExistEntry";

using support::Count;
using support::DBFlag;
using support::Flag;
using support::UnitSize;

// A table with the same name on both sides; some of its fields may be in the key.
Library Mall(const std::vector<Field>& fields, const std::vector<std::string>& key = {}) {
  return Of({{.fields = fields, .key = key}});
}

// A table whose entry "items" is composite.
Library Boxed(const std::vector<Field>& members, const std::string& box = "box%s") {
  return Of({{.fields = {{.name = "items", .type = box}}}, {.name = box, .fields = members}});
}

Call Fields(const Library& old_library, const Library& new_library) {
  return Between(old_library, new_library,
                 [](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.CompareEntryValueField(old_schema.Meta(), new_schema.Meta(), log);
                 });
}

Outcome Broken(const std::string& text) { return Refused(-3, kRule, text); }
Outcome BrokenEntry(const std::string& text, const std::string& entry, const std::string& meta = "mall%s") {
  return Broken(text + " entry:'" + entry + "' metaname:'" + meta + "'");
}
Outcome Lost(const std::string& entry, const std::string& meta = "mall%s") {
  return Broken("The entry can't be found! entry_name:'" + entry + "' metaname:'" + meta + "'");
}
// The lookup writes its record before the rule does.
Outcome LostAfter(const std::string& lookup_text, const std::string& entry) {
  Outcome outcome = Lost(entry);
  outcome.log.insert(outcome.log.begin(), Error(kLookup, lookup_text));
  return outcome;
}

constexpr char kReduced[] = "The size of entry can't be reduced!";
constexpr char kKeySize[] = "The size of primarykey can't be modified!";
constexpr char kType[] = "The type of entry can't be modified!";
constexpr char kReferCount[] = "The count of entry can't be reduced if contain refer property!";
constexpr char kFixedCount[] = "The count of entry can't be modified if not contain refer property!";
constexpr char kAttribute[] = "The customattr2 of entry can not modify!";

std::vector<Row> PresenceRows() {
  const Library uid = Mall({{"uid%d"}});
  const Outcome null_old = Refused(-1, kRule, "Invalid parameter, meta is null");
  Library renamed = uid;
  renamed.tables[0].name = "shop%s";
  const Library nameless = uid.With(support::NoTableName("mall%s"));
  return {
      {"null_old_meta", Fields(Absent(), uid), null_old},
      {"null_metas", Fields(Absent(), Absent()), null_old},
      {"null_new_meta", Fields(uid, Absent()), Broken("Can't modify the table name! table:'mall%s'")},
      {"other_meta_name", Fields(uid, renamed), Broken("Can't modify the entry struct type  mall%s -> shop%s")},
      {"nameless_metas_are_not_equal", Fields(nameless, nameless),
       Broken("Can't modify the entry struct type  (null) -> (null)")},
      {"name_before_entries", Fields(Mall({}), Of({{.name = "shop%s"}})),
       Broken("Can't modify the entry struct type  mall%s -> shop%s")},
      {"old_without_entries", Fields(Mall({}), uid), {}},
      {"old_with_negative_entry_number", Fields(uid.With(support::EntryNumber("mall%s", -1)), Mall({})), {}},
      {"same", Fields(Mall({{"uid%d"}, {"zone", "string", 8}}), Mall({{"uid%d"}, {"zone", "string", 8}})), {}},
      {"removed", Fields(Mall({{"uid%d"}, {"zone"}}), Mall({{"zone"}})), Lost("uid%d")},
      {"renamed", Fields(uid, Mall({{"UID%d"}})), Lost("uid%d")},
      {"new_without_entries", Fields(uid, Mall({})), LostAfter("Table dose not have entry, table:'mall%s'", "uid%d")},
      {"nameless_old_entry", Fields(uid.With(support::NoName("mall%s", "uid%d")), uid),
       LostAfter("Entry_name or meta is invalid", "(null)")},
      {"nameless_new_entry", Fields(uid, uid.With(support::NoName("mall%s", "uid%d"))), Lost("uid%d")},
      {"added_and_moved_are_not_examined", Fields(Mall({{"uid%d"}, {"zone"}}), Mall({{"x"}, {"zone"}, {"uid%d"}})), {}},
      {"stops_at_first_failure", Fields(Mall({{"a"}, {"b"}, {"uid%d"}}), Mall({{"uid%d"}})), Lost("a")},
      {"of_two_new_entries_with_one_name_the_first_counts",
       Fields(Mall({{"uid%d", "string", 8}}), Mall({{"uid%d", "string", 7}, {"uid%d", "string", 8}})),
       BrokenEntry(kReduced, "uid%d")},
  };
}

// Ids 7 and 8 with different flag words: the rule requires bit 0 in both, and neither may be all ones.
Row IdRow(const std::string& name, std::int64_t old_word, std::int64_t new_word, bool refused) {
  const Outcome outcome = refused ? Broken("The entry_id can't be modified! entry_id:'7' metaname:'mall%s'") : Outcome{};
  return {
      name,
      Fields(Mall({{.name = "uid%d", .id = 7}}).With(Flag(old_word)), Mall({{.name = "uid%d", .id = 8}}).With(Flag(new_word))),
      outcome};
}

std::vector<Row> IdRows() {
  const Library none = Mall({{.name = "uid%d", .id = -1}}).With(Flag(1));
  return {
      IdRow("both_have_the_bit", 1, 1, true),
      IdRow("three_and_five", 3, 5, true),
      IdRow("all_but_the_second_bit", ~2LL, 1, true),
      IdRow("neither_has_it", 0, 0, false),
      IdRow("only_old", 1, 0, false),
      IdRow("only_new", 0, 1, false),
      IdRow("other_bits", 2, 6, false),
      IdRow("both_unset", -1, -1, false),
      IdRow("old_unset", -1, 1, false),
      IdRow("new_unset", 1, -1, false),
      {"negative_id", Fields(none, Mall({{.name = "uid%d", .id = 0}}).With(Flag(1))),
       Broken("The entry_id can't be modified! entry_id:'-1' metaname:'mall%s'")},
      {"same_negative_ids", Fields(none, none), {}},
  };
}

std::vector<Row> SizeRows() {
  const Library plain = Mall({{"uid%d", "string", 8}}), key = Mall({{"uid%d", "string", 8}}, {"uid%d"});
  const Library wide = Mall({{"uid%d", "string", 9}}), narrow = Mall({{"uid%d", "string", 7}});
  const Library wide_key = Mall({{"uid%d", "string", 9}}, {"uid%d"});
  const std::uint64_t top = 1ULL << 63;
  return {
      {"grows", Fields(plain, wide), {}},
      {"shrinks", Fields(plain, narrow), BrokenEntry(kReduced, "uid%d")},
      {"key_grows", Fields(key, wide_key), BrokenEntry(kKeySize, "uid%d")},
      {"key_shrinks", Fields(wide_key, key), BrokenEntry(kKeySize, "uid%d")},
      {"key_same", Fields(key, key), {}},
      {"only_the_flag_is_lost", Fields(key, plain), {}},
      {"only_the_flag_is_new", Fields(plain, key), {}},
      {"only_the_old_flag_counts", Fields(key, wide), BrokenEntry(kKeySize, "uid%d")},
      {"the_new_flag_does_not", Fields(plain, wide_key), {}},
      {"key_bit_among_others", Fields(plain.With(DBFlag("mall%s", "uid%d", 0xFF)), wide), BrokenEntry(kKeySize, "uid%d")},
      {"other_bits_alone", Fields(plain.With(DBFlag("mall%s", "uid%d", 0xEF)), wide), {}},
      {"sizes_are_unsigned_grows", Fields(plain, plain.With(UnitSize("mall%s", "uid%d", top))), {}},
      {"sizes_are_unsigned_shrinks", Fields(plain.With(UnitSize("mall%s", "uid%d", top)), plain), BrokenEntry(kReduced, "uid%d")},
      {"size_is_that_of_one_element",
       Fields(Mall({{.name = "uid%d", .type = "string", .size = 8, .count = 4}}),
              Mall({{.name = "uid%d", .type = "string", .size = 7, .count = 4}})),
       BrokenEntry(kReduced, "uid%d")},
  };
}

// Counts of an entry "list" with or without a refer property on either side.
Row CountRow(const std::string& name, bool old_refer, int old_count, bool new_refer, int new_count, const Outcome& outcome) {
  const auto library = [](bool refer, int count) {
    return Mall({{"n"}, {.name = "list", .refer = refer ? "n" : ""}}).With(Count("mall%s", "list", count));
  };
  return {name, Fields(library(old_refer, old_count), library(new_refer, new_count)), outcome};
}

std::vector<Row> CountRows() {
  const Outcome refer = BrokenEntry(kReferCount, "list"), fixed = BrokenEntry(kFixedCount, "list");
  return {
      CountRow("refer_grows", true, 10, true, 20, {}),
      CountRow("refer_same", true, 10, true, 10, {}),
      {"refer_same_after_an_added_entry",
       Fields(Mall({{"n"}, {.name = "list", .refer = "n"}}), Mall({{"added"}, {"n"}, {.name = "list", .refer = "n"}})),
       {}},
      CountRow("refer_shrinks", true, 10, true, 9, refer),
      CountRow("fixed_grows", false, 10, false, 20, fixed),
      CountRow("fixed_shrinks", false, 10, false, 9, fixed),
      CountRow("fixed_same", false, 10, false, 10, {}),
      CountRow("the_old_refer_decides", true, 10, false, 20, {}),
      CountRow("the_old_refer_decides_shrinks", true, 10, false, 9, refer),
      CountRow("the_new_refer_does_not", false, 10, true, 20, fixed),
      CountRow("counts_are_signed_grows", true, -1, true, 1, {}),
      CountRow("counts_are_signed_shrinks", true, 1, true, -1, refer),
  };
}

Row AttributeRow(const std::string& name, std::optional<std::string> old_text, std::optional<std::string> new_text,
                 bool refused) {
  const auto library = [](const std::optional<std::string>& text) { return Mall({{.name = "uid%d", .attr2 = text}}); };
  return {name, Fields(library(old_text), library(new_text)), refused ? BrokenEntry(kAttribute, "uid%d") : Outcome{}};
}

std::vector<Row> TypeAndAttributeRows() {
  return {
      {"type_of_the_same_size", Fields(Mall({{"uid%d"}}), Mall({{"uid%d", "int32"}})), BrokenEntry(kType, "uid%d")},
      {"type_with_a_larger_size", Fields(Mall({{"uid%d"}}), Mall({{"uid%d", "uint64"}})), BrokenEntry(kType, "uid%d")},
      AttributeRow("none_to_empty", std::nullopt, "", false),
      AttributeRow("empty_to_none", "", std::nullopt, false),
      AttributeRow("same_text", "pii", "pii", false),
      AttributeRow("none_to_text", std::nullopt, "pii", true),
      AttributeRow("empty_to_text", "", "p", true),
      AttributeRow("text_to_none", "pii", std::nullopt, true),
      AttributeRow("text_to_empty", "pii", "", true),
      AttributeRow("other_letter_case", "pii", "Pii", true),
      AttributeRow("blank_after_a_value", "pii", "pii ", true),
      AttributeRow("prefix", "pii", "pi", true),
  };
}

INSTANTIATE_TEST_SUITE_P(RecordPresence, RuleTest, testing::ValuesIn(PresenceRows()), RowName);
INSTANTIATE_TEST_SUITE_P(RecordId, RuleTest, testing::ValuesIn(IdRows()), RowName);
INSTANTIATE_TEST_SUITE_P(RecordSize, RuleTest, testing::ValuesIn(SizeRows()), RowName);
INSTANTIATE_TEST_SUITE_P(RecordCount, RuleTest, testing::ValuesIn(CountRows()), RowName);
INSTANTIATE_TEST_SUITE_P(RecordTypeAndAttribute, RuleTest, testing::ValuesIn(TypeAndAttributeRows()), RowName);

std::vector<Row> StructureRows() {
  const Library box = Boxed({{"x"}, {"y"}});
  Library old_union = box, new_union = Boxed({{"x"}});
  old_union.tables[1].kind = new_union.tables[1].kind = QMX_TYPE_UNION;
  Library attribute = Boxed({{"y"}, {"w"}, {"v"}});
  attribute.tables[0].fields[0].attr2 = "pii";
  Library only_attribute = box;
  only_attribute.tables[0].fields[0].attr2 = "pii";
  const auto deep = [](const std::string& type) {
    return Of({{.fields = {{"items", "box%s"}}},
               {.name = "box%s", .fields = {{"in", "bag%s"}}},
               {.name = "bag%s", .fields = {{"x", type}}}});
  };
  const Library no_box = box.With(support::NoStructure("mall%s", "items"));
  return {
      {"same", Fields(box, box), {}},
      {"other_structure", Fields(box, Boxed({{"x"}, {"y"}}, "bag%s")),
       Broken("Can't modify the entry struct type  box%s -> bag%s")},
      {"member_lost", Fields(box, Boxed({{"y"}, {"z"}})), Lost("x", "box%s")},
      {"member_of_a_union_lost",
       Fields(old_union, Of({{.fields = {{"items", "box%s"}}}, {.name = "box%s", .fields = {{"y"}}, .kind = QMX_TYPE_UNION}})),
       Lost("x", "box%s")},
      {"member_grows", Fields(Boxed({{"x", "string", 4}}), Boxed({{"x", "string", 8}})), {}},
      {"deep_refusal_reaches_the_caller_once", Fields(deep("uint32"), deep("int32")), BrokenEntry(kType, "x", "bag%s")},
      {"goes_on_after_a_structure",
       Fields(Of({{.fields = {{"items", "box%s"}, {"tail"}}}, {.name = "box%s", .fields = {{"x"}}}}), Boxed({{"x"}})),
       Lost("tail")},
      {"null_new_structure", Fields(box, no_box), Broken("Can't modify the table name! table:'box%s'")},
      {"members_before_the_attribute", Fields(box, attribute), Lost("x", "box%s")},
      {"attribute_after_the_members", Fields(box, only_attribute), BrokenEntry(kAttribute, "items")},
  };
}

INSTANTIATE_TEST_SUITE_P(RecordStructure, RuleTest, testing::ValuesIn(StructureRows()), RowName);

TEST(RecordStructure, InnerMinusOneBecomesMinusThree) {
  const Library box = Boxed({{"x"}});
  Outcome outcome = Refused(-3, kRule, "Invalid parameter, meta is null");
  EXPECT_EQ(OutcomeOf(Fields(box.With(support::NoStructure("mall%s", "items")), box)), outcome);
}

// Each field violates one rule and all that follow it; the first of them is reported.
TEST(Record, RulesRunInTheirOrder) {
  const auto outcome = [](const Field& old_field, const Field& new_field) {
    return OutcomeOf(Fields(Mall({{"n"}, old_field}).With(Flag(1)), Mall({{"n"}, new_field}).With(Flag(1))));
  };
  const Field old_field = {.name = "f", .type = "string", .size = 8, .id = 7, .count = 2};
  Field worse = {.name = "f", .type = "bytes", .size = 7, .id = 8, .count = 3, .attr2 = "pii"};
  EXPECT_EQ(outcome(old_field, worse), Broken("The entry_id can't be modified! entry_id:'7' metaname:'mall%s'"));
  worse.id = 7;
  EXPECT_EQ(outcome(old_field, worse), BrokenEntry(kReduced, "f"));
  worse.size = 8;
  EXPECT_EQ(outcome(old_field, worse), BrokenEntry(kType, "f"));
  worse.type = "string";
  EXPECT_EQ(outcome(old_field, worse), BrokenEntry(kFixedCount, "f"));
  worse.count = 2;
  EXPECT_EQ(outcome(old_field, worse), BrokenEntry(kAttribute, "f"));
}

TEST(Record, CountComesBeforeTheStructure) {
  Library grown = Boxed({{"y"}, {"z"}});
  grown.tables[0].fields[0].count = 2;
  EXPECT_EQ(OutcomeOf(Fields(Boxed({{"x"}, {"y"}}), grown)), BrokenEntry(kFixedCount, "items"));
}

}  // namespace
}  // namespace rules
