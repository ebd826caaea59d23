// The checker's answers about excerpts are those about whole tables, on random pairs. KORVEL_SEED and KORVEL_PAIRS select another
// run.
#include "analysis/diff/excerpts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "analysis/findings/run_checker.h"
#include "models.h"

namespace report_test {
namespace {

using korvel::Difference;
using korvel::EntryModel;
using korvel::Excerpts;
using korvel::Model;
using korvel::Settings;
using korvel::Source;
using korvel::Verdict;

using Chosen = std::vector<bool>;

std::string ToText(const Verdict& verdict) { return std::to_string(verdict.code) + " " + verdict.rule + " " + verdict.text; }

Settings RandomSettings(std::mt19937_64& random) {
  Settings settings;
  settings.type = random() % 4 == 0 ? 1 : 0;
  settings.created_as = random() % 2 == 0 ? 1 : 2;
  if (random() % 3 == 0) settings.server_version = "3.0.0";
  return settings;
}

// Many more fields of the same size on both sides, among the others.
void Widen(ModelPair& pair, std::mt19937_64& random) {
  for (std::size_t meta = 0; meta < pair.old_model.metas.size(); ++meta) {
    const std::size_t added = random() % 30;
    for (std::size_t i = 0; i < added; ++i) {
      EntryModel entry{.name = "w" + std::to_string(i), .type = random() % 9 == 0 ? "string" : "int64"};
      if (entry.type == "string") entry.size = 1 + random() % 60000;
      entry.id = static_cast<std::int32_t>(1000000 + i);
      for (Model* model : {&pair.old_model, &pair.new_model}) {
        auto& entries = model->metas[meta].entries;
        entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(std::min(entries.size(), random() % (entries.size() + 1))),
                       entry);
      }
    }
  }
}

Chosen RandomChoice(const Difference& difference, std::mt19937_64& random) {
  Chosen chosen(difference.edits().size());
  const std::size_t share = 1 + random() % 6;
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (random() % share != 0) continue;
    chosen[i] = true;
    for (const std::size_t need : difference.Needs(i)) chosen[need] = true;
  }
  return chosen;
}

struct Counts {
  std::uint64_t compared = 0;
  std::uint64_t refused = 0;
  std::uint64_t smaller = 0;
};

void ExpectSameAnswers(const ModelPair& models, std::mt19937_64& random, Counts& counts) {
  const Source old_source = SourceOf("old", models.old_model);
  const Source new_source = SourceOf("new", models.new_model);
  const Settings settings = RandomSettings(random);
  const LPQMXMETALIB old_library = old_source.Library();
  if (korvel::RunChecker(old_library, old_library, "t", settings).Refused()) return;
  const Difference difference(old_source, new_source, "t");
  const std::optional<Excerpts> excerpts = Excerpts::Of(difference, old_library);
  for (int i = 0; excerpts && i < 8; ++i) {
    const Chosen chosen = RandomChoice(difference, random);
    if (!excerpts->Has(chosen)) continue;
    const auto excerpt = excerpts->Build(chosen);
    const auto whole = difference.Build(chosen);
    ASSERT_EQ(excerpt.has_value(), whole.has_value());
    if (!whole) continue;
    const Verdict expected = korvel::RunChecker(old_library, whole->get(), "t", settings);
    const Verdict actual = korvel::RunChecker(excerpt->old_library.get(), excerpt->new_library.get(), "t", settings);
    EXPECT_EQ(ToText(actual), ToText(expected));
    ++counts.compared;
    counts.refused += expected.Refused() ? 1 : 0;
    counts.smaller += excerpt->new_library.size() < whole->size() ? 1 : 0;
  }
}

TEST(Excerpts, GiveTheAnswersOfWholeTables) {
  Counts counts;
  const std::uint64_t pairs = TestRandomModels(20261122, 2000, [&](ModelPair& models, std::mt19937_64& random) {
    if (random() % 2 == 0) Widen(models, random);
    ExpectSameAnswers(models, random, counts);
  });
  std::printf("%llu answers, %llu refusals, %llu smaller\n", static_cast<unsigned long long>(counts.compared),
              static_cast<unsigned long long>(counts.refused), static_cast<unsigned long long>(counts.smaller));
  if (pairs < 2000) return;
  EXPECT_GT(counts.compared, pairs);
  EXPECT_GT(counts.refused, counts.compared / 4);
  EXPECT_GT(counts.smaller, counts.compared / 3);
}

}  // namespace
}  // namespace report_test
