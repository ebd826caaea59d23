// CompareSplittableKey.

#include "rules/rule_test.h"

namespace rules {
namespace {

using Names = std::vector<std::string>;

constexpr char kRule[] = "CompareSplittableKey";

// Every name in the key is a field of the table.
Library Split(const std::string& table, const Names& key) {
  Table split{.name = table, .split = key};
  for (const std::string& name : key) split.fields.push_back({.name = name});
  split.fields.push_back({.name = "rest"});
  return Of({split});
}
Library Old(const Names& key) { return Split("mall%s", key); }
Library New(const Names& key) { return Split("shop%s", key); }

Call SplittableKey(const Library& old_library, const Library& new_library) {
  return Between(old_library, new_library,
                 [](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.CompareSplittableKey(old_schema.Meta(), new_schema.Meta(), log);
                 });
}

// The longest readable key text, and one byte more.
const std::string kFits(1023, 'k');
const std::string kTooLong(1024, 'k');

std::vector<Row> Rows() {
  const Library uid = Old({"uid%d"});
  const Outcome null_meta = Refused(-1, kRule, "Invalid parameter, meta is null");
  const Outcome added_or_removed = Refused(-5, kRule, "Splittablekey can't be modified! table:'mall%s'");
  const Outcome changed = Refused(-5, kRule, "Splittablekey can't be modified! splittablekey:'uid%d' table:'mall%s'");
  const Outcome no_new_text = Refused(-5, kRule, "Can't get new splittablekey! table:'shop%s'");
  return {
      {"null_old_meta", SplittableKey(Absent(), New({"uid%d"})), null_meta},
      {"null_new_meta", SplittableKey(uid, Absent()), null_meta},
      {"neither_has_one",
       SplittableKey(Old({}), New({})),
       {.log = {Info(kRule, "Table dose not have SplittableKey! table:'mall%s'")}}},
      {"added", SplittableKey(Old({}), New({"uid%d"})), added_or_removed},
      {"removed", SplittableKey(uid, New({})), added_or_removed},
      {"same", SplittableKey(uid, New({"uid%d"})), {}},
      {"same_of_two_fields", SplittableKey(Old({"uid%d", "zone"}), New({"uid%d", "zone"})), {}},
      {"other_field", SplittableKey(uid, New({"zone"})), changed},
      {"other_letter_case", SplittableKey(uid, New({"UID%d"})), changed},
      {"one_field_more", SplittableKey(uid, New({"uid%d", "zone"})), changed},
      {"other_order", SplittableKey(Old({"uid%d", "zone"}), New({"zone", "uid%d"})),
       Refused(-5, kRule, "Splittablekey can't be modified! splittablekey:'uid%d,zone' table:'mall%s'")},
      {"new_text_cannot_be_read", SplittableKey(uid, New({kTooLong})), no_new_text},
      {"old_text_cannot_be_read", SplittableKey(Old({kTooLong}), New({"uid%d"})),
       Refused(-5, kRule, "Can't get old splittablekey! table:'mall%s'")},
      {"new_text_is_read_before_the_old_one", SplittableKey(Old({kTooLong}), New({kTooLong})), no_new_text},
      {"text_of_1023_bytes_fits", SplittableKey(Old({kFits}), New({kFits})), {}},
  };
}

INSTANTIATE_TEST_SUITE_P(SplittableKey, RuleTest, testing::ValuesIn(Rows()), RowName);

TEST(SplittableKey, LongKeyTextIsTruncatedInTheRefusal) {
  const std::string text = ("Splittablekey can't be modified! splittablekey:'" + kFits).substr(0, 1023);
  EXPECT_EQ(OutcomeOf(SplittableKey(Old({kFits}), New({"uid%d"}))), Refused(-5, kRule, text));
}

}  // namespace
}  // namespace rules
