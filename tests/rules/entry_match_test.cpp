// MatchEntries: every member of an entry's record either makes two entries different, or is on a list of members that no rule
// reads. tests/model shows that the latter change no result.
#include "common/entry_match.h"

#include <cstddef>

#include "rules/rule_test.h"

namespace rules {
namespace {

using korvel::EntryMatch;

// Two entries, in libraries with the same declaration. Changes are made in the new one's record.
struct Change {
  LPQMXMETAENTRY changed;
  const Schema& schema;  // of the new library
};

// A member, or part of a member, of `size` bytes at `offset`.
struct MemberRow {
  const char* name;
  std::size_t offset;
  std::size_t size;
  EntryMatch expected;
  void (*change)(const Change& change);
};

void PrintTo(const MemberRow& row, std::ostream* out) { *out << row.name; }

#define MEMBER(name) offsetof(tagQMXMetaEntry, name), sizeof(tagQMXMetaEntry::name)

const MemberRow kMembers[] = {
    // The offset of the record. Both libraries are read through it; in the new one it differs, see RecordOffsetMayDiffer.
    {"ptrEntry", MEMBER(ptrEntry), EntryMatch::kSame, [](const Change&) {}},
    {"ptrName", MEMBER(ptrName), EntryMatch::kDifferent,
     [](const Change& one) { one.changed->ptrName = one.schema.Entry("mall%s", "other")->ptrName; }},
    {"ptrCustomAttr2", MEMBER(ptrCustomAttr2), EntryMatch::kDifferent,
     [](const Change& one) { one.changed->ptrCustomAttr2 = QMX_NO_REF; }},
    // The inner structure is compared separately.
    {"ptrTypeMeta", MEMBER(ptrTypeMeta), EntryMatch::kSame,
     [](const Change& one) { one.changed->ptrTypeMeta = one.schema.Meta("box%s")->ptrMeta; }},
    {"ptrRefer", MEMBER(ptrRefer), EntryMatch::kDifferent, [](const Change& one) { one.changed->ptrRefer = QMX_NO_REF; }},
    // Rules check whether there is a refer, but not which entry it names.
    {"ptrRefer_to_another", MEMBER(ptrRefer), EntryMatch::kSame,
     [](const Change& one) { one.changed->ptrRefer = one.schema.Entry("mall%s", "other")->ptrEntry; }},
    {"iUnitSize", MEMBER(iUnitSize), EntryMatch::kDifferent, [](const Change& one) { ++one.changed->iUnitSize; }},
    {"iID", MEMBER(iID), EntryMatch::kDifferent, [](const Change& one) { ++one.changed->iID; }},
    {"iVersion", MEMBER(iVersion), EntryMatch::kDifferent, [](const Change& one) { ++one.changed->iVersion; }},
    {"iType", MEMBER(iType), EntryMatch::kDifferent, [](const Change& one) { one.changed->iType = QMX_TYPE_INT64; }},
    {"iCount", MEMBER(iCount), EntryMatch::kDifferent, [](const Change& one) { ++one.changed->iCount; }},
    {"chDBFlag", MEMBER(chDBFlag), EntryMatch::kDifferent,
     [](const Change& one) { one.changed->chDBFlag ^= QMX_DBFLAG_PRIMARY_KEY; }},
    // Only the primary-key bit has a meaning for the checker.
    {"chDBFlag_other_bits", MEMBER(chDBFlag), EntryMatch::kSame,
     [](const Change& one) { one.changed->chDBFlag ^= static_cast<std::uint8_t>(~QMX_DBFLAG_PRIMARY_KEY); }},
    {"chReserved", MEMBER(chReserved), EntryMatch::kSame, [](const Change& one) { one.changed->chReserved[0] = 1; }},
};

#undef MEMBER

Library Mall() {
  return Of({{.name = "box%s", .fields = {{"x"}}},
             {.fields = {{.name = "number"},
                         {.name = "other"},
                         {.name = "list", .type = "uint32", .id = 3, .count = 8, .refer = "number", .attr2 = "x"},
                         {.name = "box", .type = "box%s", .id = 4}}}});
}

EntryMatch Match(const Schema& left, const Schema& right, const char* field) {
  return korvel::MatchEntries(left.Lib(), left.Entry("mall%s", field), right.Lib(), right.Entry("mall%s", field));
}

class EntryMember : public testing::TestWithParam<MemberRow> {};

TEST_P(EntryMember, EndsMatchUnlessNoRuleReadsIt) {
  const Schema old_schema = Mall().Build(), new_schema = Mall().Build();
  ASSERT_EQ(Match(old_schema, new_schema, "list"), EntryMatch::kSame);
  GetParam().change({new_schema.Entry("mall%s", "list"), new_schema});
  EXPECT_EQ(Match(old_schema, new_schema, "list"), GetParam().expected);
  EXPECT_EQ(Match(new_schema, old_schema, "list"), GetParam().expected);
}

std::string MemberName(const testing::TestParamInfo<MemberRow>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Match, EntryMember, testing::ValuesIn(kMembers), MemberName);

// A new member needs a row above, and a rule about a member that is not compared needs MatchEntries to compare it.
TEST(EntryMatch, EveryByteOfTheRecordIsListed) {
  std::size_t end = 0;
  for (const MemberRow& row : kMembers) {
    if (row.offset + row.size <= end) continue;
    EXPECT_EQ(row.offset, end) << row.name;
    end = row.offset + row.size;
  }
  EXPECT_EQ(end, sizeof(tagQMXMetaEntry));
}

TEST(EntryMatch, RecordOffsetMayDiffer) {
  Library moved = Mall();
  moved.tables.insert(moved.tables.begin(), {.name = "bag%s", .fields = {{"y"}}});
  const Schema old_schema = Mall().Build(), new_schema = moved.Build();
  const LPQMXMETAENTRY old_entry = old_schema.Entry("mall%s", "list"), new_entry = new_schema.Entry("mall%s", "list");
  EXPECT_NE(old_entry->ptrEntry, new_entry->ptrEntry);
  EXPECT_NE(old_entry->ptrName, new_entry->ptrName);
  EXPECT_EQ(Match(old_schema, new_schema, "list"), EntryMatch::kSame);
}

TEST(EntryMatch, StructureIsNotCompared) {
  Library grown = Mall();
  grown.tables[0].fields.push_back({"y"});
  grown.pokes = {support::UnitSize("mall%s", "box", 4)};
  const Schema old_schema = Mall().With(support::UnitSize("mall%s", "box", 4)).Build(), new_schema = grown.Build();
  EXPECT_EQ(Match(old_schema, new_schema, "box"), EntryMatch::kSameComposite);
}

TEST(EntryMatch, MissingAttributeEqualsEmptyOne) {
  Library empty = Mall(), none = Mall();
  empty.tables[1].fields[2].attr2 = "";
  none.tables[1].fields[2].attr2 = std::nullopt;
  EXPECT_EQ(Match(empty.Build(), none.Build(), "list"), EntryMatch::kSame);
}

TEST(EntryMatch, MissingEntryMatchesNothing) {
  const Schema schema = Mall().Build();
  const LPQMXMETAENTRY entry = schema.Entry("mall%s", "list");
  EXPECT_EQ(korvel::MatchEntries(schema.Lib(), nullptr, schema.Lib(), entry), EntryMatch::kDifferent);
  EXPECT_EQ(korvel::MatchEntries(schema.Lib(), entry, schema.Lib(), nullptr), EntryMatch::kDifferent);
  EXPECT_EQ(korvel::MatchEntries(schema.Lib(), nullptr, schema.Lib(), nullptr), EntryMatch::kDifferent);
  const Schema nameless = Mall().With(support::NoName("mall%s", "list")).Build();
  EXPECT_EQ(Match(nameless, nameless, "list"), EntryMatch::kDifferent);
}

}  // namespace
}  // namespace rules
