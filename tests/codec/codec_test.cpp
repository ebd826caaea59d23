// Tests the codecs: the bytes that they write, the bytes that they refuse, and that they read back what they write.
#include <gtest/gtest.h>

#include <string>

#include "codec/compare.h"
#include "codec/key.h"
#include "codec/packed.h"
#include "codec/random_change.h"
#include "codec/tlv.h"
#include "qmx/qmx_metalib_kernel.h"

namespace codec {
namespace {

using namespace std::string_literals;
using support::Field;
using support::Schema;
using support::Table;

Schema SchemaOf(std::vector<Field> fields, std::vector<std::string> key = {}) {
  return support::Of({Table{.name = "t", .fields = std::move(fields), .key = std::move(key)}}).Build();
}

// A record with these elements for each field.
Value RecordOf(const Schema& schema, const std::vector<std::vector<std::string>>& elements) {
  Value record = Unread(schema.Meta("t"));
  for (std::size_t i = 0; i < elements.size(); ++i) {
    FieldValue& field = record.fields[i];
    field.present = true;
    for (const std::string& bytes : elements[i]) field.elements.push_back({qmx_get_entry_type(field.entry), bytes, {}});
  }
  return record;
}

// A number, a text, and an array that the number counts.
std::vector<Field> Usual() {
  return {{.name = "n", .type = "uint8", .id = 1},
          {.name = "text", .type = "string", .size = 4, .id = 2, .version = 3},
          {.name = "list", .type = "int16", .id = 3, .version = 4, .count = 3, .refer = "n"}};
}

const std::vector<std::vector<std::string>> kUsual = {{"\2"}, {"hi"}, {"\1\0"s, "\xff\xff"}};

TEST(Packed, WritesVersionThenFieldsInOrder) {
  const Schema schema = SchemaOf(Usual());
  EXPECT_EQ(WritePacked(RecordOf(schema, kUsual), 5), "\5\0\0\0"s + "\2" + "\2\0\0\0hi"s + "\1\0\xff\xff"s);
}

TEST(Packed, OmitsFieldsAboveVersion) {
  const Schema schema = SchemaOf(Usual());
  EXPECT_EQ(WritePacked(RecordOf(schema, kUsual), 2), "\2\0\0\0\2"s);
  const std::optional<Value> read = ReadPacked("\2\0\0\0\2"s, schema.Meta("t"));
  ASSERT_TRUE(read.has_value());
  EXPECT_FALSE(read->fields[1].present);
  EXPECT_EQ(read->fields[1].elements.front().bytes, "");
  EXPECT_EQ(read->fields[2].elements.size(), 2U);
  EXPECT_TRUE(IsDefault(read->fields[2].elements.back()));
}

TEST(Packed, RefusesShortAndLongRecords) {
  const Schema schema = SchemaOf(Usual());
  const std::string record = WritePacked(RecordOf(schema, kUsual), 5);
  for (std::size_t size = 0; size < record.size(); ++size) {
    EXPECT_FALSE(ReadPacked(record.substr(0, size), schema.Meta("t")).has_value()) << size;
  }
  EXPECT_TRUE(ReadPacked(record, schema.Meta("t")).has_value());
  EXPECT_FALSE(ReadPacked(record + "x", schema.Meta("t")).has_value());
}

TEST(Packed, RefusesValuesThatDoNotFit) {
  const Schema schema = SchemaOf(Usual());
  EXPECT_FALSE(ReadPacked("\5\0\0\0\0\4\0\0\0four"s, schema.Meta("t")).has_value()) << "no room for the terminating zero";
  EXPECT_FALSE(ReadPacked("\3\0\0\0\4\2\0\0\0hi"s, schema.Meta("t")).has_value()) << "counts more than there may be";
}

TEST(Tlv, WritesTagForEachElement) {
  const Schema schema = SchemaOf(Usual());
  EXPECT_EQ(WriteTlv(RecordOf(schema, kUsual)),
            "\1\0\0\0\1\0\0\0\2"s + "\2\0\0\0\2\0\0\0hi"s + "\3\0\0\0\2\0\0\0\1\0"s + "\3\0\0\0\2\0\0\0\xff\xff"s);
}

TEST(Tlv, SkipsUnknownTagsAndAddsDefaults) {
  const Schema schema = SchemaOf(Usual());
  const std::optional<Value> read = ReadTlv("\7\0\0\0\1\0\0\0x\1\0\0\0\1\0\0\0\1"s, schema.Meta("t"));
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(read->fields[0].elements.front().bytes, "\1");
  EXPECT_FALSE(read->fields[1].present);
  ASSERT_EQ(read->fields[2].elements.size(), 1U);
  EXPECT_TRUE(IsDefault(read->fields[2].elements.front()));
}

TEST(Tlv, WidensIntegers) {
  const Schema schema = SchemaOf({{.name = "i", .type = "int32", .id = 1}, {.name = "u", .type = "uint32", .id = 2}});
  const std::optional<Value> read = ReadTlv("\1\0\0\0\1\0\0\0\xfe\2\0\0\0\1\0\0\0\xfe"s, schema.Meta("t"));
  ASSERT_TRUE(read.has_value());
  EXPECT_EQ(read->fields[0].elements.front().bytes, "\xfe\xff\xff\xff");
  EXPECT_EQ(read->fields[1].elements.front().bytes, "\xfe\0\0\0"s);
  EXPECT_FALSE(ReadTlv("\1\0\0\0\5\0\0\0....."s, schema.Meta("t")).has_value()) << "too wide";
}

TEST(Tlv, RefusesTruncatedRecord) {
  const Schema schema = SchemaOf(Usual());
  const std::string record = "\1\0\0\0\1\0\0\0\1"s;
  for (std::size_t size = 1; size < record.size(); ++size) {
    EXPECT_FALSE(ReadTlv(record.substr(0, size), schema.Meta("t")).has_value()) << size;
  }
}

TEST(Keys, ContainMembersInOrder) {
  const Schema schema = SchemaOf(Usual(), {"text", "n"});
  EXPECT_EQ(KeysOf(RecordOf(schema, kUsual), schema.Meta("t")).primary, "\2\0\0\0hi\2"s);
  EXPECT_EQ(KeysOf(RecordOf(schema, kUsual), schema.Meta("t")).splittable, "");
}

TEST(Compare, ReportsFirstDifference) {
  const Schema schema = SchemaOf(Usual());
  const Value usual = RecordOf(schema, kUsual);
  EXPECT_EQ(Difference(usual, usual, Match::kName), "");
  EXPECT_EQ(Difference(usual, RecordOf(schema, {{"\2"}, {"ho"}, kUsual[2]}), Match::kId), "text[0] is another value");
  EXPECT_EQ(Difference(usual, RecordOf(schema, {{"\2"}, {"hi"}, {"\1\0"s}}), Match::kId), "list has another number of elements");
  const Schema shorter = SchemaOf({Usual().front()});
  EXPECT_EQ(Difference(usual, RecordOf(shorter, {{"\2"}}), Match::kName), "text is lost");
  EXPECT_EQ(Difference(usual, RecordOf(shorter, {{"\2"}}), Match::kId), "");
  EXPECT_EQ(Difference(RecordOf(shorter, {{"\2"}}), usual, Match::kId), "text is new and not default");
}

// Every record of every random library is read as it was written.
TEST(Codecs, ReadWhatTheyWrite) {
  for (std::uint64_t seed = 0; seed < 500; ++seed) {
    std::mt19937_64 random(seed);
    const Change change = RandomChange(random);
    const Schema schema = change.old_lib.Build();
    const LPQMXMETA meta = schema.Meta("t");
    const Value record = RandomRecord(meta, random);
    constexpr int kAboveAll = 100;
    const std::optional<Value> packed = ReadPacked(WritePacked(record, kAboveAll), meta);
    const std::optional<Value> tlv = ReadTlv(WriteTlv(record), meta);
    ASSERT_TRUE(packed.has_value() && tlv.has_value()) << seed;
    ASSERT_EQ(Difference(record, *packed, Match::kName), "") << seed;
    ASSERT_EQ(Difference(record, *tlv, Match::kId), "") << seed;
    ASSERT_EQ(WritePacked(*packed, kAboveAll), WritePacked(record, kAboveAll)) << seed;
    ASSERT_EQ(WriteTlv(*tlv), WriteTlv(record)) << seed;
    ASSERT_EQ(KeysOf(*tlv, meta), KeysOf(record, meta)) << seed;
  }
}

}  // namespace
}  // namespace codec
