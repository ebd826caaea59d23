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

// Adds a warning about the item with the first path.
void Warn(TableResult& table, const Edit& edit) {
  Finding warning;
  warning.level = korvel::Level::kWarning;
  warning.edits = {table.advice.edits.size()};
  warning.verdict.rule = "advice.refer-changed";
  warning.path = edit.paths.front();
  table.advice.edits.push_back(edit);
  table.advice.findings.push_back(warning);
}

TEST_F(FoldTest, WarningsFollowTheRefusalsOfTheirTable) {
  std::vector<TableResult> tables = {Table("a", {SizeOf("price", {"a.price"})}), Table("b", {SizeOf("price", {"b.price"})})};
  for (TableResult& table : tables) Warn(table, SizeOf("count", {table.table + ".count"}));
  report_.tables = std::move(tables);
  const FoldedReport folded(report_);
  ASSERT_EQ(folded.findings().size(), 2u);
  EXPECT_EQ(folded.findings()[0].finding->level, korvel::Level::kRefused);
  EXPECT_EQ(folded.findings()[1].finding->level, korvel::Level::kWarning);
  EXPECT_THAT(Also(folded.findings()[1]), ElementsAre("b: b.count"));
  // Consecutive, but of different levels: separate items.
  ASSERT_EQ(folded.tables()[1].shared.size(), 2u);
  EXPECT_EQ(folded.tables()[1].shared[0].first, 0u);
  EXPECT_EQ(folded.tables()[1].shared[1].first, 1u);
}

// Warnings take no place of refusals.
TEST_F(FoldTest, LimitAppliesToRefusalsAndAdviceSeparately) {
  std::vector<TableResult> tables = {Table("a", {SizeOf("price", {"a.price"})}), Table("b", {SizeOf("sku", {"b.sku"})})};
  Warn(tables[0], SizeOf("x", {"a.x"}));
  Warn(tables[0], SizeOf("y", {"a.y"}));
  Warn(tables[1], SizeOf("z", {"b.z"}));
  report_.tables = std::move(tables);
  report_.max_findings = 2;
  const FoldedReport folded(report_);
  EXPECT_EQ(folded.findings().size(), 4u);
  EXPECT_EQ(folded.Count(korvel::Level::kRefused).all, 2u);
  EXPECT_EQ(folded.Count(korvel::Level::kRefused).left_out, 0u);
  EXPECT_EQ(folded.Count(korvel::Level::kWarning).all, 3u);
  EXPECT_EQ(folded.Count(korvel::Level::kWarning).left_out, 1u);
  EXPECT_EQ(folded.Count(korvel::Level::kNote).all, 0u);
  EXPECT_EQ(folded.tables()[1].left_out, 1u);
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
