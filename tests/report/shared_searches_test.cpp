// The findings of tables that share structures are those of each table alone, on random pairs. KORVEL_SEED and KORVEL_PAIRS
// select another run.
#include "analysis/findings/shared_searches.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <optional>
#include <set>

#include "analysis/check_table_change.h"
#include "models.h"
#include "schema/xml_writer.h"
#include "vesk/closed_category.h"

namespace report_test {
namespace {

using namespace korvel;

// Copies the table "t", each with other fields of its own; sometimes one that changes.
void AddTables(ModelPair& pair, std::mt19937_64& random) {
  const std::size_t tables = 2 + random() % 3;
  const bool keeps_table = random() % 4 != 0;
  if (keeps_table) pair.new_model.metas.front() = pair.old_model.metas.front();
  for (const MetaModel& meta : pair.old_model.metas) {
    const bool is_kept = std::ranges::find(pair.new_model.metas, meta.name, &MetaModel::name) != pair.new_model.metas.end();
    if (!is_kept) pair.new_model.metas.push_back(meta);
  }
  for (std::size_t i = 1; i <= tables; ++i) {
    const std::size_t added = random() % 3;
    const bool changes = random() % 6 == 0;
    for (Model* model : {&pair.old_model, &pair.new_model}) {
      MetaModel table = model->metas.front();
      table.name = "t" + std::to_string(i);
      for (std::size_t j = 0; j < added; ++j) {
        EntryModel own{.name = "own" + std::to_string(j), .type = changes && model == &pair.new_model ? "int8" : "int64"};
        own.id = static_cast<std::int32_t>(2000000 + j);
        table.entries.insert(table.entries.begin() + static_cast<std::ptrdiff_t>(table.entries.size() * (j % 2)), own);
      }
      model->metas.push_back(std::move(table));
    }
  }
}

std::string TextOf(const Model& model) {
  std::string text = "<metalib name=\"lib\" version=\"" + std::to_string(model.version) + "\"" +
                     (model.protocol == qmx::Protocol::kTlv ? " protocol=\"TLV\"" : "") + ">\n";
  const Source source = SourceOf("any", model);
  std::set<std::string> written;
  for (const std::string_view table : source.tables) {
    for (const MetaModel& meta : ModelOf(source, std::string(table)).metas) {
      if (written.insert(meta.name).second) text += *ElementOf(meta, {}) + "\n";
    }
  }
  return text + "</metalib>\n";
}

std::string ToText(const Finding& finding, bool with_text) {
  std::string text = finding.verdict.rule + " " + std::to_string(finding.verdict.code) + " " + finding.path + " " +
                     finding.fingerprint + " " + (with_text ? finding.verdict.text + " " + finding.suggestion : "");
  for (const std::size_t edit : finding.edits) text += " " + std::to_string(edit);
  return text + "\n";
}

std::string ToText(const Changes& changes, bool with_texts) {
  std::string text;
  for (const EditStatus status : changes.status) text += static_cast<char>('0' + static_cast<int>(status));
  text += changes.stopped ? " stopped\n" : "\n";
  for (const Finding& finding : changes.findings) text += ToText(finding, with_texts);
  return text + std::to_string(changes.allowed_together.code) + " " + changes.allowed_together.text + "\n";
}

struct Counts {
  std::uint64_t tables = 0;
  std::uint64_t shared = 0;
};

void ExpectSameFindings(const Source& old_source, const Source& new_source, std::mt19937_64& random, Counts& counts) {
  vesk::ClosedCategory log;
  SharedSearches shared;
  PartialSettings given;
  if (random() % 3 == 0) given.server_version = "3.0.0";
  const std::size_t max_findings = random() % 5 == 0 ? 2 : kMaxFindings;
  for (const std::string_view table : old_source.tables) {
    const TableCheck check{.sources = {old_source, new_source},
                           .table = std::string(table),
                           .given = given,
                           .max_findings = max_findings,
                           .log = log.handle()};
    const TableResult alone = CheckTableChange(check);
    TableResult result = CheckVerdict(check);
    AddChanges(check, &shared, result);
    ASSERT_EQ(result.changes.has_value(), alone.changes.has_value());
    if (!result.changes) continue;
    ++counts.tables;
    counts.shared += result.changes->borrows_texts ? 1 : 0;
    EXPECT_EQ(ToText(*result.changes, false), ToText(*alone.changes, false)) << table;
    SuggestionWork work;
    AddSuggestions(result, max_findings, false, work);
    EXPECT_FALSE(result.changes->borrows_texts);
    EXPECT_EQ(ToText(*result.changes, true), ToText(*alone.changes, true)) << table;
  }
}

TEST(SharedSearches, GiveTheFindingsOfEachTableAlone) {
  Counts counts;
  const std::uint64_t pairs = TestRandomModels(20261122, 150, [&](ModelPair& models, std::mt19937_64& random) {
    AddTables(models, random);
    const std::optional<Source> old_source = SourceOfText("old", TextOf(models.old_model));
    const std::optional<Source> new_source = SourceOfText("new", TextOf(models.new_model));
    if (old_source && new_source) ExpectSameFindings(*old_source, *new_source, random, counts);
  });
  std::printf("%llu tables, %llu of them share a search\n", static_cast<unsigned long long>(counts.tables),
              static_cast<unsigned long long>(counts.shared));
  if (pairs >= 150) {
    EXPECT_GT(counts.shared, counts.tables / 10);
  }
}

}  // namespace
}  // namespace report_test
