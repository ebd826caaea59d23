// CheckWhiteListFieldLen and CheckWhiteFieldIsModify.

#include "rules/rule_test.h"

namespace rules {
namespace {

constexpr char kRule[] = "CheckWhiteListFieldLen";
constexpr std::uint64_t k128K = 131072, k256K = 262144, k10M = 10485760;

Field Blob(const std::string& name, std::uint64_t size) { return {.name = name, .type = "bytes", .size = size}; }

Library Mall(const std::vector<Field>& fields, const std::vector<std::string>& key = {}) {
  return Of({{.fields = fields, .key = key}});
}

Library Before(std::uint64_t history) { return Mall({Blob("history", history), Blob("payload", k128K)}); }

Call Lengths(const Library& old_library, const Library& new_library, const std::string& version,
             const std::string& whitelist = {}, std::optional<std::string> metaname = "mall%s") {
  return Between(old_library, new_library,
                 [=](ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, auto log) {
                   const std::string name = support::TableName(metaname.value_or(""));
                   return checker.CheckWhiteListFieldLen(metaname ? name.c_str() : nullptr, old_schema.Lib(), new_schema.Lib(),
                                                         version, whitelist, log);
                 });
}

std::string TooLong(const std::string& entry, std::uint64_t size, const std::string& limit) {
  return ErrorLogOnly(kRule, "entry " + entry + " length(" + std::to_string(size) + ") is greater than " + limit);
}
std::string Seen(const std::string& entry, std::uint64_t old_size, std::uint64_t new_size) {
  return Info(kRule, "entry " + entry + " old_len:" + std::to_string(old_size) + ",new_len:" + std::to_string(new_size));
}

Row At(const std::string& name, const std::string& version, std::uint64_t size, const Outcome& outcome) {
  return {name, Lengths(Mall({Blob("b%n", 1)}), Mall({Blob("b%n", size)}), version), outcome, false};
}
Outcome Oversized(std::uint64_t size, const std::string& limit) {
  return {-2, "ERR_ENTRY_LEN;b%n|", {TooLong("b%n", size, limit)}};
}

std::vector<Row> LimitRows() {
  const Library keyed = Mall({Blob("b%n", k10M + 1), Blob("c", 4)}, {"b%n"});
  const Library flagged = Mall({Blob("b%n", k10M + 1)}).With(support::DBFlag("mall%s", "b%n", 0xFF));
  const Library other_flags = Mall({Blob("b%n", k128K + 1)}).With(support::DBFlag("mall%s", "b%n", 0xEF));
  const Library many = Mall({{.name = "b%n", .type = "bytes", .size = k128K / 2, .count = 2}, {.name = "c"}});
  const Library too_many = Mall({{.name = "b%n", .type = "bytes", .size = k128K / 2, .count = 3}, {.name = "c"}});
  const Library negative = Mall({{.name = "b%n"}}).With(support::Count("mall%s", "b%n", -1));
  return {
      At("at_128k", "3.28.9", k128K, {}),
      At("above_128k", "3.28.9", k128K + 1, Oversized(k128K + 1, "256KB")),
      At("no_numbers_in_the_version", "old", k128K + 1, Oversized(k128K + 1, "256KB")),
      At("at_256k", "3.29.0", k256K, {}),
      At("above_256k", "3.29.0", k256K + 1, Oversized(k256K + 1, "128kB")),
      At("short_version", "3.29", k256K, {}),
      At("just_before_3_39", "3.38.99", k256K + 1, Oversized(k256K + 1, "128kB")),
      At("numbers_are_not_texts", "3.100.0", k10M, {}),
      At("at_10m", "3.39.0", k10M, {}),
      At("above_10m", "3.39.0", k10M + 1, Oversized(k10M + 1, "128kB")),
      At("next_major_version", "4.0", k10M, {}),
      {"key_field_is_not_tested", Lengths(Mall({}), keyed, "1"), {}, false},
      {"key_bit_among_others", Lengths(Mall({}), flagged, "1"), {}, false},
      {"other_bits_alone", Lengths(Mall({}), other_flags, "1"), Oversized(k128K + 1, "256KB"), false},
      {"all_elements_together_at_the_limit", Lengths(Mall({}), many, "1"), {}, false},
      {"all_elements_together_above", Lengths(Mall({}), too_many, "1"), Oversized(k128K / 2 * 3, "256KB"), false},
      {"negative_count_is_a_large_size", Lengths(Mall({}), negative, "1"), Oversized(~0ULL - 3, "256KB"), false},
      {"two_offenders",
       Lengths(Mall({}), Mall({Blob("blob_a", k128K + 1), Blob("ok", 4), Blob("blob_b", k128K + 2)}), "1"),
       {-2, "ERR_ENTRY_LEN;blob_a|blob_b|", {TooLong("blob_a", k128K + 1, "256KB"), TooLong("blob_b", k128K + 2, "256KB")}},
       false},
      {"table_removed_from_the_new_library", Lengths(Mall({Blob("b%n", k10M)}), Of({{.name = "shop%s"}}), "1"), {}, false},
  };
}

std::vector<Row> ArgumentRows() {
  const Library large = Mall({Blob("b%n", k10M)});
  const Outcome bad = {.code = -1};
  Row no_category = {"null_category", nullptr, bad};
  const Call with_category = Lengths(large, large, "1", "b%n");
  no_category.call = [with_category](ModifyTable& checker, LPVESKCATEGORYINST) { return with_category(checker, nullptr); };
  return {
      {"null_name", Lengths(large, large, "1", "b%n", std::nullopt), bad},
      {"empty_name", Lengths(large, large, "1", "b%n", ""), bad},
      {"null_old_library", Lengths(Absent(), large, "1", "b%n"), bad},
      {"null_new_library", Lengths(large, Absent(), "1", "b%n"), bad},
      no_category,
  };
}

const std::string kGrew = "WARNING_WHITELIST:entry:history size 131072 -> 524288 |";

std::vector<Row> WhitelistRows() {
  const Library before = Before(k128K);
  const Library after = Mall({Blob("history", 524288), Blob("payload", k128K)});
  const Library both = Mall({Blob("history", 524288), Blob("payload", k128K + 1)});
  const std::string both_grew = kGrew + "entry:payload size 131072 -> 131073 |";
  const Outcome grew = {
      -3, kGrew, {Seen("history", k128K, 524288), Warn(kRule, kGrew)}, {"history 131072 -> 524288"}, {"history"}};
  Outcome one_offends = {-2,
                         "ERR_ENTRY_LEN;payload|",
                         {Seen("history", k128K, 524288), TooLong("payload", k128K + 1, "256KB")},
                         {"history 131072 -> 524288"},
                         {"history"}};
  Outcome long_list = grew;
  long_list.white = {"a", "b c", "history"};
  return {
      {"grew", Lengths(before, after, "1", "history"), grew, false},
      {"list_of_several", Lengths(before, after, "1", "a;history;b c"), long_list, false},
      {"empty_pieces_match_nothing", Lengths(before, after, "1", ";;history;"), grew, false},
      {"two_grew",
       Lengths(before, both, "1", "history;payload"),
       {-3,
        both_grew,
        {Seen("history", k128K, 524288), Seen("payload", k128K, k128K + 1), Warn(kRule, both_grew)},
        {"history 131072 -> 524288", "payload 131072 -> 131073"},
        {"history", "payload"}},
       false},
      {"growth_is_recorded_where_another_field_offends", Lengths(before, both, "1", "history"), one_offends, false},
      {"other_letter_case",
       Lengths(before, after, "1", "HISTORY"),
       {-2, "ERR_ENTRY_LEN;history|", {TooLong("history", 524288, "256KB")}, {}, {"HISTORY"}},
       false},
      {"new_field",
       Lengths(Mall({Blob("payload", 4)}), after, "1", "history"),
       {.log = {Seen("history", 0, 524288)}, .white = {"history"}},
       false},
      {"table_not_in_the_old_library",
       Lengths(Of({{.name = "shop%s"}}), after, "1", "history"),
       {.log = {Seen("history", 0, 524288)}, .white = {"history"}},
       false},
      {"same_size",
       Lengths(after, after, "1", "history"),
       {.log = {Seen("history", 524288, 524288)}, .white = {"history"}},
       false},
      {"shrank_but_is_over_the_limit",
       Lengths(Before(k10M), after, "1", "history"),
       {.log = {Seen("history", k10M, 524288)}, .white = {"history"}},
       false},
      {"grew_within_the_limit", Lengths(Before(4), before, "1", "history"), {.white = {"history"}}, false},
      {"percent_in_the_name",
       Lengths(Mall({Blob("b%n", 1)}), Mall({Blob("b%n", k128K + 1)}), "1", "b%n"),
       {-3,
        "WARNING_WHITELIST:entry:b%n size 1 -> 131073 |",
        {Seen("b%n", 1, k128K + 1), Warn(kRule, "WARNING_WHITELIST:entry:b%n size 1 -> 131073 |")},
        {"b%n 1 -> 131073"},
        {"b%n"}},
       false},
  };
}

INSTANTIATE_TEST_SUITE_P(LengthLimit, RuleTest, testing::ValuesIn(LimitRows()), RowName);
INSTANTIATE_TEST_SUITE_P(LengthArguments, RuleTest, testing::ValuesIn(ArgumentRows()), RowName);
INSTANTIATE_TEST_SUITE_P(LengthWhitelist, RuleTest, testing::ValuesIn(WhitelistRows()), RowName);

TEST(Whitelist, LimitTextsAreSwapped) {
  const auto limit_text = [](const std::string& version, std::uint64_t size) {
    return OutcomeOf(Lengths(Mall({}), Mall({Blob("b%n", size)}), version), false).log;
  };
  EXPECT_EQ(limit_text("3.28.9", k128K + 1), std::vector{TooLong("b%n", k128K + 1, "256KB")});
  EXPECT_EQ(limit_text("3.29.0", k256K + 1), std::vector{TooLong("b%n", k256K + 1, "128kB")});
}

TEST(Whitelist, ServerWithLimitOf10MiBReports128kB) {
  const Outcome outcome = OutcomeOf(Lengths(Mall({}), Mall({Blob("b%n", k10M + 1)}), "3.39.0"), false);
  EXPECT_EQ(outcome, Oversized(k10M + 1, "128kB"));
}

TEST(Whitelist, OversizedFieldsAreReportedInTheBufferOnly) {
  const Outcome outcome = OutcomeOf(Lengths(Mall({}), Mall({Blob("b%n", k128K + 1)}), "1"), false);
  EXPECT_EQ(outcome.buffer, "ERR_ENTRY_LEN;b%n|");
  EXPECT_EQ(outcome.log.size(), 1U);
}

TEST(Whitelist, ReportsAndWarningAreTruncated) {
  const std::string name(1500, 'n');
  const std::string report = ("WARNING_WHITELIST:entry:" + name).substr(0, 1023);
  const Library before = Mall({Blob(name, 1)}), after = Mall({Blob(name, k128K + 1)});
  EXPECT_EQ(OutcomeOf(Lengths(before, after, "1", name), false),
            (Outcome{-3, report, {Seen(name, 1, k128K + 1), Warn(kRule, report)}, {name + " 1 -> 131073"}, {name}}));
  EXPECT_EQ(OutcomeOf(Lengths(before, after, "1"), false),
            (Outcome{-2, ("ERR_ENTRY_LEN;" + name).substr(0, 1023), {TooLong(name, k128K + 1, "256KB")}}));
}

// Whatever the whitelist contains, a null name is not in it, and its report consists of the separator only.
TEST(Whitelist, NamelessFieldIsNeverOnTheList) {
  const Library nameless = Mall({Blob("b", k128K + 1)}).With(support::NoName("mall%s", "b"));
  EXPECT_EQ(OutcomeOf(Lengths(Mall({}), nameless, "1", "(null);b"), false),
            (Outcome{-2, "ERR_ENTRY_LEN;|", {TooLong("(null)", k128K + 1, "256KB")}, {}, {"(null)", "b"}}));
}

// Several calls on one checker.
class TwoCalls : public testing::Test {
 protected:
  Outcome Call(const Library& old_library, const Library& new_library, const std::string& whitelist) {
    log_.records.clear();
    return Observe(checker_, log_, Lengths(old_library, new_library, "1", whitelist));
  }

