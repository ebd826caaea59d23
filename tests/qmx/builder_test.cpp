// Tests the builder: the libraries that it builds, their layout, and what it refuses.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "qmx/layout_check.h"
#include "qmx/qmx_builder.h"
#include "qmx/qmx_metalib_kernel.h"

namespace {

using qmx::ElementId;
using qmx::MetalibBuilder;
using qmx::Protocol;
using Kind = qmx::ElementId::Kind;

constexpr std::uint64_t kMaxUnsigned = std::numeric_limits<std::uint64_t>::max();

std::vector<std::string> Refusals(MetalibBuilder& builder) {
  const qmx::BuildResult result = builder.Finish();
  EXPECT_EQ(result.metalib.has_value(), result.errors.empty());
  std::vector<std::string> texts;
  for (const qmx::BuildError& error : result.errors) {
    const ElementId& at = error.where;
    texts.push_back(std::to_string(static_cast<int>(at.kind)) + "/" + std::to_string(at.meta) + "/" + std::to_string(at.item) +
                    "/" + std::to_string(at.column) + " " + std::string(error.attribute) + ": " + error.text);
  }
  return texts;
}

using Texts = std::vector<std::string>;

template <typename Number>
std::string Numbered(const char* name, Number number) {
  return std::string(name).append(std::to_string(number));
}

qmx::Metalib Built(MetalibBuilder& builder) {
  qmx::BuildResult result = builder.Finish();
  for (const qmx::BuildError& error : result.errors) ADD_FAILURE() << error.text;
  EXPECT_EQ(layout::Faults(*result.metalib), Texts{});
  return std::move(*result.metalib);
}

// --- Simple types ---

TEST(SimpleTypes, CodesAndSizes) {
  std::string all;
  for (const qmx::SimpleType& type : qmx::SimpleTypes()) {
    all += std::string(type.name) + "=" + std::to_string(type.code) + "/" + std::to_string(type.unit_size) + " ";
  }
  EXPECT_EQ(all,
            "int8=2/1 uint8=3/1 int16=4/2 uint16=5/2 int32=6/4 uint32=7/4 int64=8/8 uint64=9/8 float=10/4 double=11/8 bool=12/1 "
            "datetime=13/8 string=14/0 bytes=15/0 ");
}

TEST(SimpleTypes, FoundByNameAndCode) {
  for (const qmx::SimpleType& type : qmx::SimpleTypes()) {
    EXPECT_EQ(qmx::FindSimpleType(type.name), &type);
    EXPECT_EQ(qmx::FindSimpleType(type.code), &type);
  }
  EXPECT_EQ(qmx::FindSimpleType("Int8"), nullptr);
  EXPECT_EQ(qmx::FindSimpleType(""), nullptr);
  for (const int code : {-1, 0, 1, 16}) EXPECT_EQ(qmx::FindSimpleType(code), nullptr) << code;
}

TEST(SimpleTypes, Integers) {
  std::string integers;
  for (int code = -1; code <= 16; ++code) integers += qmx::IsIntegerType(code) ? "i" : "-";
  EXPECT_EQ(integers, "---iiiiiiii-------");
}

// --- Built libraries ---

TEST(Builder, FlagWord) {
  const auto flag = [](Protocol protocol) {
    MetalibBuilder builder("x", 1, protocol);
    return Built(builder).get()->iFlag;
  };
  EXPECT_EQ(flag(Protocol::kUnset), QMX_FLAG_UNSET);
  EXPECT_EQ(flag(Protocol::kQmx), 0);
  EXPECT_EQ(flag(Protocol::kTlv), 1);
}

TEST(Builder, LibraryHeader) {
  MetalibBuilder builder("shop", 42, Protocol::kQmx);
  builder.AddMeta("a");
  const qmx::Metalib built = Built(builder);
  EXPECT_EQ(built.get()->iVersion, 42);
  EXPECT_EQ(built.get()->iMetaNum, 1);
  EXPECT_STREQ(built.get()->data + built.get()->ptrName, "shop");
}

TEST(Builder, HandleSurvivesMoves) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  qmx::Metalib first = Built(builder);
  LPQMXMETALIB handle = first.get();
  const qmx::Metalib second = std::move(first);
  EXPECT_EQ(second.get(), handle);
}

