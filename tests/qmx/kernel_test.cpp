// Tests every read operation: its results, also out of range and for null.
#include <gtest/gtest.h>

#include <string>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_metalib_kernel.h"

namespace {

// A library with one of each part.
qmx::Metalib Shop() {
  qmx::MetalibBuilder builder("shop", 7, qmx::Protocol::kTlv);
  builder.AddMeta("orders", QMX_TYPE_STRUCT, "TableType=GENERIC");
  builder.AddEntry({.name = "uid", .type = "uint64", .id = 1});
  builder.AddEntry({.name = "n", .type = "uint16", .id = 2, .version = 3});
  builder.AddEntry({.name = "items", .type = "item", .count = 5, .refer = "n", .customattr2 = "pii"});
  builder.SetPrimaryKey({"uid"});
  builder.SetSplittableKey({"uid", "n"});
  builder.AddMeta("item", QMX_TYPE_UNION);
  builder.AddEntry({.name = "sku", .type = "string", .size = 32});
  builder.AddMeta("empty");
  return std::move(*builder.Finish().metalib);
}

class Kernel : public ::testing::Test {
 protected:
  LPQMXMETAENTRY Entry(int index) { return qmx_get_entry_by_index(orders, index); }

  qmx::Metalib shop = Shop();
  LPQMXMETALIB lib = shop.get();
  LPQMXMETA orders = qmx_get_meta_by_name(lib, "orders");
};

TEST_F(Kernel, Library) {
  EXPECT_EQ(qmx_get_metalib_version(lib), 7);
  EXPECT_EQ(qmx_get_metalib_version(nullptr), -1);
  EXPECT_EQ(qmx_get_meta_num(lib), 3);
  EXPECT_EQ(qmx_get_meta_num(nullptr), 0);
}

TEST_F(Kernel, MetaByPosition) {
  EXPECT_STREQ(qmx_get_meta_name(qmx_get_meta_by_index(lib, 0)), "orders");
  EXPECT_STREQ(qmx_get_meta_name(qmx_get_meta_by_index(lib, 2)), "empty");
  EXPECT_EQ(qmx_get_meta_by_index(lib, 3), nullptr);
  EXPECT_EQ(qmx_get_meta_by_index(lib, -1), nullptr);
  EXPECT_EQ(qmx_get_meta_by_index(nullptr, 0), nullptr);
}

TEST_F(Kernel, MetaByName) {
  EXPECT_EQ(qmx_get_meta_by_name(lib, "orders"), qmx_get_meta_by_index(lib, 0));
  EXPECT_EQ(qmx_get_meta_by_name(lib, "item"), qmx_get_meta_by_index(lib, 1));
  for (const char* absent : {"", "a", "order", "orders ", "Orders", "zzz"}) EXPECT_EQ(qmx_get_meta_by_name(lib, absent), nullptr);
  EXPECT_EQ(qmx_get_meta_by_name(lib, nullptr), nullptr);
  EXPECT_EQ(qmx_get_meta_by_name(nullptr, "orders"), nullptr);
}

TEST_F(Kernel, NamelessMetaIsNotFound) {
  qmx_get_meta_by_name(lib, "empty")->ptrName = QMX_NO_REF;
  EXPECT_EQ(qmx_get_meta_by_name(lib, "empty"), nullptr);
  EXPECT_EQ(qmx_get_meta_by_name(lib, ""), nullptr);
  EXPECT_NE(qmx_get_meta_by_name(lib, "item"), nullptr);
}

TEST(KernelOrder, NamesCompareAsUnsignedBytes) {
  qmx::MetalibBuilder builder("x", 1, qmx::Protocol::kUnset);
  for (const char* name : {"\xFF", "a", "\x7F", "\x80"}) builder.AddMeta(name);
  const qmx::BuildResult built = builder.Finish();
  const auto position = [&](const char* name) { return qmx_get_meta_by_name(built.metalib->get(), name); };
  for (int i = 0; i < 4; ++i) {
    LPQMXMETA meta = qmx_get_meta_by_index(built.metalib->get(), i);
    EXPECT_EQ(position(qmx_get_meta_name(meta)), meta);
  }
}

TEST(KernelOrder, FirstOfEqualNamesIsFound) {
  qmx::MetalibBuilder builder("x", 1, qmx::Protocol::kUnset);
  for (const char* name : {"b", "twin", "a", "twin", "twin", "c"}) builder.AddMeta(name);
  const qmx::BuildResult built = builder.Finish();
  EXPECT_EQ(qmx_get_meta_by_name(built.metalib->get(), "twin"), qmx_get_meta_by_index(built.metalib->get(), 1));
}

TEST(KernelOrder, NoMetas) {
  const qmx::BuildResult built = qmx::MetalibBuilder("x", 1, qmx::Protocol::kUnset).Finish();
  ASSERT_TRUE(built.metalib);
  EXPECT_EQ(qmx_get_meta_num(built.metalib->get()), 0);
  EXPECT_EQ(qmx_get_meta_by_index(built.metalib->get(), 0), nullptr);
  EXPECT_EQ(qmx_get_meta_by_name(built.metalib->get(), "x"), nullptr);
}

TEST_F(Kernel, MetaTexts) {
  EXPECT_STREQ(qmx_get_meta_customattr(orders), "TableType=GENERIC");
  EXPECT_EQ(qmx_get_meta_customattr(qmx_get_meta_by_name(lib, "item")), nullptr);
  EXPECT_EQ(qmx_get_meta_customattr(nullptr), nullptr);
  EXPECT_EQ(qmx_get_meta_name(nullptr), nullptr);
}

TEST_F(Kernel, Entries) {
  EXPECT_EQ(qmx_get_entry_num(orders), 3);
  EXPECT_EQ(qmx_get_entry_num(qmx_get_meta_by_name(lib, "empty")), 0);
  EXPECT_EQ(qmx_get_entry_num(nullptr), 0);
  EXPECT_STREQ(qmx_get_entry_name(Entry(2)), "items");
  EXPECT_EQ(Entry(3), nullptr);
  EXPECT_EQ(Entry(-1), nullptr);
  EXPECT_EQ(qmx_get_entry_by_index(nullptr, 0), nullptr);
}

TEST_F(Kernel, EntriesWithoutListAreNull) {
  LPQMXMETA empty = qmx_get_meta_by_name(lib, "empty");
  empty->iEntriesNum = 2;
  EXPECT_EQ(qmx_get_entry_by_index(empty, 1), nullptr);
}

TEST_F(Kernel, EntryProperties) {
  EXPECT_EQ(qmx_get_entry_id(Entry(1)), 2);
  EXPECT_EQ(qmx_get_entry_id(Entry(2)), -1);
  EXPECT_EQ(qmx_get_entry_version(Entry(1)), 3);
  EXPECT_EQ(qmx_get_entry_version(Entry(0)), 1);
  EXPECT_EQ(qmx_get_entry_type(Entry(1)), QMX_TYPE_UINT16);
  EXPECT_EQ(qmx_get_entry_type(Entry(2)), QMX_TYPE_UNION);
  EXPECT_EQ(qmx_get_entry_unitsize(Entry(0)), 8u);
  EXPECT_EQ(qmx_get_entry_unitsize(Entry(2)), 32u);
  EXPECT_EQ(qmx_get_entry_count(Entry(2)), 5);
  EXPECT_EQ(qmx_get_entry_refer(Entry(2)), Entry(1));
  EXPECT_EQ(qmx_get_entry_refer(Entry(1)), nullptr);
}

TEST_F(Kernel, EntryTypeMeta) {
  EXPECT_EQ(qmx_get_entry_type_meta(lib, Entry(2)), qmx_get_meta_by_name(lib, "item"));
  EXPECT_EQ(qmx_get_entry_type_meta(lib, Entry(0)), nullptr);
  EXPECT_EQ(qmx_get_entry_type_meta(lib, nullptr), nullptr);
  EXPECT_EQ(qmx_get_entry_type_meta(nullptr, Entry(2)), nullptr);
}

TEST_F(Kernel, EntryCustomAttribute) {
  EXPECT_STREQ(qmx_get_entry_customattr2(lib, Entry(2)), "pii");
  EXPECT_EQ(qmx_get_entry_customattr2(lib, Entry(0)), nullptr);
  EXPECT_EQ(qmx_get_entry_customattr2(lib, nullptr), nullptr);
  EXPECT_EQ(qmx_get_entry_customattr2(nullptr, Entry(2)), nullptr);
}

TEST_F(Kernel, NullEntry) {
  EXPECT_EQ(qmx_get_entry_name(nullptr), nullptr);
  EXPECT_EQ(qmx_get_entry_id(nullptr), -1);
  EXPECT_EQ(qmx_get_entry_version(nullptr), -1);
  EXPECT_EQ(qmx_get_entry_unitsize(nullptr), 0u);
  EXPECT_EQ(qmx_get_entry_count(nullptr), 0);
  EXPECT_EQ(qmx_get_entry_refer(nullptr), nullptr);
}

TEST_F(Kernel, NullEntryIsNeitherCompositeNorSimple) {
  const int type = qmx_get_entry_type(nullptr);
  EXPECT_NE(type, QMX_TYPE_UNION);
  EXPECT_NE(type, QMX_TYPE_STRUCT);
  EXPECT_EQ(qmx::FindSimpleType(type), nullptr);
}

TEST_F(Kernel, NamelessEntry) {
  Entry(0)->ptrName = QMX_NO_REF;
  EXPECT_EQ(qmx_get_entry_name(Entry(0)), nullptr);
}

// The text of the splittable key, or the error.
std::string SplittableKey(LPQMXMETA meta, std::size_t size) {
  std::string buffer(16, '#');
  char* error = nullptr;
  const int result = qmx_get_meta_splittablekey(meta, buffer.data(), size, &error);
  EXPECT_EQ(result != 0, error != nullptr);
  if (result == 0) return buffer.substr(0, buffer.find('\0'));
  EXPECT_EQ(buffer.front(), size > 0 ? '\0' : '#');
  return std::string("error: ") + error;
}

TEST_F(Kernel, SplittableKey) {
  EXPECT_EQ(SplittableKey(orders, 16), "uid,n");
  EXPECT_EQ(SplittableKey(orders, 6), "uid,n");
  EXPECT_EQ(SplittableKey(qmx_get_meta_by_name(lib, "item"), 16), "error: the meta has no splittable key");
  EXPECT_EQ(SplittableKey(nullptr, 16), "error: no meta");
}

TEST_F(Kernel, SplittableKeyThatDoesNotFit) {
  for (const std::size_t size : {5u, 4u, 3u, 1u, 0u}) {
    EXPECT_EQ(SplittableKey(orders, size), "error: the buffer is too small for the text of the splittable key") << size;
  }
}

TEST_F(Kernel, SplittableKeyWithoutBufferOrErrorText) {
  char buffer[8];
  EXPECT_NE(qmx_get_meta_splittablekey(orders, nullptr, 8, nullptr), 0);
  EXPECT_NE(qmx_get_meta_splittablekey(nullptr, nullptr, 0, nullptr), 0);
  EXPECT_EQ(qmx_get_meta_splittablekey(orders, buffer, sizeof buffer, nullptr), 0);
}

TEST_F(Kernel, SplittableKeyOfBrokenMembers) {
  Entry(1)->ptrName = QMX_NO_REF;
  EXPECT_EQ(SplittableKey(orders, 16), "error: a member of the splittable key has no name");
  orders->ptrSplitTableKeyBase = QMX_NO_REF;
  EXPECT_EQ(SplittableKey(orders, 16), "error: the meta has no splittable key");
}

TEST_F(Kernel, FindsLibraryOfMeta) {
  const char* data = reinterpret_cast<const char*>(orders) - orders->ptrMeta;
  EXPECT_EQ(data, lib->data);
  EXPECT_EQ(data - offsetof(tagQMXMetaLib, data), reinterpret_cast<const char*>(lib));
}

}  // namespace
