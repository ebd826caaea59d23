#include "models.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace report_test {

using korvel::Edit;
using korvel::EntryModel;
using korvel::IndexModel;
using korvel::MetaModel;
using korvel::Model;

korvel::Source SourceOf(const std::string& name, const Model& model) {
  std::optional<qmx::Metalib> library = Build(model);
  if (!library) throw std::runtime_error(name + " cannot be laid out");
  korvel::Source source{name, std::move(*library), std::nullopt, {}};
  ListTables(source);
  return source;
}

std::string BytesOf(const qmx::Metalib& metalib) { return {reinterpret_cast<const char*>(metalib.get()), metalib.size()}; }

std::uint64_t NumberFrom(const char* variable, std::uint64_t otherwise) {
  const char* text = std::getenv(variable);
  return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

std::uint64_t TestRandomModels(std::uint64_t seed, std::uint64_t pairs,
                               const std::function<void(ModelPair& models, std::mt19937_64& random)>& test) {
  seed = NumberFrom("KORVEL_SEED", seed);
  pairs = NumberFrom("KORVEL_PAIRS", pairs);
  std::printf("seed %llu, %llu pairs\n", static_cast<unsigned long long>(seed), static_cast<unsigned long long>(pairs));
  for (std::uint64_t i = 0; i < pairs && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE("KORVEL_SEED=" + std::to_string(seed + i) + " KORVEL_PAIRS=1");
    std::mt19937_64 random(seed + i);
    ModelPair models = RandomModels(random);
    test(models, random);
  }
  return pairs;
}

std::vector<std::string> Lines(const korvel::Difference& difference) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < difference.edits().size(); ++i) {
    const Edit& edit = difference.edits()[i];
    std::string line = std::string(NameOf(edit.kind)) + " " + edit.paths.front() + ": " + Describe(edit);
    if (edit.path_count > 1) line += " (" + std::to_string(edit.path_count) + " ways)";
    const std::vector<std::size_t> needs = difference.Needs(i);
    if (!needs.empty()) line += "; needs";
    for (const std::size_t need : needs) line += " " + std::to_string(need);
    lines.push_back(std::move(line));
  }
  return lines;
}

namespace {

constexpr const char* kTypes[] = {"uint32", "int32", "uint64", "int8", "string", "bytes", "double"};
constexpr const char* kAttributes[] = {
    "TableType=LIST;ListNum=4", "TableType=GENERIC", "ListNum=9;TableType=LIST", "odd", "", "A=1"};

class ModelMaker {
 public:
  explicit ModelMaker(std::mt19937_64& random) : random_(random) {}

  ModelPair Make() {
    ModelPair pair;
    Model& model = pair.old_model;
    model.name = "lib";
    model.version = 5;
    model.protocol = static_cast<qmx::Protocol>(Below(3));
    const std::size_t structures = Below(6);
    for (std::size_t i = 0; i <= structures; ++i)
      model.metas.push_back(MakeMeta(i == 0 ? "t" : "s" + std::to_string(i), i, structures));
    pair.new_model = model;
    for (std::size_t edits = Below(12); edits > 0; --edits) Change(pair.new_model);
    return pair;
  }