TEST(Builder, TextsAreCopied) {
  std::string name = "before";
  MetalibBuilder builder(name, 1, Protocol::kQmx);
  builder.AddMeta(name, QMX_TYPE_STRUCT, name);
  builder.AddEntry({.name = name, .type = "int8", .customattr2 = name});
  builder.SetPrimaryKey({name});
  builder.AddIndex(name, {{name}});
  name = "gone..";
  const qmx::Metalib built = Built(builder);
  LPQMXMETA meta = qmx_get_meta_by_name(built.get(), "before");
  ASSERT_NE(meta, nullptr);
  EXPECT_STREQ(qmx_get_meta_customattr(meta), "before");
  EXPECT_STREQ(qmx_get_entry_name(qmx_get_entry_by_index(meta, 0)), "before");
  EXPECT_STREQ(qmx_get_entry_customattr2(built.get(), qmx_get_entry_by_index(meta, 0)), "before");
}

TEST(Builder, AcceptsOddNamesAndNumbers) {
  MetalibBuilder builder("", -3, Protocol::kUnset);
  builder.AddMeta("");
  builder.AddMeta("\x01\xFF '\n");
  builder.AddEntry({.name = "", .type = "int8", .id = -7, .version = -2, .count = -1});
  builder.AddEntry({.name = "", .type = "string", .size = 0, .id = -7, .count = 0});
  builder.AddEntry({.name = "%n\xC3", .type = "bytes", .size = kMaxUnsigned});
  const qmx::Metalib built = Built(builder);
  LPQMXMETA meta = qmx_get_meta_by_name(built.get(), "\x01\xFF '\n");
  ASSERT_NE(meta, nullptr);
  EXPECT_EQ(qmx_get_metalib_version(built.get()), -3);
  EXPECT_EQ(qmx_get_entry_num(meta), 3);
  EXPECT_EQ(qmx_get_entry_id(qmx_get_entry_by_index(meta, 0)), -7);
  EXPECT_EQ(qmx_get_entry_count(qmx_get_entry_by_index(meta, 0)), -1);
  EXPECT_EQ(qmx_get_entry_version(qmx_get_entry_by_index(meta, 0)), -2);
  EXPECT_EQ(qmx_get_entry_unitsize(qmx_get_entry_by_index(meta, 2)), kMaxUnsigned);
  EXPECT_EQ(meta->iUnitSize, kMaxUnsigned);
}

TEST(Builder, EmptyAttributesDifferFromMissingOnes) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("t", QMX_TYPE_STRUCT, "");
  builder.AddEntry({.name = "a", .type = "int8", .customattr2 = ""});
  const qmx::Metalib built = Built(builder);
  LPQMXMETA meta = qmx_get_meta_by_index(built.get(), 0);
  EXPECT_STREQ(qmx_get_meta_customattr(meta), "");
  EXPECT_STREQ(qmx_get_entry_customattr2(built.get(), qmx_get_entry_by_index(meta, 0)), "");
}

TEST(Builder, IgnoresCallsBeforeFirstMeta) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddEntry({.name = "a", .type = "nothing"});
  builder.SetPrimaryKey({"a"});
  builder.SetSplittableKey({"a"});
  builder.AddIndex("i", {{"a"}});
  EXPECT_EQ(qmx_get_meta_num(Built(builder).get()), 0);
}

TEST(Builder, CompositesResolveInAnyOrder) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("outer");
  builder.AddEntry({.name = "a", .type = "inner", .count = 3});
  builder.AddEntry({.name = "b", .type = "choice"});
  builder.AddMeta("inner");
  builder.AddEntry({.name = "p", .type = "int32"});
  builder.AddEntry({.name = "q", .type = "choice", .count = 2});
  builder.AddMeta("choice", QMX_TYPE_UNION);
  builder.AddEntry({.name = "u", .type = "int8", .count = 5});
  builder.AddEntry({.name = "v", .type = "int16"});
  const qmx::Metalib built = Built(builder);
  const auto size = [&](const char* name) { return qmx_get_meta_by_name(built.get(), name)->iUnitSize; };
  EXPECT_EQ(size("choice"), 5u);
  EXPECT_EQ(size("inner"), 14u);
  EXPECT_EQ(size("outer"), 47u);
  LPQMXMETA outer = qmx_get_meta_by_name(built.get(), "outer");
  EXPECT_EQ(qmx_get_entry_type(qmx_get_entry_by_index(outer, 0)), QMX_TYPE_STRUCT);
  EXPECT_EQ(qmx_get_entry_type(qmx_get_entry_by_index(outer, 1)), QMX_TYPE_UNION);
}

