// CheckWhetherExistEntry and CheckWhetherExistEntryById.

#include <climits>

#include "rules/rule_test.h"

namespace rules {
namespace {

constexpr char kByName[] = "CheckWhetherExistEntry";
constexpr char kById[] = "CheckWhetherExistEntryById";
constexpr int kOffset = 77;  // the position before the call

// The result of a lookup: the declared name of the entry it found ("" for null), the position, buffer and log.
struct Found {
  std::string entry = {};
  int offset = kOffset;
  std::string buffer = kUntouched;
  std::vector<std::string> log = {};
  bool operator==(const Found&) const = default;
};

void PrintTo(const Found& found, std::ostream* out) {
  *out << "entry [" << found.entry << "] offset " << found.offset << " buffer [" << found.buffer << "]";
  for (const std::string& line : found.log) *out << "\n  log [" << line << "]";
}

Found Failed(const std::string& method, const std::string& text) { return {"", kOffset, text, {Error(method, text)}}; }

// `call` returns an entry; `declared` are distinct names that identify the entries of mall%s.
template <typename AskEntry>
Found Look(const Schema& schema, const std::vector<std::string>& declared, AskEntry call) {
  ModifyTable checker;
  support::CaptureCategory log;
  Found found;
  LPQMXMETAENTRY entry = nullptr;
  Observe(checker, log, [&](ModifyTable& one, LPVESKCATEGORYINST category) {
    std::copy(std::begin(kUntouched), std::end(kUntouched), one.m_szErrorType);
    return entry = call(one, found.offset, category), 0;
  });
  for (const std::string& name : declared) {
    if (entry != nullptr && entry == schema.Entry("mall%s", name)) found.entry = name;
  }
  EXPECT_EQ(entry == nullptr, found.entry.empty());
  found.buffer = checker.GetErrType();
  found.log = log.Lines();
  return found;
}

const std::vector<Field> kFields = {
    {.name = "uid%d", .id = 4}, {.name = "zone", .id = 0}, {.name = "area", .id = 4}, {.name = "tail", .id = INT_MAX}};
const std::vector<std::string> kNames = {"uid%d", "zone", "area", "tail"};

Library Mall() { return Of({{.fields = kFields}}); }

Found ByName(const char* name, const Library& library) {
  const Schema schema = library.Build();
  return Look(schema, kNames, [&](ModifyTable& checker, int& offset, LPVESKCATEGORYINST log) {
    return checker.CheckWhetherExistEntry(name, schema.Meta(), offset, log);
  });
}

Found ById(int id, const Library& library) {
  const Schema schema = library.Build();
  return Look(schema, kNames, [&](ModifyTable& checker, int&, LPVESKCATEGORYINST log) {
    return checker.CheckWhetherExistEntryById(id, schema.Meta(), log);
  });
}

TEST(LookupByName, BadArgumentsWriteTextAndKeepPosition) {
  EXPECT_EQ(ByName(nullptr, Mall()), Failed(kByName, "Entry_name or meta is invalid"));
  EXPECT_EQ(ByName("zone", Absent()), Failed(kByName, "Entry_name or meta is invalid"));
}

TEST(LookupByName, MetaWithoutEntriesWritesText) {
  EXPECT_EQ(ByName("zone", Of({{}})), Failed(kByName, "Table dose not have entry, table:'mall%s'"));
}

TEST(LookupByName, MissingNameWritesNoText) {
  EXPECT_EQ(ByName("far", Mall()), Found{});
  EXPECT_EQ(ByName("ZONE", Mall()), Found{});
  EXPECT_EQ(ByName("", Mall()), Found{});
  EXPECT_EQ(ByName("zon", Mall()), Found{});
}

TEST(LookupByName, ReturnsEntryAndItsPosition) {
  EXPECT_EQ(ByName("uid%d", Mall()), (Found{"uid%d", 0}));
  EXPECT_EQ(ByName("tail", Mall()), (Found{"tail", 3}));
}

TEST(LookupByName, SkipsNamelessEntries) {
  EXPECT_EQ(ByName("zone", Mall().With(support::NoName("mall%s", "uid%d"))), (Found{"zone", 1}));
  EXPECT_EQ(ByName("zone", Mall().With(support::NoName("mall%s", "zone"))), Found{});
}

TEST(LookupByName, FindsFirstOfTwoEntriesWithOneName) {
  const Library twins = Of({{.fields = {{.name = "zone"}, {.name = "uid%d"}, {.name = "zone"}}}});
  EXPECT_EQ(ByName("zone", twins), (Found{"zone", 0}));
}

TEST(LookupById, BadArgumentsWriteText) {
  EXPECT_EQ(ById(-1, Mall()), Failed(kById, "Entry_name or meta is invalid"));
  EXPECT_EQ(ById(INT_MIN, Mall()), Failed(kById, "Entry_name or meta is invalid"));
  EXPECT_EQ(ById(4, Absent()), Failed(kById, "Entry_name or meta is invalid"));
}

// An entry with id -1 exists here, but is not found.
TEST(LookupById, NegativeIdIsNotSearched) {
  EXPECT_EQ(ById(-1, Of({{.fields = {{.name = "uid%d", .id = -1}}}})), Failed(kById, "Entry_name or meta is invalid"));
}

TEST(LookupById, MetaWithoutEntriesWritesText) {
  EXPECT_EQ(ById(4, Of({{}})), Failed(kById, "Table dose not have entry, table:'mall%s'"));
}

TEST(LookupById, IdZeroIsSearched) { EXPECT_EQ(ById(0, Mall()), (Found{"zone"})); }

TEST(LookupById, MissingIdWritesNoText) { EXPECT_EQ(ById(5, Mall()), Found{}); }

TEST(LookupById, FindsFirstOfTwoEntriesWithOneId) { EXPECT_EQ(ById(4, Mall()), (Found{"uid%d"})); }

TEST(LookupById, FindsHighestId) { EXPECT_EQ(ById(INT_MAX, Mall()), (Found{"tail"})); }

TEST(LookupById, FindsNamelessEntryById) { EXPECT_EQ(ById(0, Mall().With(support::NoName("mall%s", "zone"))), (Found{"zone"})); }

TEST(Lookup, LongTableNameIsTruncatedAtEndOfBuffer) {
  const support::LongNames long_names;
  const std::string text = support::Lengthened("Table dose not have entry, table:'mall%s'").substr(0, 1023);
  EXPECT_EQ(ByName("zone", Of({{}})), Failed(kByName, text));
  EXPECT_EQ(ById(4, Of({{}})), Failed(kById, text));
}

TEST(Lookup, WritesTextWithoutCategory) {
  ModifyTable checker;
  int offset = kOffset;
  EXPECT_EQ(checker.CheckWhetherExistEntry(nullptr, nullptr, offset, nullptr), nullptr);
  EXPECT_STREQ(checker.GetErrType(), "Entry_name or meta is invalid");
  EXPECT_EQ(offset, kOffset);
}

}  // namespace
}  // namespace rules
