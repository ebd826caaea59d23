// Findings of several tables with the same cause are merged.
#include <gmock/gmock.h>

#include "read_source.h"
#include "report/result/fold.h"

namespace report_test {
namespace {

using korvel::Edit;
using korvel::EditKind;
using korvel::Finding;
using korvel::FoldedFinding;
using korvel::FoldedReport;
using korvel::PathChange;
using korvel::PathChangeOf;
using korvel::Report;
using korvel::Source;
using korvel::TableResult;
using testing::ElementsAre;
using testing::IsEmpty;

class FoldTest : public testing::Test {
 protected:
  static Edit SizeOf(const std::string& item, std::vector<std::string> paths) {
    Edit edit;
    edit.kind = EditKind::kEntryType;
    edit.meta = "item";
    edit.item = item;
    edit.path_count = paths.size();
    edit.paths = std::move(paths);
    return edit;
  }

  // A table with edits, each of them refused.
  TableResult Table(const std::string& name, std::vector<Edit> edits, const std::string& rule = "field.size") {
    TableResult result;
    result.table = name;
    result.first = &old_;
    result.second = &new_;
    result.changes.emplace();
    for (std::size_t i = 0; i < edits.size(); ++i) result.changes->findings.push_back(MakeFinding({i}, edits[i].paths[0], rule));
    result.changes->edits = std::move(edits);
    return result;
  }

  static Finding MakeFinding(std::vector<std::size_t> edits, const std::string& path, const std::string& rule) {
    Finding finding;
    finding.edits = std::move(edits);
    finding.verdict = {-3, "refused", rule};
    finding.path = path;
    return finding;
  }

  std::vector<FoldedFinding> Folded(std::vector<TableResult> tables) {
    report_.tables = std::move(tables);
    return FoldedReport(report_).findings();
  }

  static std::vector<std::string> Also(const FoldedFinding& folded) {
    std::vector<std::string> also;
    for (const FoldedFinding::Embedding& one : folded.also) also.push_back(one.table->table + ": " + one.path);
    return also;
  }

  const Source old_ = ReadSource("old.xml", "<metalib name=\"m\" version=\"1\"/>");
  const Source new_ = ReadSource("new.xml", "<metalib name=\"m\" version=\"2\"/>");
  const Source other_ = ReadSource("other.xml", "<metalib name=\"m\" version=\"3\"/>");
  Report report_;
};

TEST_F(FoldTest, SharedStructureIsListedOnceWithAllPaths) {
  const std::vector<FoldedFinding> folded =
      Folded({Table("orders", {SizeOf("price", {"orders.items[].price", "orders.gift.price"})}),
              Table("carts", {SizeOf("price", {"carts.items[].price", "carts.x.price"})})});
  ASSERT_EQ(folded.size(), 1u);
  EXPECT_EQ(folded[0].table->table, "orders");
  EXPECT_EQ(folded[0].finding->path, "orders.items[].price");
  EXPECT_THAT(Also(folded[0]), ElementsAre("orders: orders.gift.price", "carts: carts.items[].price", "carts: carts.x.price"));
}

TEST_F(FoldTest, DifferentFieldRuleOrFilesAreNotMerged) {
  std::vector<TableResult> tables = {Table("a", {SizeOf("price", {"a.price"})}), Table("b", {SizeOf("sku", {"b.sku"})}),
                                     Table("c", {SizeOf("price", {"c.price"})}, "field.type"),
                                     Table("d", {SizeOf("price", {"d.price"})})};
  tables[3].second = &other_;
  const std::vector<FoldedFinding> folded = Folded(std::move(tables));
  ASSERT_EQ(folded.size(), 4u);
  for (const FoldedFinding& one : folded) EXPECT_THAT(one.also, IsEmpty());
}

TEST_F(FoldTest, IgnoresOrderOfEdits) {
  std::vector<TableResult> tables = {Table("a", {SizeOf("price", {"a.price"}), SizeOf("sku", {"a.sku"})}),
                                     Table("b", {SizeOf("price", {"b.price"}), SizeOf("sku", {"b.sku"})})};
  tables[0].changes->findings = {MakeFinding({0, 1}, "a.price", "field.size")};
  tables[1].changes->findings = {MakeFinding({1, 0}, "b.sku", "field.size")};
  const std::vector<FoldedFinding> folded = Folded(std::move(tables));
  ASSERT_EQ(folded.size(), 1u);
  EXPECT_THAT(Also(folded[0]), ElementsAre("b: b.sku"));
}

TEST_F(FoldTest, PreexistingFindingsAreNotMerged) {
  std::vector<TableResult> tables = {Table("a", {}), Table("b", {})};
  tables[0].changes->findings = {MakeFinding({}, "a", "field-name.invalid"), MakeFinding({}, "a.x", "field-name.invalid")};
  tables[1].changes->findings = {MakeFinding({}, "b", "field-name.invalid")};
  EXPECT_EQ(Folded(std::move(tables)).size(), 3u);
}

TEST_F(FoldTest, TablesWithoutChangesHaveNoFindings) {
  TableResult result;
  result.table = "a";
  EXPECT_THAT(Folded({result}), IsEmpty());
}

TEST_F(FoldTest, DifferentValuesAreNotMerged) {
  std::vector<TableResult> tables = {Table("a", {SizeOf("price", {"a.price"})}), Table("b", {SizeOf("price", {"b.price"})})};
  tables[1].changes->edits[0].after = "int8";
  EXPECT_EQ(Folded(std::move(tables)).size(), 2u);
}

TEST(PathChangeOf, OmitsTheNamesThatAreTheSame) {
  EXPECT_EQ(PathChangeOf("carts.items[].price", "orders.items[].price"), (PathChange{"carts", "orders"}));
  EXPECT_EQ(PathChangeOf("carts.basket.price", "orders.gift.price"), (PathChange{"carts.basket", "orders.gift"}));
  EXPECT_EQ(PathChangeOf("a.price", "b.unit_price"), (PathChange{"a.price", "b.unit_price"}));
  EXPECT_EQ(PathChangeOf("price", "a.price"), (PathChange{"price", "a.price"}));
  EXPECT_EQ(PathChangeOf("", ""), (PathChange{"", ""}));
}

}  // namespace
}  // namespace report_test
