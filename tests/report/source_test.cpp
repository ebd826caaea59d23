// Sources: which tables they have and where they declare a meta.
#include "schema/source.h"

#include <gmock/gmock.h>

#include "read_source.h"

namespace report_test {
namespace {

constexpr char kMall[] = R"(<metalib name="mall" version="1" protocol="QMX">
  <meta name="item"><entry name="sku" type="uint32"/></meta>
  <meta name="orders"><entry name="uid" type="uint32"/><primarykey entries="uid"/></meta>
  <meta name="carts"><entry name="uid" type="uint32"/><primarykey entries="uid"/></meta>
</metalib>
)";

TEST(Source, TablesAreMetasWithAPrimaryKeyInDeclarationOrder) {
  EXPECT_THAT(ReadSource("mall.xml", kMall).tables, testing::ElementsAre("orders", "carts"));
}

TEST(Source, MetasAreDeclaredAtTheirPosition) {
  const korvel::Source mall = ReadSource("mall.xml", kMall);
  EXPECT_EQ(PositionOf(mall, "item"), 0u);
  EXPECT_EQ(PositionOf(mall, "carts"), 2u);
  EXPECT_EQ(PositionOf(mall, "cart"), std::nullopt);
  EXPECT_EQ(DeclaredAt(mall, "orders").element.meta, 1u);
  EXPECT_TRUE(mall.HasMeta("item"));
  EXPECT_FALSE(mall.HasMeta("ite"));
}

}  // namespace
}  // namespace report_test
