// CompareIndex, CheckWhetherIndexField, CompareIndexColumn and CheckWhetherColumnField.

#include <climits>

#include "rules/rule_test.h"

namespace rules {
namespace {

constexpr char kRule[] = "CompareIndex";
constexpr char kColumns[] = "CompareIndexColumn";
constexpr char kMember[] = "CheckWhetherColumnField";
constexpr char kColumnText[] = "Index column has been modified! table:'mall%s'";

Library Indexed(const std::string& table, const std::vector<Index>& indexes) {
  return Of(
      {{.name = table, .fields = {{.name = "uid%d"}, {.name = "zone"}, {.name = "area"}, {.name = "ZONE"}}, .indexes = indexes}});
}
Library Old(const std::vector<Index>& indexes) { return Indexed("mall%s", indexes); }
Library New(const std::vector<Index>& indexes) { return Indexed("shop%s", indexes); }

Call Indexes(const Library& old_library, const Library& new_library, int table_type = 0) {
  return Between(old_library, new_library,
                 [=](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.CompareIndex(old_schema.Meta(), new_schema.Meta(), table_type, log);
                 });
}

support::Poke IndexNumber(const std::string& table, int count) {
  return [=](const Schema& schema) { schema.Meta(table)->iIndexesNum = count; };
}
support::Poke NoIndexName(const std::string& table, int position) {
  return [=](const Schema& schema) { schema.IndexAt(table, position)->ptrName = QMX_NO_REF; };
}
support::Poke NoColumnEntry(const std::string& table, int position) {
  return [=](const Schema& schema) { schema.ColumnAt(table, 0, position)->ptrEntry = QMX_NO_REF; };
}

// Counts without lists.
support::Poke NoIndexList(const std::string& table) {
  return [=](const Schema& schema) { schema.Meta(table)->ptrIndexes = QMX_NO_REF; };
}
support::Poke NoColumnList(const std::string& table) {
  return [=](const Schema& schema) { schema.IndexAt(table, 0)->ptrColumnBase = QMX_NO_REF; };
}

const Index kByUid = {"by_uid%s", {"uid%d"}};
const Index kByUidZone = {"by_both", {"uid%d", "zone"}};

std::vector<Row> RuleRows() {
  const Outcome null_meta = Refused(-1, kRule, "Invalid parameter, meta is null");
  const Outcome bad_type = Refused(-6, kRule, "Table_type is invaild type!  table:'mall%s'");
  const Outcome list = Refused(-6, kRule, "List type table isn't allowed to configure index field! table:'mall%s'");
  const Outcome number = Refused(-6, kRule, "The number of index can't be modified! table:'mall%s'");
  const Outcome renamed = Refused(-6, kRule, "Can't change index field! index:'by_uid%s' table:'mall%s'");
  return {
      {"null_old_meta", Indexes(Absent(), New({})), null_meta},
      {"null_new_meta", Indexes(Old({}), Absent()), null_meta},
      {"null_meta_before_bad_type", Indexes(Absent(), Absent(), 2), null_meta},
      {"type_two", Indexes(Old({}), New({}), 2), bad_type},
      {"type_negative", Indexes(Old({}), New({}), -1), bad_type},
      {"type_lowest", Indexes(Old({}), New({}), INT_MIN), bad_type},
      {"bad_type_before_any_index", Indexes(Old({kByUid}), New({}), 2), bad_type},
      {"list_without_index", Indexes(Old({}), New({}), 1), {}},
      {"list_index_in_old", Indexes(Old({kByUid}), New({}), 1), list},
      {"list_index_in_new", Indexes(Old({}), New({kByUid}), 1), list},
      {"list_same_index_in_both", Indexes(Old({kByUid}), New({kByUid}), 1), list},
      {"list_with_negative_counts", Indexes(Old({}).With(IndexNumber("mall%s", -1)), New({}).With(IndexNumber("shop%s", -1)), 1),
       list},
      {"generic_without_index", Indexes(Old({}), New({})), {}},
      {"generic_with_negative_counts",
       Indexes(Old({}).With(IndexNumber("mall%s", -1)), New({}).With(IndexNumber("shop%s", -1))),
       {}},
      {"index_added", Indexes(Old({kByUid}), New({kByUid, kByUidZone})), number},
      {"index_removed", Indexes(Old({kByUid}), New({})), number},
      {"counts_that_both_mean_none_differ", Indexes(Old({}), New({}).With(IndexNumber("shop%s", -1))), number},
      {"same", Indexes(Old({kByUid, kByUidZone}), New({kByUid, kByUidZone})), {}},
      {"indexes_in_other_order", Indexes(Old({kByUid, kByUidZone}), New({kByUidZone, kByUid})), {}},
      {"renamed", Indexes(Old({{"by_zone", {"uid%d"}}}), New({kByUid})), renamed},
      {"name_in_other_letter_case", Indexes(Old({{"BY_uid%s", {"uid%d"}}}), New({kByUid})), renamed},
      {"second_renamed", Indexes(Old({kByUidZone, {"x", {"uid%d"}}}), New({kByUidZone, kByUid})), renamed},
      {"nameless_new_index", Indexes(Old({kByUid}), New({kByUid}).With(NoIndexName("shop%s", 0))),
       Refused(-6, kRule, "Can't change index field! index:'(null)' table:'mall%s'")},
      {"nameless_old_index", Indexes(Old({kByUid}).With(NoIndexName("mall%s", 0)), New({kByUid})), renamed},
      {"new_index_list_missing", Indexes(Old({kByUid}), New({kByUid}).With(NoIndexList("shop%s"))),
       Refused(-6, kRule, "Can't change index field! index:'(null)' table:'mall%s'")},
      {"old_index_list_missing", Indexes(Old({kByUid}).With(NoIndexList("mall%s")), New({kByUid})), renamed},
      {"nameless_in_both", Indexes(Old({kByUid}).With(NoIndexName("mall%s", 0)), New({kByUid}).With(NoIndexName("shop%s", 0))),
       Refused(-6, kRule, "Can't change index field! index:'(null)' table:'mall%s'")},
  };
}

// The three records of a column that is not in the new index.
Outcome ForeignColumn(const std::string& column, const std::string& index) {
  const std::string text = "The column of index field can't be modified! index:'" + index + "' table:'mall%s'";
  return {-6,
          text,
          {Error(kMember, kColumnText), Error(kColumns, "Index column has been modified!index:'" + column + "' table:'mall%s'"),
           Error(kRule, text)}};
}

std::vector<Row> ColumnRows() {
  const std::string other = "The column of index field can't be modified! index:'by_both' table:'mall%s'";
  const Outcome other_count = {-6, other, {Error(kColumns, kColumnText), Error(kRule, other)}};
  const Library both = Old({kByUidZone});
  const Library new_both = New({kByUidZone});
  return {
      {"columns_in_other_order", Indexes(both, New({{"by_both", {"zone", "uid%d"}}})), {}},
      {"one_column_more", Indexes(both, New({{"by_both", {"uid%d", "zone", "area"}}})), other_count},
      {"one_column_fewer", Indexes(both, New({{"by_both", {"uid%d"}}})), other_count},
      {"one_column_foreign", Indexes(both, New({{"by_both", {"uid%d", "area"}}})), ForeignColumn("area", "by_both")},
      {"stops_at_first_foreign_column", Indexes(both, New({{"by_both", {"area", "ZONE"}}})), ForeignColumn("area", "by_both")},
      {"column_in_other_letter_case", Indexes(both, New({{"by_both", {"uid%d", "ZONE"}}})), ForeignColumn("ZONE", "by_both")},
      {"percent_in_names", Indexes(Old({{"by_uid%s", {"zone"}}}), New({kByUid})), ForeignColumn("uid%d", "by_uid%s")},
      {"nameless_new_column", Indexes(both, new_both.With(support::NoName("shop%s", "zone"))),
       ForeignColumn("(null)", "by_both")},
      {"new_column_without_entry", Indexes(both, new_both.With(NoColumnEntry("shop%s", 1))), ForeignColumn("(null)", "by_both")},
      {"new_column_list_missing", Indexes(both, new_both.With(NoColumnList("shop%s"))), ForeignColumn("(null)", "by_both")},
      {"old_column_list_missing", Indexes(both.With(NoColumnList("mall%s")), new_both), ForeignColumn("uid%d", "by_both")},
      {"nameless_old_column", Indexes(both.With(support::NoName("mall%s", "zone")), new_both), ForeignColumn("zone", "by_both")},
      {"old_column_without_entry", Indexes(both.With(NoColumnEntry("mall%s", 0)), New({{"by_both", {"zone", "zone"}}})), {}},
  };
}

INSTANTIATE_TEST_SUITE_P(Index, RuleTest, testing::ValuesIn(RuleRows()), RowName);
INSTANTIATE_TEST_SUITE_P(IndexColumn, RuleTest, testing::ValuesIn(ColumnRows()), RowName);

// The column rule and the membership test, called directly. `Old` and `New` may have no index.
Call ColumnRule(const Library& old_library, const Library& new_library, bool has_old, bool has_new) {
  return Between(old_library, new_library,
                 [=](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   return checker.CompareIndexColumn(has_old ? old_schema.IndexAt("mall%s", 0) : nullptr,
                                                     has_new ? new_schema.IndexAt("shop%s", 0) : nullptr, old_schema.Meta(),
                                                     new_schema.Meta(), log);
                 });
}

Call ColumnMember(const char* name, bool has_index = true) {
  return Between(Old({kByUidZone}), Absent(), [=](ModifyTable& checker, const Schema& schema, const Schema&, auto log) {
    return checker.CheckWhetherColumnField(name, has_index ? schema.IndexAt("mall%s", 0) : nullptr, schema.Meta(), log);
  });
}

std::vector<Row> DirectRows() {
  const Library old_library = Old({kByUid}), new_library = New({kByUid});
  const Outcome null_index = Refused(-1, kColumns, "Invaild parameter! pstIndex is null");
  const std::string foreign = "Index column has been modified!index:'uid%d' table:'mall%s'";
  return {
      {"rule_null_old_index", ColumnRule(old_library, new_library, false, true), null_index},
      {"rule_null_new_index", ColumnRule(old_library, new_library, true, false), null_index},
      {"rule_same", ColumnRule(old_library, new_library, true, true), {}},
      {"rule_other_count", ColumnRule(Old({kByUidZone}), new_library, true, true), Refused(-7, kColumns, kColumnText)},
      {"rule_foreign",
       ColumnRule(Old({{"by_uid%s", {"zone"}}}), new_library, true, true),
       {-7, foreign, {Error(kMember, kColumnText), Error(kColumns, foreign)}}},
      {"member_null_name", ColumnMember(nullptr), Refused(-7, kMember, kColumnText)},
      {"member_null_index", ColumnMember("zone", false), Refused(-7, kMember, kColumnText)},
      {"member_first", ColumnMember("uid%d"), {}},
      {"member_last", ColumnMember("zone"), {}},
      {"member_absent", ColumnMember("area"), Refused(-7, kMember, kColumnText)},
  };
}

INSTANTIATE_TEST_SUITE_P(IndexDirect, RuleTest, testing::ValuesIn(DirectRows()), RowName);

TEST(Index, ColumnTextHasFieldNameAsIndexName) {
  const Outcome outcome = OutcomeOf(Indexes(Old({kByUidZone}), New({{"by_both", {"uid%d", "area"}}})));
  EXPECT_EQ(outcome, ForeignColumn("area", "by_both"));
}

TEST(Index, DirectionIsNotCompared) {
  const Index descending = {"by_uid%s", {{"uid%d", true}}};
  EXPECT_EQ(OutcomeOf(Indexes(Old({kByUid}), New({descending}))), Outcome{});
}

TEST(Index, RepeatedColumnPasses) {
  EXPECT_EQ(OutcomeOf(Indexes(Old({kByUidZone}), New({{"by_both", {"zone", "zone"}}}))), Outcome{});
}

// Two indexes with one name: the second new one is compared with the first old one.
TEST(Index, FindsFirstOfTwoIndexesWithOneName) {
  const std::vector<Index> twice = {{"twin", {"uid%d"}}, {"twin", {"zone"}}};
  EXPECT_EQ(OutcomeOf(Indexes(Old(twice), New(twice))), ForeignColumn("zone", "twin"));
  EXPECT_EQ(OutcomeOf(Indexes(Old(twice), New({{"twin", {"uid%d"}}, {"twin", {"uid%d"}}}))), Outcome{});
}

TEST(Index, LookupReturnsFirstIndexWithTheName) {
  const Schema schema = Old({kByUidZone, {"twin", {"uid%d"}}, {"twin", {"zone"}}}).Build();
  ModifyTable checker;
  EXPECT_EQ(checker.CheckWhetherIndexField(schema.Meta(), "by_both"), schema.IndexAt("mall%s", 0));
  EXPECT_EQ(checker.CheckWhetherIndexField(schema.Meta(), "twin"), schema.IndexAt("mall%s", 1));
  EXPECT_EQ(checker.CheckWhetherIndexField(schema.Meta(), "TWIN"), nullptr);
  EXPECT_EQ(checker.CheckWhetherIndexField(schema.Meta(), nullptr), nullptr);
  EXPECT_EQ(checker.CheckWhetherIndexField(nullptr, "twin"), nullptr);
  EXPECT_STREQ(checker.GetErrType(), "");
}

TEST(Index, LookupFindsNothingInMetaWithoutIndexes) {
  ModifyTable checker;
  for (const int count : {0, -1}) {
    const Schema schema = Old({kByUid}).With(IndexNumber("mall%s", count)).Build();
    EXPECT_EQ(checker.CheckWhetherIndexField(schema.Meta(), "by_uid%s"), nullptr) << count;
  }
  EXPECT_STREQ(checker.GetErrType(), "");
}

}  // namespace
}  // namespace rules