  ModifyTable checker_;
  support::CaptureCategory log_;
  const Library before_ = Before(k128K);
  const Library after_ = Mall({Blob("history", 524288), Blob("payload", k128K)});
};

TEST_F(TwoCalls, NodesOfFirstCallAreReportedAgain) {
  Call(before_, after_, "history");
  const Outcome again = {-3, kGrew, {Warn(kRule, kGrew)}, {"history 131072 -> 524288"}, {"history"}};
  EXPECT_EQ(Call(before_, before_, ""), again);
}

TEST_F(TwoCalls, SecondReportListsNodesOfBoth) {
  Call(before_, after_, "history");
  const std::string both = kGrew + "entry:payload size 131072 -> 131073 |";
  EXPECT_EQ(Call(before_, Mall({Blob("payload", k128K + 1)}), "payload"),
            (Outcome{-3,
                     both,
                     {Seen("payload", k128K, k128K + 1), Warn(kRule, both)},
                     {"history 131072 -> 524288", "payload 131072 -> 131073"},
                     {"history", "payload"}}));
}

TEST_F(TwoCalls, EmptyWhitelistKeepsNamesOfFirstCall) {
  Call(before_, before_, "history");
  EXPECT_EQ(Call(before_, after_, "").white, std::vector<std::string>{"history"});
  EXPECT_EQ(checker_.printVec.size(), 1U);
}

TEST_F(TwoCalls, NextCallReportsGrowthOfRefusedCall) {
  EXPECT_EQ(Call(before_, Mall({Blob("history", 524288), Blob("payload", k10M)}), "history").code, -2);
  EXPECT_EQ(Call(before_, before_, "").code, -3);
}

// Sizes of a field in the old schema, called directly.
class OldSize : public testing::Test {
 protected:
  bool Grew(const char* name, std::size_t new_size) { return checker_.CheckWhiteFieldIsModify(meta_, new_size, name, size_); }

  const Schema schema_ = Mall({{.name = "a", .count = 3}, Blob("twin", 8), Blob("twin", 9)}).Build();
  LPQMXMETA meta_ = schema_.Meta();
  ModifyTable checker_;
  std::size_t size_ = 77;
};

TEST_F(OldSize, StrictlyGrownFieldsOnly) {
  EXPECT_TRUE(Grew("a", 13));
  EXPECT_FALSE(Grew("a", 12));
  EXPECT_FALSE(Grew("a", 11));
  EXPECT_EQ(size_, 12U);
}

TEST_F(OldSize, UsesFirstOfTwoFieldsWithOneName) {
  EXPECT_TRUE(Grew("twin", 9));
  EXPECT_EQ(size_, 8U);
}

TEST_F(OldSize, UnknownFieldKeepsSize) {
  EXPECT_FALSE(Grew("A", 13));
  EXPECT_FALSE(Grew(nullptr, 13));
  meta_ = nullptr;
  EXPECT_FALSE(Grew("a", 13));
  EXPECT_EQ(size_, 77U);
  EXPECT_STREQ(checker_.GetErrType(), "");
}

}  // namespace
}  // namespace rules
