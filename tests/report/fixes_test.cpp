// A fix that is made of a part of a structure is that of the whole model, on random pairs. KORVEL_SEED and KORVEL_PAIRS select
// another run.
#include "analysis/suggest/fixes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <optional>

#include "analysis/suggest/alternatives.h"
#include "analysis/suggest/element_text.h"
#include "analysis/suggest/model_editor.h"
#include "analysis/suggest/rewrite.h"
#include "models.h"
#include "read_source.h"
#include "schema/xml_writer.h"

namespace report_test {
namespace {

using namespace korvel;

const std::string kTable = "t";

std::string TextOf(const Model& model, const std::string& line_end) {
  std::string text = "<metalib name=\"lib\" version=\"" + std::to_string(model.version) + "\"" +
                     (model.protocol == qmx::Protocol::kTlv ? " protocol=\"TLV\"" : "") + ">" + line_end;
  for (const MetaModel& meta : model.metas) text += *ElementOf(meta, {"", line_end}) + line_end;
  return text + "</metalib>";
}

// More fields among the others, the same on both sides.
void Widen(ModelPair& pair, std::mt19937_64& random) {
  for (std::size_t meta = 0; meta < std::min(pair.old_model.metas.size(), pair.new_model.metas.size()); ++meta) {
    if (pair.old_model.metas[meta].name != pair.new_model.metas[meta].name) continue;
    const std::size_t added = random() % 20;
    for (std::size_t i = 0; i < added; ++i) {
      EntryModel entry{.name = "w" + std::to_string(i), .type = "int64"};
      entry.id = static_cast<std::int32_t>(1000000 + i);
      for (Model* model : {&pair.old_model, &pair.new_model}) {
        auto& entries = model->metas[meta].entries;
        entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(random() % (entries.size() + 1)), entry);
      }
    }
  }
}

// Leaves out or replaces one edit, like a finding; sometimes a second one.
class RandomFix {
 public:
  RandomFix(const Difference& difference, const Settings& settings, std::mt19937_64& random)
      : difference_(difference), maker_(difference, settings), random_(random) {}

  // Valid until the next call.
  const FixEdits& Make(const FixMaker& fixes) {
    fix_ = {};
    chosen_.clear();
    const std::size_t count = random_() % 4 == 0 ? 2 : 1;
    for (std::size_t i = 0; i < count; ++i) Replace(random_() % difference_.edits().size());
    for (const Alternative& alternative : chosen_) fix_.alternatives.push_back(&alternative);
    for (const std::size_t edit : fixes.DependentsOf(fix_.left_out)) {
      if (random_() % 3 != 0) fix_.left_out.push_back(edit);
    }
    return fix_;
  }

 private:
  void Replace(std::size_t edit) {
    if (std::ranges::find(fix_.replaced, edit) != fix_.replaced.end()) return;
    fix_.replaced.push_back(edit);
    const std::vector<Alternative> alternatives = maker_.AlternativesOf(difference_.edits()[edit]);
    const std::size_t choice = random_() % (alternatives.size() + 1);
    if (choice < alternatives.size()) chosen_.push_back(alternatives[choice]);
    if (choice == alternatives.size() || !alternatives[choice].makes_edit) fix_.left_out.push_back(edit);
  }

