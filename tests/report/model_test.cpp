// Models: what they contain of a library, and the library built from one.
#include "schema/model.h"

#include <gmock/gmock.h>

#include "models.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::EntryModel;
using korvel::MetaModel;
using korvel::Model;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kMall[] = R"(<metalib name="mall" version="7" protocol="TLV">
  <meta name="unused"><entry name="x" id="1" type="int8"/></meta>
  <meta name="deep"><entry name="x" id="1" type="int8"/></meta>
  <meta name="either" kind="union"><entry name="d" id="1" type="deep"/></meta>
  <meta name="orders" customattr="TableType=GENERIC">
    <entry name="uid" id="1" type="uint32"/>
    <entry name="note" id="2" type="string" size="9" version="3" customattr2="pii"/>
    <entry name="n" id="3" type="uint8"/>
    <entry name="parts" id="4" type="either" count="5" refer="n"/>
    <entry name="more" id="5" type="deep"/>
    <primarykey entries="uid n"/><splittablekey entries="n"/>
    <index name="by_n"><column entry="n" desc="true"/></index>
  </meta>
</metalib>
)";

std::vector<std::string> NamesOf(const Model& model) {
  std::vector<std::string> names;
  for (const MetaModel& meta : model.metas) names.push_back(meta.name);
  return names;
}

TEST(Model, ContainsWhatTheTableReaches) {
  const Model model = ModelOf(ReadSource("mall.xml", kMall), "orders");
  EXPECT_EQ(model.name, "mall");
  EXPECT_EQ(model.version, 7);
  EXPECT_EQ(model.protocol, qmx::Protocol::kTlv);
  EXPECT_THAT(NamesOf(model), ElementsAre("orders", "either", "deep"));
  EXPECT_EQ(model.metas[1].kind, QMX_TYPE_UNION);
  EXPECT_EQ(model.metas[0].position, 3u);
  MetaModel orders{.name = "orders", .customattr = "TableType=GENERIC"};
  orders.entries = {{.name = "uid", .type = "uint32", .id = 1},
                    {.name = "note", .type = "string", .size = 9, .id = 2, .version = 3, .customattr2 = "pii"},
                    {.name = "n", .type = "uint8", .id = 3},
                    {.name = "parts", .type = "either", .id = 4, .count = 5, .refer = "n"},
                    {.name = "more", .type = "deep", .id = 5}};
  orders.primary_key = {"uid", "n"};
  orders.splittable_key = {"n"};
  orders.indexes = {{"by_n", {{"n", true}}}};
  EXPECT_EQ(model.metas[0], orders);
}

// Regression: indexes were not counted, and a table with thousands of them kept the search for suggestions busy for hours.
TEST(Model, CountsAllParts) {
  const Model model = {.name = "m",
                       .metas = {{.name = "t",
                                  .entries = {{.name = "a", .type = "s"}, {.name = "b", .type = "int8"}},
                                  .primary_key = {"b"},
                                  .splittable_key = {"b", "b"},
                                  .indexes = {{"i", {{"a"}, {"b"}}}, {"j", {{"a"}}}}},
                                 {.name = "s", .entries = {{.name = "x", .type = "int8"}}}}};
  EXPECT_EQ(PartsOf(model), 2u + 3u + 1u + 2u + 2u + 3u);
}

TEST(Model, SurvivesBuildingAndReading) {
  const Model model = ModelOf(ReadSource("mall.xml", kMall), "orders");
  EXPECT_EQ(ModelOf(SourceOf("made", model), "orders"), model);
}

// The fields of a one-table model after building and reading it.
std::vector<std::string> RefersOf(std::vector<EntryModel> entries) {
  const Model model{"lib", 1, qmx::Protocol::kQmx, {{.name = "t", .entries = std::move(entries)}}};
  std::vector<std::string> refers;
  const Model made = ModelOf(SourceOf("made", model), "t");
  for (const EntryModel& entry : made.metas[0].entries) refers.push_back(entry.refer);
  return refers;
}

TEST(Build, DropsInvalidRefers) {
  const EntryModel counted{.name = "list", .type = "int8", .count = 9, .refer = "n"};
  EXPECT_THAT(RefersOf({{.name = "n", .type = "uint8"}, counted}), ElementsAre("", "n"));
  EXPECT_THAT(RefersOf({counted, {.name = "n", .type = "uint8"}}), ElementsAre("", ""));
  EXPECT_THAT(RefersOf({{.name = "n", .type = "float"}, counted}), ElementsAre("", ""));
  EXPECT_THAT(RefersOf({{.name = "n", .type = "uint8", .count = 2}, counted}), ElementsAre("", ""));
  EXPECT_THAT(RefersOf({counted}), ElementsAre(""));
  EXPECT_THAT(RefersOf({{.name = "n", .type = "uint8", .refer = "n"}}), ElementsAre(""));
}

TEST(Build, DropsMembersAndColumnsWithoutEntry) {
  MetaModel meta{.name = "t", .entries = {{.name = "a", .type = "int8"}}};
  meta.primary_key = {"gone", "a"};
  meta.splittable_key = {"gone"};
  meta.indexes = {{"one", {{"gone", false}, {"a", true}}}, {"none", {{"gone", false}}}};
  const MetaModel made = ModelOf(SourceOf("made", {"lib", 1, qmx::Protocol::kQmx, {meta}}), "t").metas[0];
  EXPECT_THAT(made.primary_key, ElementsAre("a"));
  EXPECT_THAT(made.splittable_key, IsEmpty());
  EXPECT_THAT(made.indexes, ElementsAre(korvel::IndexModel{"one", {{"a", true}}}));
}

TEST(Build, RefusesWhatCannotBeLaidOut) {
  const auto build = [](std::vector<MetaModel> metas) {
    return korvel::Build({"lib", 1, qmx::Protocol::kQmx, std::move(metas)});
  };
  EXPECT_FALSE(build({{.name = "t", .entries = {{.name = "a", .type = "t"}}}}));
  EXPECT_FALSE(build({{.name = "t", .entries = {{.name = "a", .type = "no_such_type"}}}}));
  EXPECT_FALSE(build({{.name = "t", .entries = {{.name = "a", .type = "bytes", .size = ~0ULL, .count = 2}}}}));
  EXPECT_TRUE(build({{.name = "t", .entries = {{.name = "a", .type = "bytes", .size = 8, .count = 2}}}}));
}

}  // namespace
}  // namespace report_test