TEST(Builder, SimpleTypeHidesMetaOfSameName) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("int8");
  builder.AddEntry({.name = "a", .type = "int8"});
  const qmx::Metalib built = Built(builder);
  EXPECT_EQ(qmx_get_entry_type(qmx_get_entry_by_index(qmx_get_meta_by_index(built.get(), 0), 0)), QMX_TYPE_INT8);
}

TEST(Builder, NamesReferToFirstOfEqualNames) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("t");
  builder.AddEntry({.name = "a", .type = "int8"});
  builder.AddEntry({.name = "a", .type = "int64"});
  builder.AddEntry({.name = "c", .type = "twin", .refer = "a"});
  builder.SetPrimaryKey({"a"});
  builder.AddMeta("twin");
  builder.AddEntry({.name = "x", .type = "int16"});
  builder.AddMeta("twin");
  builder.AddEntry({.name = "x", .type = "int32"});
  const qmx::Metalib built = Built(builder);
  LPQMXMETA table = qmx_get_meta_by_index(built.get(), 0);
  EXPECT_EQ(qmx_get_entry_refer(qmx_get_entry_by_index(table, 2)), qmx_get_entry_by_index(table, 0));
  EXPECT_EQ(qmx_get_entry_unitsize(qmx_get_entry_by_index(table, 2)), 2u);
  EXPECT_EQ(qmx_get_entry_by_index(table, 0)->chDBFlag, QMX_DBFLAG_PRIMARY_KEY);
  EXPECT_EQ(qmx_get_entry_by_index(table, 1)->chDBFlag, 0);
}

std::vector<std::int64_t> Offsets(LPQMXMETA meta, std::int64_t list, int count) {
  std::vector<std::int64_t> offsets;
  offsets.reserve(static_cast<std::size_t>(count));
  auto* members = reinterpret_cast<LPQMXDBKEYINFO>(reinterpret_cast<char*>(meta) + list);
  for (int i = 0; i < count; ++i) offsets.push_back(members[i].iHOff);
  return offsets;
}

TEST(Builder, KeyMembersHaveOffsetInRecord) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  for (const enQMXType kind : {QMX_TYPE_STRUCT, QMX_TYPE_UNION}) {
    builder.AddMeta("t", kind);
    builder.AddEntry({.name = "a", .type = "int8", .count = 3});
    builder.AddEntry({.name = "b", .type = "string", .size = 10});
    builder.AddEntry({.name = "c", .type = "int32"});
    builder.SetPrimaryKey({"c", "a", "b", "c"});
    builder.SetSplittableKey({"b", "c"});
  }
  const qmx::Metalib built = Built(builder);
  LPQMXMETA structure = qmx_get_meta_by_index(built.get(), 0);
  LPQMXMETA choice = qmx_get_meta_by_index(built.get(), 1);
  using Values = std::vector<std::int64_t>;
  EXPECT_EQ(Offsets(structure, structure->ptrPrimayKeyBase, structure->nPrimayKeyMemberNum), (Values{13, 0, 3, 13}));
  EXPECT_EQ(Offsets(structure, structure->ptrSplitTableKeyBase, structure->iSplitTableKeyMemberNum), (Values{3, 13}));
  EXPECT_EQ(structure->stSplitTableKey.iHOff, 3);
  EXPECT_EQ(Offsets(choice, choice->ptrPrimayKeyBase, choice->nPrimayKeyMemberNum), (Values{0, 0, 0, 0}));
}

TEST(Builder, KeysMayPrecedeEntriesAndBeReplaced) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("t");
  builder.SetPrimaryKey({"gone"});
  builder.SetPrimaryKey({"a"});
  builder.SetSplittableKey({"a"});
  builder.SetSplittableKey({});
  builder.AddEntry({.name = "a", .type = "int8"});
  const qmx::Metalib built = Built(builder);
  LPQMXMETA meta = qmx_get_meta_by_index(built.get(), 0);
  EXPECT_EQ(meta->nPrimayKeyMemberNum, 1);
  EXPECT_EQ(meta->iSplitTableKeyMemberNum, 0);
}