  const Difference& difference_;
  AlternativeMaker maker_;
  std::mt19937_64& random_;
  FixEdits fix_;
  std::vector<Alternative> chosen_;
};

// The fix of the whole models.
std::vector<Replacement> ExpectedFix(const Difference& difference, const FixEdits& fix, const Source& new_source,
                                     const Source& old_source) {
  std::vector<bool> chosen(difference.edits().size(), true);
  for (const std::size_t edit : fix.left_out) chosen[edit] = false;
  const std::optional<Model> model = ApplyWith(difference, chosen, fix.alternatives);
  if (!model || !CanBeWritten(*model)) return {};
  const auto made = Rewriter(new_source, old_source).Rewrite(*model);
  const bool is_readable = made && SourceOfText("new", ApplyReplacements(new_source.text->Bytes(), *made));
  return model->protocol == difference.new_model().protocol || is_readable ? made.value_or(std::vector<Replacement>())
                                                                           : std::vector<Replacement>();
}

struct Counts {
  std::uint64_t compared = 0;
  std::uint64_t changing = 0;
  std::uint64_t parts = 0;
};

void ExpectSameFixes(const Source& old_source, const Source& new_source, std::mt19937_64& random, Counts& counts) {
  const Difference difference(old_source, new_source, kTable);
  if (difference.edits().empty()) return;
  const Settings settings = ResolveSettings({}, old_source, kTable);
  WorkLimit work;
  FixMaker fixes({old_source, new_source, kTable, settings}, difference, work);
  RandomFix random_fix(difference, settings, random);
  const std::size_t cost = PartsOf(difference.old_model()) + PartsOf(difference.new_model());
  for (int i = 0; i < 8; ++i) {
    const FixEdits& fix = random_fix.Make(fixes);
    const std::size_t left = work.left();
    const std::vector<Replacement> actual = fixes.Make(fix);
    const std::vector<Replacement> expected = ExpectedFix(difference, fix, new_source, old_source);
    const std::string& text = std::string(new_source.text->Bytes());
    EXPECT_EQ(ApplyReplacements(text, actual), ApplyReplacements(text, expected)) << text;
    ASSERT_TRUE(std::ranges::equal(actual, expected, [](const Replacement& a, const Replacement& b) {
      return a.span.begin == b.span.begin && a.span.end == b.span.end && a.text == b.text;
    }));
    ++counts.compared;
    counts.changing += expected.empty() ? 0 : 1;
    counts.parts += left - work.left() < cost ? 1 : 0;
  }
}

TEST(Fixes, PartsGiveTheFixesOfWholeModels) {
  Counts counts;
  const std::uint64_t pairs = TestRandomModels(20261122, 500, [&](ModelPair& models, std::mt19937_64& random) {
    if (random() % 2 == 0) Widen(models, random);
    const std::string line_end = random() % 3 == 0 ? "" : "\n";
    const auto source_of = [&](const char* name, const Model& model) {
      return SourceOfText(name, TextOf(ModelOf(SourceOf(name, model), kTable), line_end));
    };
    const std::optional<Source> old_source = source_of("old", models.old_model);
    const std::optional<Source> new_source = source_of("new", models.new_model);
    if (old_source && new_source) ExpectSameFixes(*old_source, *new_source, random, counts);
  });
  std::printf("%llu fixes, %llu with changes, %llu of parts\n", static_cast<unsigned long long>(counts.compared),
              static_cast<unsigned long long>(counts.changing), static_cast<unsigned long long>(counts.parts));
  if (pairs < 500) return;
  EXPECT_GT(counts.changing, counts.compared / 2);
  EXPECT_GT(counts.parts, counts.compared / 4);
}

TEST(Fixes, StayEmptyAboveTheLimit) {
  const Source old_source = ReadSource("old.xml", R"(<metalib name="m" version="1"><meta name="t"><entry name="k" type="int8"/>
<entry name="a" type="int32"/><primarykey entries="k"/></meta></metalib>)");
  const Source new_source = ReadSource("new.xml", R"(<metalib name="m" version="1"><meta name="t"><entry name="k" type="int8"/>
<entry name="a" type="int8"/><primarykey entries="k"/></meta></metalib>)");
  const Difference difference(old_source, new_source, kTable);
  const Settings settings = ResolveSettings({}, old_source, kTable);
  for (const std::size_t limit : {std::size_t{0}, std::size_t{100}}) {
    WorkLimit work(limit);
    FixMaker fixes({old_source, new_source, kTable, settings}, difference, work);
    EXPECT_EQ(fixes.Make({.replaced = {0}, .left_out = {0}, .alternatives = {}}).empty(), limit == 0);
    EXPECT_EQ(work.is_reached(), limit == 0);
  }
}

}  // namespace
}  // namespace report_test
