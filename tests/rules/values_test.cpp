// CompareValue.

#include "rules/rule_test.h"

namespace rules {
namespace {

using qmx::Protocol;

constexpr char kEntry[] = "CompareValue";

Call Values(const Library& source, const Library& destination, int init_version) {
  return Between(source, destination, [=](ModifyTable& checker, const Schema& src, const Schema& dst, auto log) {
    return checker.CompareValue(src.Meta(), dst.Meta(), src.Lib(), dst.Lib(), init_version, log);
  });
}

Library Mall(Protocol protocol, int version = 5) {
  return {
      .version = version, .protocol = protocol, .tables = {{.fields = {{.name = "uid", .id = 1}, {.name = "zone", .id = 2}}}}};
}

// Refused by the record rules and by the TLV rules.
Library Shrunk(Protocol protocol) {
  Library library = Mall(protocol);
  library.tables[0].fields[1].type = "uint16";
  return library;
}

Outcome RefusedBy(int code, const std::string& rule, const std::string& text) {
  return {code, text, {Error(rule, text), ErrorLogOnly(kEntry, rule + " failed! ret:" + std::to_string(code))}};
}

constexpr char kReduced[] = "The size of entry can't be reduced! entry:'zone' metaname:'mall%s'";

std::vector<Row> Rows() {
  constexpr Protocol kQmx = Protocol::kQmx, kTlv = Protocol::kTlv;
  const Outcome record = RefusedBy(-3, "CompareEntryValueField", kReduced);
  const Outcome tlv = RefusedBy(-3, "CompareEntryValueFieldTLV", kReduced);
  const Outcome no_version = {.code = -2, .log = {ErrorLogOnly(kEntry, "get table [mall%s] metalib version failed.")}};
  Library renamed = Mall(kTlv), swapped = Mall(kQmx);
  renamed.tables[0].name = "shop%s";
  std::swap(swapped.tables[0].fields[0], swapped.tables[0].fields[1]);
  const Outcome names = RefusedBy(-3, "CompareEntryValueField", "Can't modify the entry struct type  mall%s -> shop%s");
  return {
      {"tlv_to_record_compares_nothing_1", Values(Mall(kTlv), Shrunk(kQmx), 1), {}},
      {"tlv_to_record_compares_nothing_2", Values(Mall(kTlv), Shrunk(kQmx), 2), {}},
      {"tlv_to_unset_compares_nothing", Values(Mall(kTlv), Shrunk(Protocol::kUnset), 1), {}},
      {"tlv_tlv_2_same", Values(Mall(kTlv), Mall(kTlv), 2), {}},
      {"tlv_tlv_2_refused", Values(Mall(kTlv), Shrunk(kTlv), 2), tlv},
      {"tlv_tlv_1_refused_by_the_first_set", Values(Mall(kTlv), Shrunk(kTlv), 1), tlv},
      {"tlv_tlv_1_refused_by_the_second_set", Values(Mall(kTlv), renamed, 1), names},
      {"tlv_tlv_2_has_no_second_set", Values(Mall(kTlv), renamed, 2), {}},
      {"tlv_tlv_other_version_than_1", Values(Mall(kTlv), renamed, 0), {}},
      {"record_record_1_same", Values(Mall(kQmx), Mall(kQmx), 1), {}},
      {"record_record_1_refused", Values(Mall(kQmx), Shrunk(kQmx), 1), record},
      {"record_tlv_1_refused", Values(Mall(kQmx), Shrunk(kTlv), 1), record},
      {"unset_tlv_1_refused", Values(Mall(Protocol::kUnset), Shrunk(kTlv), 1), record},
      {"record_record_2_compares_nothing", Values(Mall(kQmx), Shrunk(kQmx), 2), {}},
      {"record_tlv_2_compares_nothing", Values(Mall(kQmx), Shrunk(kTlv), 2), {}},
      {"record_record_other_version_compares_nothing", Values(Mall(kQmx), Shrunk(kQmx), 3), {}},
      {"source_version_negative", Values(Mall(kQmx, -1), Mall(kQmx), 1), no_version},
      {"source_version_zero", Values(Mall(kQmx, 0), Mall(kQmx), 1), {}},
      {"destination_version_is_not_read", Values(Mall(kQmx), Mall(kQmx, -1), 1), {}},
      {"source_version_negative_after_the_fields", Values(Mall(kQmx, -1), Shrunk(kQmx), 1), record},
      {"source_version_not_read_in_tlv", Values(Mall(kTlv, -1), Mall(kTlv), 2), {}},
      {"order_is_not_compared", Values(Mall(kQmx), swapped, 1), {}},
  };
}

INSTANTIATE_TEST_SUITE_P(Values, RuleTest, testing::ValuesIn(Rows()), RowName);

// A flag word of 3 or 5 means TLV, all ones does not.
TEST(Values, ProtocolIsTheLowestBitOfASetFlagWord) {
  const auto outcome = [](std::int64_t word) {
    return OutcomeOf(Values(Mall(Protocol::kQmx).With(support::Flag(word)), Shrunk(Protocol::kQmx), 1)).code;
  };
  EXPECT_EQ(outcome(3), 0);
  EXPECT_EQ(outcome(5), 0);
  EXPECT_EQ(outcome(2), -3);
  EXPECT_EQ(outcome(-1), -3);
}

TEST(Values, MissingLibrariesDoNotCrash) {
  ModifyTable checker;
  EXPECT_EQ(checker.CompareValue(nullptr, nullptr, nullptr, nullptr, 2, nullptr), 0);
  EXPECT_STREQ(checker.GetErrType(), "");
  EXPECT_EQ(checker.CompareValue(nullptr, nullptr, nullptr, nullptr, 1, nullptr), -1);
  EXPECT_STREQ(checker.GetErrType(), "Invalid parameter, meta is null");
}

TEST(Values, RefusesFieldWithAnotherVersion) {
  Library source = Mall(Protocol::kQmx);
  source.tables[0].fields[1].version = 3;
  const Outcome changed = RefusedBy(-8, "CompareVersion", "Version of the entry can't be modified! entry:'zone' meta:'mall%s'");
  EXPECT_EQ(OutcomeOf(Values(source, Mall(Protocol::kQmx), 1)), changed);
  EXPECT_EQ(OutcomeOf(Values(Mall(Protocol::kQmx), source, 1)), changed);
}

// The version rule gets the destination as the old meta and the source as the new one: a field that the destination adds with a
// version at or below that of the source library passes; the other way round it would be refused.
TEST(Values, VersionRuleHasSwappedSides) {
  Library destination = Mall(Protocol::kQmx);
  destination.tables[0].fields.push_back({.name = "note", .version = 1});
  EXPECT_EQ(OutcomeOf(Values(Mall(Protocol::kQmx), destination, 1)), Outcome{});
}

TEST(Values, VersionRuleHasSwappedSidesInsideStructures) {
  const Library box = Of({{.fields = {{"items", "box%s"}}}, {.name = "box%s", .fields = {{"x"}}}});
  Library more = box;
  more.tables[1].fields.push_back({.name = "y", .version = 1});
  EXPECT_EQ(OutcomeOf(Values(box, more, 1)), Outcome{});
}

}  // namespace
}  // namespace rules