TEST(Builder, Indexes) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("t");
  builder.AddIndex("none", {});
  builder.AddIndex("two", {{"b", true}, {"a"}});
  builder.AddIndex("one", {{"a", true}});
  builder.AddEntry({.name = "a", .type = "int8"});
  builder.AddEntry({.name = "b", .type = "int8"});
  const qmx::Metalib built = Built(builder);
  LPQMXMETA meta = qmx_get_meta_by_index(built.get(), 0);
  std::string all;
  for (int i = 0; i < meta->iIndexesNum; ++i) {
    const auto& index = reinterpret_cast<LPQMXMETAINDEX>(reinterpret_cast<char*>(meta) + meta->ptrIndexes)[i];
    all += built.get()->data + index.ptrName;
    auto* columns = reinterpret_cast<LPQMXCOLUMNINFO>(reinterpret_cast<char*>(meta) + index.ptrColumnBase);
    for (int c = 0; c < index.iColumnNum; ++c) {
      auto* entry = reinterpret_cast<LPQMXMETAENTRY>(built.get()->data + columns[c].ptrEntry);
      all += std::string(c == 0 ? ":" : ",") + qmx_get_entry_name(entry) + (columns[c].iIsDesc == 1 ? "-" : "+");
      EXPECT_EQ(columns[c].iCaredCharNum, 0);
    }
    all += ";";
  }
  EXPECT_EQ(all, "none;two:b-,a+;one:a-;");
}

// Random libraries: every layout is valid, and the operations return what was declared.
TEST(Builder, RandomLibrariesHaveValidLayout) {
  std::mt19937 random(20240229);
  const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
  for (int round = 0; round < 200; ++round) {
    MetalibBuilder builder(std::string(below(20), 'l'), round, Protocol::kTlv);
    const unsigned metas = below(6);
    std::vector<unsigned> entries(metas);
    for (unsigned m = 0; m < metas; ++m) {
      entries[m] = below(9);
      builder.AddMeta(Numbered("m", m), below(2) == 0 ? QMX_TYPE_STRUCT : QMX_TYPE_UNION,
                      below(2) == 0 ? std::nullopt : std::optional<std::string_view>("attribute"));
      std::vector<std::string> names;
      for (unsigned e = 0; e < entries[m]; ++e) {
        names.push_back(std::string(below(12), 'x') + std::to_string(e));
        const bool is_composite = m + 1 < metas && below(3) == 0;
        const std::string type = is_composite ? Numbered("m", m + 1 + below(metas - m - 1)) : "uint8";
        builder.AddEntry({.name = names[e], .type = type, .count = 1, .refer = ""});
      }
      std::vector<std::string_view> members;
      for (unsigned e = 0; e < entries[m]; e += 1 + below(3)) members.push_back(names[e]);
      if (below(2) == 0) builder.SetPrimaryKey(members);
      if (below(2) == 0) builder.SetSplittableKey(members);
      std::vector<qmx::ColumnDecl> columns;
      columns.reserve(members.size());
      for (const std::string_view member : members) columns.push_back({member, below(2) == 0});
      for (unsigned i = below(3); i > 0; --i) builder.AddIndex(Numbered("i", i), columns);
    }
    const qmx::Metalib built = Built(builder);
    ASSERT_EQ(qmx_get_meta_num(built.get()), static_cast<int>(metas));
    for (unsigned m = 0; m < metas; ++m) {
      LPQMXMETA meta = qmx_get_meta_by_name(built.get(), (Numbered("m", m)).c_str());
      ASSERT_EQ(meta, qmx_get_meta_by_index(built.get(), static_cast<int>(m)));
      ASSERT_EQ(qmx_get_entry_num(meta), static_cast<int>(entries[m]));
    }
  }
}

TEST(Builder, SameDeclarationsGiveSameBytes) {
  const auto build = [] {
    MetalibBuilder builder("x", 1, Protocol::kQmx);
    builder.AddMeta("t");
    builder.AddEntry({.name = "a", .type = "string", .size = 3});
    builder.SetPrimaryKey({"a"});
    return Built(builder);
  };
  const qmx::Metalib first = build();
  const qmx::Metalib second = build();
  ASSERT_EQ(first.size(), second.size());
  EXPECT_EQ(std::memcmp(first.get(), second.get(), first.size()), 0);
}

// --- Refusals ---