 private:
  std::size_t Below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_); }
  bool OneIn(std::size_t n) { return Below(n) == 0; }
  template <class List>
  auto& Any(List& list) {
    return list[Below(std::size(list))];
  }
  std::string AnyName() { return "f" + std::to_string(Below(40)); }

  // A structure embeds only later ones.
  std::string AnyType(std::size_t meta, std::size_t structures) {
    if (meta < structures && OneIn(3)) return "s" + std::to_string(meta + 1 + Below(structures - meta));
    return Any(kTypes);
  }

  EntryModel MakeEntry(const std::string& name, std::int32_t id, std::size_t meta, std::size_t structures) {
    EntryModel entry{.name = name, .type = AnyType(meta, structures), .id = id};
    Resize(entry);
    if (OneIn(4)) entry.count = static_cast<std::int32_t>(1 + Below(9));
    if (OneIn(9)) entry.customattr2 = "sort=1";
    return entry;
  }

  void Resize(EntryModel& entry) {
    const bool has_size = entry.type == "string" || entry.type == "bytes";
    entry.size = has_size ? 1 + Below(64) : 0;
  }

  MetaModel MakeMeta(const std::string& name, std::size_t meta, std::size_t structures) {
    MetaModel model{.name = name};
    const std::size_t fields = 1 + (OneIn(3) ? Below(20) : Below(6));
    for (std::size_t i = 0; i < fields; ++i) {
      model.entries.push_back(MakeEntry("f" + std::to_string(i), static_cast<std::int32_t>(i), meta, structures));
      if (OneIn(4)) model.entries.back().refer = "f" + std::to_string(Below(i + 1));
    }
    if (meta == 0 || OneIn(4)) model.primary_key = {model.entries.front().name};
    if (OneIn(4)) model.splittable_key = {model.entries.back().name};
    for (std::size_t indexes = Below(4); indexes > 0; --indexes) AddIndex(model);
    if (OneIn(3)) model.customattr = Any(kAttributes);
    return model;
  }

  void AddIndex(MetaModel& meta) {
    const std::string name = "i" + std::to_string(Below(9));
    if (std::ranges::find(meta.indexes, name, &IndexModel::name) != meta.indexes.end()) return;
    IndexModel& index = meta.indexes.emplace_back(IndexModel{name, {}});
    for (std::size_t columns = 1 + Below(3); columns > 0; --columns) index.columns.push_back({Any(meta.entries).name, OneIn(2)});
  }

  static bool HasEntry(const MetaModel& meta, const std::string& name) {
    return std::ranges::find(meta.entries, name, &EntryModel::name) != meta.entries.end();
  }

  // Names and ids of entries are unique, as in a schema file.
  void AddEntry(MetaModel& meta, std::size_t position, std::size_t structures) {
    const std::string name = AnyName();
    if (HasEntry(meta, name)) return;
    const auto id = static_cast<std::int32_t>(100 + meta.entries.size() + Below(1000) * 20);
    const auto place = meta.entries.begin() + static_cast<std::ptrdiff_t>(Below(meta.entries.size() + 1));
    const auto added = meta.entries.insert(place, MakeEntry(name, id, position, structures));
    if (OneIn(3)) added->refer = Any(meta.entries).name;
  }

  // References to a renamed entry are usually renamed with it.
  void Rename(MetaModel& meta, EntryModel& entry) {
    const std::string name = AnyName();
    if (HasEntry(meta, name)) return;
    const std::string before = std::exchange(entry.name, name);
    if (OneIn(4)) return;
    for (EntryModel& other : meta.entries) {
      if (other.refer == before) other.refer = name;
    }
    std::ranges::replace(meta.primary_key, before, name);
    std::ranges::replace(meta.splittable_key, before, name);
    for (IndexModel& index : meta.indexes) {
      for (auto& column : index.columns) column.entry = column.entry == before ? name : column.entry;
    }
  }

  void Change(Model& model) {
    const std::size_t position = Below(model.metas.size());
    MetaModel& meta = model.metas[position];
    EntryModel& entry = Any(meta.entries);
    switch (Below(18)) {
      case 0:
        return AddEntry(meta, position, model.metas.size() - 1);
      case 1:
        if (meta.entries.size() > 1) meta.entries.erase(meta.entries.begin() + (&entry - meta.entries.data()));
        return;
      case 2:
        return Rename(meta, entry);
      case 3:
        return std::swap(entry, Any(meta.entries));
      case 4:
        entry.type = AnyType(position, model.metas.size() - 1);
        return Resize(entry);
      case 5:
        return Resize(entry);
      case 6:
        entry.version += static_cast<std::int32_t>(Below(3));
        return;
      case 7:
        return std::swap(entry.id, Any(meta.entries).id);
      case 8:
        entry.count = static_cast<std::int32_t>(1 + Below(3));
        return;
      case 9:
        entry.refer = OneIn(2) ? "" : Any(meta.entries).name;
        return;
      case 10:
        entry.customattr2 = OneIn(3) ? std::nullopt : std::optional<std::string>("sort=" + std::to_string(Below(3)));
        return;
      case 11:
        meta.customattr = OneIn(4) ? std::nullopt : std::optional<std::string>(Any(kAttributes));
        return;
      case 12:
        (OneIn(2) ? meta.primary_key : meta.splittable_key).push_back(entry.name);
        return;
      case 13:
        return AddIndex(meta);
      case 14:
        std::ranges::shuffle(meta.indexes, random_);
        return;
      case 15:
        std::ranges::shuffle(meta.entries, random_);
        return;
      case 16:
        meta.kind = meta.kind == QMX_TYPE_UNION ? QMX_TYPE_STRUCT : QMX_TYPE_UNION;
        return;
      default:
        model.version += 1;
        if (OneIn(4)) model.protocol = static_cast<qmx::Protocol>(Below(3));
        if (OneIn(4)) model.name += "x";
    }
  }

  std::mt19937_64& random_;
};

}  // namespace

ModelPair RandomModels(std::mt19937_64& random) { return ModelMaker(random).Make(); }

void RenameStructure(Model& model, std::mt19937_64& random) {
  if (model.metas.size() < 2) return;
  MetaModel& renamed = model.metas[1 + random() % (model.metas.size() - 1)];
  const std::string before = std::exchange(renamed.name, "other_" + renamed.name);
  for (MetaModel& meta : model.metas) {
    for (EntryModel& entry : meta.entries) entry.type = entry.type == before ? "other_" + before : entry.type;
  }
}

}  // namespace report_test
