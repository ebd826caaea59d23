// What a run remembers: pairs of structures that have passed, and the indexes of long lists. tests/model compares the results
// with those of a checker that remembers nothing; these tests are cases that must terminate, and cases that would be wrong if a
// run remembered too much.

#include "qmx/qmx_metalib_kernel.h"
#include "rules/rule_test.h"

namespace rules {
namespace {

// Calls one operation for table "t" of two libraries.
using AskPair = int (*)(ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, LPVESKCATEGORYINST log);

struct Operation {
  const char* name;
  AskPair call;
};

void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }

int Modify(ModifyTable& checker, const Schema& old_schema, const Schema& new_schema, LPVESKCATEGORYINST log, int init) {
  return checker.KorvelModifyTable(old_schema.Lib(), new_schema.Lib(), "t", 0, init, log, log == nullptr ? "" : "3.28.0",
                                   "n3;n20", 0);
}

constexpr Operation kFieldSet = {"CompareTableField", [](ModifyTable& checker, const Schema& a, const Schema& b, auto log) {
                                   return checker.CompareTableField(a.Meta("t"), b.Meta("t"), log);
                                 }};
constexpr Operation kRecord = {"CompareEntryValueField", [](ModifyTable& checker, const Schema& a, const Schema& b, auto log) {
                                 return checker.CompareEntryValueField(a.Meta("t"), b.Meta("t"), log);
                               }};
constexpr Operation kTlv = {"CompareEntryValueFieldTLV", [](ModifyTable& checker, const Schema& a, const Schema& b, auto log) {
                              return checker.CompareEntryValueFieldTLV(a.Meta("t"), b.Meta("t"), log);
                            }};
constexpr Operation kVersion = {"CompareVersion", [](ModifyTable& checker, const Schema& a, const Schema& b, auto log) {
                                  return checker.CompareVersion(a.Meta("t"), b.Meta("t"), 5, log);
                                }};
constexpr Operation kOrder = {"CompareOrder", [](ModifyTable& checker, const Schema& a, const Schema& b, auto log) {
                                return checker.CompareOrder(a.Meta("t"), b.Meta("t"), log);
                              }};
constexpr Operation kChecks[] = {
    {"KorvelModifyTableQmx",
     [](ModifyTable& checker, const Schema& a, const Schema& b, auto log) { return Modify(checker, a, b, log, 1); }},
    {"KorvelModifyTableTlv",
     [](ModifyTable& checker, const Schema& a, const Schema& b, auto log) { return Modify(checker, a, b, log, 2); }},
    {"CheckTableMetaCompatible", [](ModifyTable& checker, const Schema& a, const Schema& b,
                                    auto log) { return checker.CheckTableMetaCompatible(a.Lib(), b.Lib(), "t", log); }},
    {"CompareValue", [](ModifyTable& checker, const Schema& a, const Schema& b,
                        auto log) { return checker.CompareValue(a.Meta("t"), b.Meta("t"), a.Lib(), b.Lib(), 1, log); }},
    kFieldSet,
    kRecord,
    kTlv,
    kVersion,
    kOrder};
constexpr Operation kRules[] = {kFieldSet, kRecord, kTlv, kVersion, kOrder};

std::string OperationName(const testing::TestParamInfo<Operation>& info) { return info.param.name; }

// Each structure has two fields of the structure below: visiting every path would never end. Sizes double with each level and fit
// in 64 bits up to 60 levels.
Library Tower(int levels, bool empty_at_the_bottom) {
  Library library = Of({});
  library.protocol = qmx::Protocol::kTlv;
  for (int i = 0; i < levels; ++i) {
    const std::string below = i == 0 ? "int32" : "s" + std::to_string(i - 1);
    const std::string name = i + 1 == levels ? "t" : "s" + std::to_string(i);
    library.tables.push_back({.name = name, .fields = {{"n3", below, 0, 1}, {"n20", below, 0, 2}}});
  }
  library.tables.back().fields.push_back({"k", "int32", 0, 3});
  library.tables.back().key = {"k"};
  if (empty_at_the_bottom) library.pokes.push_back(support::EntryNumber("s0", 0));
  return library;
}

class SharedStructures : public testing::TestWithParam<Operation> {};

TEST_P(SharedStructures, AreVisitedOnce) {
  const Schema tower = Tower(60, false).Build();
  ModifyTable checker;
  EXPECT_EQ(GetParam().call(checker, tower, tower, nullptr), 0);
  // One rule logs its success at INFO for every structure: a structure may be skipped only if that is not written.
  support::CaptureCategory errors_only;
  errors_only.SetLow(300);
  EXPECT_EQ(GetParam().call(checker, tower, tower, &errors_only), 0);
}

INSTANTIATE_TEST_SUITE_P(Memory, SharedStructures, testing::ValuesIn(kChecks), OperationName);

TEST(SharedStructure, ThatLeavesTextIsVisitedOnceIfNothingIsLogged) {
  const Schema old_tower = Tower(60, true).Build(), new_tower = Tower(60, false).Build();
  support::CaptureCategory closed;
  closed.SetLow(299);
  for (const LPVESKCATEGORYINST log : {LPVESKCATEGORYINST{}, LPVESKCATEGORYINST{&closed}}) {
    ModifyTable checker;
    EXPECT_EQ(kOrder.call(checker, old_tower, new_tower, log), 0);
    EXPECT_STREQ(checker.GetErrType(), "Table dose not have entry, table:'s0'");
  }
}

// The text of the last visited structure stays, even if it was skipped because it had passed before.
TEST(SharedStructure, LeavesItsTextAgain) {
  Library filled = Of({{.name = "s0", .fields = {{"x"}}},
                       {.name = "s1", .fields = {{"x"}}},
                       {.name = "t", .fields = {{"a", "s0"}, {"b", "s1"}, {"c", "s0"}}, .key = {"a"}}});
  Library emptied = filled;
  emptied.pokes = {support::EntryNumber("s0", 0), support::EntryNumber("s1", 0)};
  const Schema old_schema = emptied.Build(), new_schema = filled.Build();
  ModifyTable checker;
  EXPECT_EQ(kOrder.call(checker, old_schema, new_schema, nullptr), 0);
  EXPECT_STREQ(checker.GetErrType(), "Table dose not have entry, table:'s0'");
}

// Regression: a structure that was skipped did not count as having left a text, so the structure around it, when it was skipped
// as well, left the text of another one in the buffer.
TEST(SharedStructure, LeavesTheTextOfASkippedStructureInsideIt) {
  Library filled = Of({{.name = "s0", .fields = {{"x"}}},
                       {.name = "s1", .fields = {{"x"}}},
                       {.name = "q", .fields = {{"e", "s0"}}},
                       {.name = "t", .fields = {{"a", "s0"}, {"b", "q"}, {"c", "s1"}, {"d", "q"}}, .key = {"a"}}});
  Library emptied = filled;
  emptied.pokes = {support::EntryNumber("s0", 0), support::EntryNumber("s1", 0)};
  const Schema old_schema = emptied.Build(), new_schema = filled.Build();
  ModifyTable checker;
  EXPECT_EQ(kOrder.call(checker, old_schema, new_schema, nullptr), 0);
  EXPECT_STREQ(checker.GetErrType(), "Table dose not have entry, table:'s0'");
}

// Two structures with the same name in different places. The second is the first one's, or "b", which every rule refuses.
Library TwoBoxes(int fields, bool deep, const std::string& second) {
  Table a{.name = "a"}, b{.name = "b"};
  for (int i = 0; i < fields; ++i) {
    a.fields.push_back({"f" + std::to_string(i), "int32", 0, i});
    b.fields.insert(b.fields.begin(), {"f" + std::to_string(i), "uint32", 0, i, 2});
  }
  const std::string owner = deep ? "outer" : "t";
  Library library = Of({a, b, {.name = owner, .fields = {{"first", "a", 0, 1}, {"second", second, 0, 2}}}});
  if (deep) library.tables.push_back({.name = "t", .fields = {{"box", "outer", 0, 1}}});
  return library.With(support::UnitSize(owner, "first", 64))
      .With(support::UnitSize(owner, "second", 64))
      .With([](const Schema& schema) { schema.Meta("b")->ptrName = schema.Meta("a")->ptrName; });
}

class PassedPair : public testing::TestWithParam<Operation> {};

TEST_P(PassedPair, DoesNotCoverAnotherPairWithTheSameOldOrNewStructure) {
  for (const auto& [fields, deep] : {std::pair(2, false), std::pair(12, false), std::pair(2, true), std::pair(12, true)}) {
    const Schema same = TwoBoxes(fields, deep, "a").Build(), again = TwoBoxes(fields, deep, "a").Build();
    const Schema other = TwoBoxes(fields, deep, "b").Build();
    ModifyTable checker;
    EXPECT_EQ(GetParam().call(checker, same, again, nullptr), 0);
    EXPECT_NE(GetParam().call(checker, same, other, nullptr), 0);
    EXPECT_NE(GetParam().call(checker, other, same, nullptr), 0);
    support::CaptureCategory log;
    EXPECT_NE(GetParam().call(checker, same, other, &log), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Memory, PassedPair, testing::ValuesIn(kRules), OperationName);

// The last field is beyond the number of old fields, and is searched before those in front of it are indexed.
TEST(LongList, IsSearchedToItsEnd) {
  const auto table = [](const std::vector<int>& ids) {
    Table made{.name = "t"};
    for (const int id : ids) made.fields.push_back({"f" + std::to_string(id), "int32", 0, id});
    return Of({made}).Build();
  };
  const Schema old_schema = table({1, 2, 3, 4, 5, 12, 6, 7, 8, 9, 10, 11});
  const Schema new_schema = table({1, 2, 3, 4, 5, 99, 6, 7, 8, 9, 10, 11, 12});
  for (const Operation& rule : {kRecord, kTlv}) {
    ModifyTable checker;
    EXPECT_EQ(rule.call(checker, old_schema, new_schema, nullptr), 0) << rule.name;
  }
}

// The keys before the added field are common to both sides; the added one must not be found on the old side.
TEST(LongList, HasNoFieldThatOnlyTheOtherSideHas) {
  const auto table = [](int fields, int added_version) {
    Table made{.name = "t"};
    for (int i = 0; i < fields; ++i) {
      if (i == 12 && added_version > 0) made.fields.push_back({"added", "int32", 0, 99, added_version});
      made.fields.push_back({"f" + std::to_string(i), "int32", 0, i});
    }
    return Of({made}).Build();
  };
  const Schema old_schema = table(30, 0), new_schema = table(30, 6), late_schema = table(30, 5);
  ModifyTable checker;
  EXPECT_EQ(kVersion.call(checker, old_schema, new_schema, nullptr), 0);
  EXPECT_EQ(kOrder.call(checker, old_schema, new_schema, nullptr), 0);
  EXPECT_EQ(kVersion.call(checker, old_schema, late_schema, nullptr), -8);
}

// A field that is equal on both sides, but not the first with its name there, is not part of the common prefix.
TEST(LongList, ComparesRepeatedNamesWithTheFirst) {
  for (const std::size_t fields : {3U, 20U}) {
    Table old_table{.name = "t"};
    for (std::size_t i = 0; i < fields; ++i)
      old_table.fields.push_back({"f" + std::to_string(i), "int32", 0, static_cast<int>(i)});
    old_table.fields[1].name = "f0";
    Table new_table = old_table;
    new_table.fields[0].version = 1;
    const Library old_library = Of({old_table}).With([](const Schema& schema) {
      // Only the first of the two may differ: the second is equal on both sides, and must be compared with the first.
      qmx_get_entry_by_index(schema.Meta("t"), 1)->iVersion = 4;
    });
    const Library new_library =
        Of({new_table}).With([](const Schema& schema) { qmx_get_entry_by_index(schema.Meta("t"), 1)->iVersion = 4; });
    const Schema old_schema = old_library.Build(), new_schema = new_library.Build();
    ModifyTable checker;
    EXPECT_EQ(kVersion.call(checker, old_schema, new_schema, nullptr), -8) << fields;
    EXPECT_STREQ(checker.GetErrType(), "Version of the entry can't be modified! entry:'f0' meta:'t'");
  }
}

}  // namespace
}  // namespace rules