TEST(BuilderRefuses, UnknownNames) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("orders");
  builder.AddEntry({.name = "uid", .type = "uint23"});
  builder.AddEntry({.name = "b", .type = "order"});
  builder.AddEntry({.name = "c", .type = "", .refer = "n"});
  builder.SetPrimaryKey({"uid", "uidd"});
  builder.SetSplittableKey({"zone"});
  builder.AddIndex("first", {{"uid"}});
  builder.AddIndex("i", {{"uid"}, {"B2"}});
  const std::string types =
      "; allowed: int8, uint8, int16, uint16, int32, uint32, int64, uint64, float, double, bool, datetime, string, bytes, or a "
      "meta of this library";
  const std::string no_entry = ", which is not an entry of meta 'orders'";
  const std::string members = "; allowed: entries of the same meta";
  const std::string counts = "; allowed: an integer entry with count 1, declared before it in the same meta";
  EXPECT_EQ(Refusals(builder),
            (Texts{"2/0/0/0 type: unknown type 'uint23' (did you mean 'uint32'?)" + types,
                   "2/0/1/0 type: unknown type 'order' (did you mean 'orders'?)" + types, "2/0/2/0 type: unknown type ''" + types,
                   "2/0/2/0 refer: entry 'c' refers to 'n'" + no_entry + counts,
                   "3/0/0/0 entries: the primary key names 'uidd'" + no_entry + " (did you mean 'uid'?)" + members,
                   "4/0/0/0 entries: the splittable key names 'zone'" + no_entry + members,
                   "6/0/1/1 entry: index 'i' names 'B2'" + no_entry + " (did you mean 'b'?)" + members}));
}

TEST(BuilderRefuses, InvalidCounts) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("t");
  builder.AddEntry({.name = "late", .type = "int8", .refer = "n"});
  builder.AddEntry({.name = "self", .type = "int8", .refer = "self"});
  builder.AddEntry({.name = "n", .type = "uint8"});
  builder.AddEntry({.name = "f", .type = "float"});
  builder.AddEntry({.name = "many", .type = "int64", .count = 2});
  builder.AddEntry({.name = "a", .type = "int8", .refer = "f"});
  builder.AddEntry({.name = "b", .type = "int8", .refer = "many"});
  builder.AddEntry({.name = "c", .type = "int8", .refer = "n"});
  const std::string tail = "; allowed: an integer entry with count 1, declared before it in the same meta";
  EXPECT_EQ(Refusals(builder), (Texts{"2/0/0/0 refer: entry 'late' refers to 'n', which is declared after it" + tail,
                                      "2/0/1/0 refer: entry 'self' refers to 'self', the entry itself" + tail,
                                      "2/0/5/0 refer: entry 'a' refers to 'f' of type 'float'" + tail,
                                      "2/0/6/0 refer: entry 'b' refers to 'many' with count 2" + tail}));
}

TEST(BuilderRefuses, Cycles) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("a");
  builder.AddEntry({.name = "x", .type = "b"});
  builder.AddMeta("b");
  builder.AddEntry({.name = "y", .type = "int8"});
  builder.AddEntry({.name = "z", .type = "a", .count = 2});
  builder.AddMeta("self", QMX_TYPE_UNION);
  builder.AddEntry({.name = "s", .type = "self"});
  EXPECT_EQ(Refusals(builder),
            (Texts{"2/1/1/0 type: structure 'a' contains itself: 'a' -> 'b' -> 'a'; allowed: structures without cycles",
                   "2/2/0/0 type: structure 'self' contains itself: 'self' -> 'self'; allowed: structures without cycles"}));
}

TEST(BuilderRefuses, LongCycleIsAbbreviated) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  for (int i = 0; i < 100; ++i) {
    const std::string next = Numbered("m", (i + 1) % 100);
    builder.AddMeta(Numbered("m", i));
    builder.AddEntry({.name = "e", .type = next});
  }
  EXPECT_EQ(Refusals(builder), (Texts{"2/99/0/0 type: structure 'm0' contains itself: 'm0' -> 'm1' -> 'm2' -> 'm3' -> ... -> "
                                      "'m96' -> 'm97' -> 'm98' -> 'm99' -> 'm0'; allowed: structures without cycles"}));
}

// A chain of metas: each has the next one as an entry.
void AddChain(MetalibBuilder& builder, int levels, int entries = 1) {
  for (int i = 0; i < levels; ++i) {
    builder.AddMeta(Numbered("m", i));
    const std::string type = i + 1 == levels ? "int8" : Numbered("m", i + 1);
    for (int e = 0; e < entries; ++e) builder.AddEntry({.name = Numbered("e", e), .type = type});
  }
}

