// The smallest changes for which verdict and records disagree: allowed but not readable, and refused but readable.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "codec/exceptions.h"
#include "codec/warnings.h"

namespace codec {
namespace {

using qmx::Protocol;
using support::Field;
using support::Library;
using support::Table;

constexpr int kRecords = 64;

Library Lib(Protocol protocol, int version, std::vector<Table> tables) {
  Library library = support::Of(std::move(tables));
  library.protocol = protocol;
  library.version = version;
  return library;
}

Table T(std::vector<Field> fields, std::vector<std::string> key) {
  return {.name = "t", .fields = std::move(fields), .key = std::move(key)};
}

Field Byte(const char* name, int id) { return {.name = name, .type = "uint8", .id = id}; }

Field Bytes(const char* name, int id, int count, const char* counter = "") {
  return {.name = name, .type = "uint8", .id = id, .count = count, .refer = counter};
}

Change Packed(std::vector<Table> before, std::vector<Table> after) {
  return {.old_lib = Lib(Protocol::kQmx, 5, std::move(before)), .new_lib = Lib(Protocol::kQmx, 6, std::move(after))};
}

Change Tlv(std::vector<Table> before, std::vector<Table> after) {
  return {
      .old_lib = Lib(Protocol::kTlv, 5, std::move(before)), .new_lib = Lib(Protocol::kTlv, 6, std::move(after)), .created_in = 2};
}

std::optional<Broken> FirstBroken(const Change& change) {
  std::mt19937_64 random(1);
  std::uint64_t read_back = 0;
  return ReadBack(change, kRecords, random, read_back);
}

struct Case {
  const char* name;
  const char* id;  // of the exception or of the refusal
  Change change;
};

Field Structure(const char* name, int id) { return {.name = name, .type = "s", .id = id}; }

std::vector<Case> AllowedButUnreadable() {
  const std::vector<Field> two = {Byte("a", 1), Byte("b", 2)};
  const Table counted = T({Byte("n", 1), Bytes("a", 2, 2, "n")}, {"n"});
  const Table fixed = T({Byte("n", 1), Bytes("a", 2, 2)}, {"n"});
  const auto unwritten = [](const char* counter) {
    Field field = Bytes("a", 2, 2, counter);
    field.version = 6;
    return T({Byte("n", 1), field}, {"n", "a"});
  };
  Field added = Bytes("a", 2, 1, "n");
  added.version = 6;
  Field grown = Byte("y", 2);
  grown.version = 6;
  const Table either{.name = "u", .fields = {Structure("s", 1), Bytes("w", 2, 2)}, .kind = QMX_TYPE_UNION};
  const Field key_union{.name = "k", .type = "u", .id = 1};
  Table as_union = T({Byte("a", 1)}, {"a"});
  as_union.kind = QMX_TYPE_UNION;
  return {
      {"the members of the key in another order", "key-members", Packed({T(two, {"a", "b"})}, {T(two, {"b", "a"})})},
      {"a member of the key twice", "key-members", Packed({T(two, {"a", "b"})}, {T(two, {"a", "a"})})},
      {"a structure in the key whose field is replaced by one of the same size", "key-structure",
       Tlv({{.name = "s", .fields = {Byte("x", 1)}}, T({Structure("k", 1)}, {"k"})},
           {{.name = "s", .fields = {Byte("y", 2)}}, T({Structure("k", 1)}, {"k"})})},
      {"a union in the key whose smaller field grows", "key-structure",
       Packed({{.name = "s", .fields = {Byte("x", 1)}}, either, T({key_union}, {"k"})},
              {{.name = "s", .fields = {Byte("x", 1), grown}}, either, T({key_union}, {"k"})})},
      {"no longer counted", "refer-changed", Packed({counted}, {fixed})},
      {"a field of the key that no record contains, no longer counted", "refer-changed",
       Packed({unwritten("n")}, {unwritten("")})},
      {"newly counted", "refer-changed", Packed({fixed}, {counted})},
      {"newly counted, in TLV", "refer-changed", Tlv({fixed}, {counted})},
      {"a new field counted by an old one", "refer-added", Packed({T({Byte("n", 1)}, {"n"})}, {T({Byte("n", 1), added}, {"n"})})},
      {"a table that becomes a union", "table-kind", Packed({T({Byte("a", 1)}, {"a"})}, {as_union})},
  };
}

std::vector<Case> RefusedButReadable() {
  const auto key_and = [](const Field& field) { return std::vector<Table>{T({Byte("k", 1), field}, {"k"})}; };
  const std::vector<Table> key_only = {T({Byte("k", 1)}, {"k"})};
  const auto text = [](std::uint64_t size) { return T({{.name = "k", .type = "string", .size = size, .id = 1}}, {"k"}); };
  Table indexed = key_only.front();
  indexed.indexes = {{"i", {"k"}}};
  return {
      {"an attribute that no record contains", "field.customattr2",
       Packed(key_and({.name = "a", .id = 2, .attr2 = "x"}), key_and({.name = "a", .id = 2, .attr2 = "y"}))},
      {"another version that no old record is below", "field.version",
       Packed(key_and({.name = "a", .id = 2, .version = 2}), key_and({.name = "a", .id = 2, .version = 3}))},
      {"an added index", "index.count", Packed(key_only, {indexed})},
      {"a longer text in the key", "primary-key.size", Packed({text(4)}, {text(8)})},
      {"a longer text in the key, in TLV", "primary-key.size-tlv", Tlv({text(4)}, {text(8)})},
      {"a removed field, in TLV", "field.missing-tlv", Tlv(key_and(Byte("a", 2)), key_only)},
      {"another name of the same id, in TLV", "field.missing-tlv", Tlv(key_and(Byte("a", 2)), key_and(Byte("b", 2)))},
      {"another name in the key, in TLV", "primary-key.field", Tlv(key_only, {T({Byte("l", 1)}, {"l"})})},
      {"more elements, in TLV", "field.count", Tlv(key_and(Bytes("a", 2, 2)), key_and(Bytes("a", 2, 3)))},
      {"a wider integer, in TLV", "field.type",
       Tlv(key_and({.name = "a", .type = "int32", .id = 2}), key_and({.name = "a", .type = "int64", .id = 2}))},
  };
}

TEST(Exceptions, AreAllowedAndDoNotReadBack) {
  for (const Case& one : AllowedButUnreadable()) {
    SCOPED_TRACE(one.name);
    EXPECT_EQ(Refused(one.change), "");
    const std::optional<Broken> broken = FirstBroken(one.change);
    ASSERT_TRUE(broken.has_value());
    const Exception* exception = ExplanationOf(one.change, *broken);
    ASSERT_NE(exception, nullptr) << broken->where;
    EXPECT_STREQ(exception->id, one.id);
    EXPECT_EQ(WarningsAbout(one.change), std::set<std::string>{std::string("advice.") + one.id});
  }
}

TEST(Exceptions, HaveSmallestChanges) {
  const std::vector<Case> cases = AllowedButUnreadable();
  for (const Exception& exception : Exceptions()) {
    EXPECT_TRUE(std::ranges::any_of(cases, [&](const Case& one) { return std::string(one.id) == exception.id; })) << exception.id;
  }
}

TEST(RefusedChanges, ReadBack) {
  for (const Case& one : RefusedButReadable()) {
    SCOPED_TRACE(one.name);
    EXPECT_EQ(Refused(one.change), one.id);
    const std::optional<Broken> broken = FirstBroken(one.change);
    EXPECT_FALSE(broken.has_value()) << broken->where;
  }
}

// A TLV structure drops a field, and a later version gives its id to another field. Records of the first schema are not readable
// under the third, and the checker refuses that change.
TEST(Exceptions, AllowedStepsMayBeRefusedTogether) {
  const auto tables = [](std::vector<Field> fields) {
    return std::vector<Table>{{.name = "s", .fields = std::move(fields)}, T({Byte("k", 1), Structure("a", 2)}, {"k"})};
  };
  const Field other{.name = "y", .type = "float", .id = 2};
  const std::vector<Table> first = tables({Byte("w", 1), Byte("x", 2)});
  const std::vector<Table> second = tables({Bytes("w", 1, 5)});
  const std::vector<Table> third = tables({Bytes("w", 1, 5), other});
  EXPECT_EQ(Refused(Tlv(first, second)), "");
  EXPECT_FALSE(FirstBroken(Tlv(first, second)).has_value());
  EXPECT_EQ(Refused(Tlv(second, third)), "");
  EXPECT_FALSE(FirstBroken(Tlv(second, third)).has_value());
  EXPECT_EQ(Refused(Tlv(first, third)), "field.type-tlv");
  ASSERT_TRUE(FirstBroken(Tlv(first, third)).has_value());
  EXPECT_EQ(FirstBroken(Tlv(first, third))->where, "cannot be read");
}

}  // namespace
}  // namespace codec
