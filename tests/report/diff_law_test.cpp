// Laws of all differences, on random pairs. KORVEL_SEED and KORVEL_PAIRS select another run.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "models.h"

namespace report_test {
namespace {

using korvel::Difference;
using korvel::EditKind;
using korvel::EntryModel;
using korvel::MetaModel;
using korvel::Model;
using korvel::Source;

using Chosen = std::vector<bool>;

std::string BytesOrNothing(const std::optional<qmx::Metalib>& library) { return library ? BytesOf(*library) : "(nothing)"; }

// A random half of the edits, and the edits that they need.
Chosen RandomChoice(const Difference& difference, bool with_needs, std::mt19937_64& random) {
  Chosen chosen(difference.edits().size());
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (random() % 2 == 0) continue;
    chosen[i] = true;
    if (!with_needs) continue;
    for (const std::size_t need : difference.Needs(i)) chosen[need] = true;
  }
  return chosen;
}

std::size_t LongestCommon(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  std::vector<std::vector<std::size_t>> best(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = 0; j < b.size(); ++j) {
      best[i + 1][j + 1] = a[i] == b[j] ? best[i][j] + 1 : std::max(best[i][j + 1], best[i + 1][j]);
    }
  }
  return best[a.size()][b.size()];
}

const MetaModel* FindMeta(const Model& model, const std::string& name) {
  const auto found = std::ranges::find(model.metas, name, &MetaModel::name);
  return found == model.metas.end() ? nullptr : &*found;
}

void ExpectFewestMoves(const Difference& difference) {
  for (const MetaModel& old_meta : difference.old_model().metas) {
    const MetaModel* new_meta = FindMeta(difference.new_model(), old_meta.name);
    if (new_meta == nullptr) continue;
    std::set<std::string> removed;
    std::set<std::string> added;
    std::map<std::string, std::string> renamed;
    std::size_t moves = 0;
    for (const korvel::Edit& edit : difference.edits()) {
      if (edit.meta != old_meta.name) continue;
      if (edit.kind == EditKind::kEntryRemoved) removed.insert(edit.item);
      if (edit.kind == EditKind::kEntryAdded) added.insert(edit.item);
      if (edit.kind == EditKind::kEntryRenamed) renamed[edit.item] = edit.after;
      if (edit.kind == EditKind::kEntryMoved) ++moves;
    }
    std::vector<std::string> before;
    std::vector<std::string> after;
    for (const EntryModel& entry : old_meta.entries) {
      if (!removed.contains(entry.name)) before.push_back(renamed.contains(entry.name) ? renamed[entry.name] : entry.name);
    }
    for (const EntryModel& entry : new_meta->entries) {
      if (!added.contains(entry.name)) after.push_back(entry.name);
    }
    EXPECT_EQ(moves, before.size() - LongestCommon(before, after)) << old_meta.name;
  }
}

// Names are unique, and all references can be resolved.
void ExpectIsASchema(const Model& model) {
  for (const MetaModel& meta : model.metas) {
    std::set<std::string> names;
    for (const EntryModel& entry : meta.entries) EXPECT_TRUE(names.insert(entry.name).second) << meta.name << "." << entry.name;
    for (const auto& index : meta.indexes) EXPECT_FALSE(index.columns.empty()) << index.name;
  }
  if (const std::optional<qmx::Metalib> library = Build(model)) {
    EXPECT_EQ(ModelOf(Source{"made", *library, std::nullopt, {}}, model.metas.front().name), model);
  }
}

void ExpectLaws(const ModelPair& models, std::mt19937_64& random) {
  const Source old_source = SourceOf("old", models.old_model);
  const Source new_source = SourceOf("new", models.new_model);
  const std::string old_bytes = BytesOf(old_source.metalib);
  const std::string new_bytes = BytesOf(new_source.metalib);
  const Difference difference(old_source, new_source, "t");
  const std::size_t edits = difference.edits().size();

  const Chosen none(edits, false);
  const Chosen all(edits, true);
  EXPECT_EQ(difference.Apply(none), difference.old_model());
  EXPECT_EQ(difference.Apply(all), difference.new_model());
  EXPECT_EQ(BytesOrNothing(difference.Build(none)), BytesOrNothing(Build(difference.old_model())));
  EXPECT_EQ(BytesOrNothing(difference.Build(all)), BytesOrNothing(Build(difference.new_model())));
  EXPECT_EQ(edits == 0, difference.old_model() == difference.new_model());
  EXPECT_TRUE(Difference(new_source, new_source, "t").edits().empty());
  ExpectFewestMoves(difference);
  for (int i = 0; i < 4; ++i) {
    const Chosen any = RandomChoice(difference, false, random);
    EXPECT_EQ(BytesOrNothing(difference.Build(any)), BytesOrNothing(Build(difference.Apply(any))));
    ExpectIsASchema(difference.Apply(RandomChoice(difference, true, random)));
  }
  EXPECT_EQ(BytesOf(old_source.metalib), old_bytes);
  EXPECT_EQ(BytesOf(new_source.metalib), new_bytes);
}

TEST(DiffLaws, HoldOnRandomPairs) {
  std::set<EditKind> kinds;
  const std::uint64_t pairs = TestRandomModels(20261121, 500, [&](ModelPair& models, std::mt19937_64& random) {
    if (random() % 4 == 0) RenameStructure(models.new_model, random);
    ExpectLaws(models, random);
    const Difference difference(SourceOf("old", models.old_model), SourceOf("new", models.new_model), "t");
    for (const korvel::Edit& edit : difference.edits()) kinds.insert(edit.kind);
  });
  if (pairs < 500) return;
  EXPECT_EQ(kinds.size(), static_cast<std::size_t>(EditKind::kEntryMeta)) << "every kind of edit occurs, except kTableAdded";
}

// Gives every field of a meta, and every reference to it, another name.
template <class NameOf>
void RenameAll(MetaModel& meta, NameOf name_of) {
  for (EntryModel& entry : meta.entries) {
    entry.name = name_of(entry.name);
    entry.refer = entry.refer.empty() ? "" : name_of(entry.refer);
    entry.id = -1;
  }
  for (std::string& name : meta.primary_key) name = name_of(name);
  for (std::string& name : meta.splittable_key) name = name_of(name);
  for (auto& index : meta.indexes) {
    for (auto& column : index.columns) column.entry = name_of(column.entry);
  }
}

// Fields without ids; a third of the fields of the new side are misspelled.
TEST(DiffLaws, HoldForMisspelledFields) {
  std::size_t renamed = 0;
  const std::uint64_t pairs = TestRandomModels(20261123, 300, [&](ModelPair& models, std::mt19937_64& random) {
    models.old_model.protocol = models.new_model.protocol = qmx::Protocol::kQmx;
    const std::uint64_t third = random();
    for (MetaModel& meta : models.old_model.metas) {
      RenameAll(meta, [](const std::string& name) { return "field_" + name.substr(1); });
    }
    for (MetaModel& meta : models.new_model.metas) {
      RenameAll(meta, [&](const std::string& name) {
        const bool is_misspelled = (std::stoul(name.substr(1)) + third) % 3 == 0;
        return (is_misspelled ? "feild_" : "field_") + name.substr(1);
      });
    }
    ExpectLaws(models, random);
    const Difference difference(SourceOf("old", models.old_model), SourceOf("new", models.new_model), "t");
    renamed += static_cast<std::size_t>(std::ranges::count(difference.edits(), EditKind::kEntryRenamed, &korvel::Edit::kind));
  });
  EXPECT_GT(renamed, pairs) << "more than one renamed field in each pair";
}

}  // namespace
}  // namespace report_test