TEST(BuilderRefuses, NestingOver128Levels) {
  MetalibBuilder allowed("x", 1, Protocol::kQmx);
  AddChain(allowed, qmx::kMaxNesting);
  EXPECT_EQ(Built(allowed).get()->iMetaNum, 128);

  MetalibBuilder refused("x", 1, Protocol::kQmx);
  AddChain(refused, 100'000);
  EXPECT_EQ(Refusals(refused), (Texts{"2/99871/0/0 type: meta 'm99871' nests structures 129 levels deep; allowed: at most 128"}));
}

// Each level doubles the number of paths: visiting each of them would never end.
TEST(Builder, SharedStructuresAreVisitedOnce) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  AddChain(builder, 60, 2);
  const qmx::Metalib built = Built(builder);
  EXPECT_EQ(qmx_get_meta_by_index(built.get(), 0)->iUnitSize, std::uint64_t{1} << 60);
}

TEST(BuilderRefuses, SizesThatOverflow) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("product");
  builder.AddEntry({.name = "p", .type = "string", .size = kMaxUnsigned / 2 + 1, .count = 2});
  builder.AddMeta("sum");
  builder.AddEntry({.name = "s", .type = "bytes", .size = kMaxUnsigned});
  builder.AddEntry({.name = "t", .type = "int8"});
  builder.AddMeta("above");
  builder.AddEntry({.name = "u", .type = "sum", .count = 100});
  builder.AddMeta("union", QMX_TYPE_UNION);
  builder.AddEntry({.name = "v", .type = "bytes", .size = kMaxUnsigned});
  builder.AddEntry({.name = "w", .type = "int8"});
  builder.AddMeta("last");
  builder.AddEntry({.name = "y", .type = "int8"});
  builder.AddEntry({.name = "z", .type = "bytes", .size = kMaxUnsigned});
  const std::string tail = " too large; allowed: at most 18446744073709551615 bytes";
  EXPECT_EQ(Refusals(builder),
            (Texts{"2/0/0/0 count: entry 'p' makes meta 'product'" + tail, "2/1/1/0 type: entry 't' makes meta 'sum'" + tail,
                   "2/4/1/0 size: entry 'z' makes meta 'last'" + tail}));
}

TEST(BuilderRefuses, ExponentialSizeOverflows) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  AddChain(builder, 70, 2);
  EXPECT_EQ(Refusals(builder), (Texts{"2/6/1/0 type: entry 'e1' makes meta 'm6' too large; allowed: at most "
                                      "18446744073709551615 bytes"}));
}

TEST(BuilderRefuses, TooManyPrimaryKeyMembers) {
  const auto build = [](std::size_t members) {
    auto builder = std::make_unique<MetalibBuilder>("x", 1, Protocol::kQmx);
    builder->AddMeta("t");
    builder->AddEntry({.name = "a", .type = "int8"});
    builder->SetPrimaryKey(std::vector<std::string_view>(members, "a"));
    return builder;
  };
  EXPECT_EQ(Refusals(*build(qmx::kMaxPrimaryKeyMembers)), Texts{});
  EXPECT_EQ(Refusals(*build(qmx::kMaxPrimaryKeyMembers + 1)),
            Texts{"3/0/0/0 entries: the primary key has 32768 members; allowed: at most 32767"});
}

TEST(BuilderRefuses, KeyMembersTooFarInsideRecord) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("t");
  builder.AddEntry({.name = "big", .type = "bytes", .size = kMaxUnsigned / 2});
  builder.AddEntry({.name = "last", .type = "int8"});
  builder.AddEntry({.name = "far", .type = "int8"});
  builder.SetPrimaryKey({"big", "last"});
  builder.SetSplittableKey({"last", "far"});
  EXPECT_EQ(Refusals(builder),
            Texts{"4/0/0/0 entries: key member 'far' starts at byte 9223372036854775808 of the record; allowed: "
                  "at most byte 9223372036854775807"});
}

TEST(BuilderRefuses, AtMostThousandErrors) {
  MetalibBuilder builder("x", 1, Protocol::kQmx);
  builder.AddMeta("t");
  for (int i = 0; i < 5000; ++i) builder.AddEntry({.name = "a", .type = "nothing", .refer = "nobody"});
  builder.SetPrimaryKey({"gone"});
  EXPECT_EQ(Refusals(builder).size(), qmx::kMaxErrors);
}

}  // namespace
