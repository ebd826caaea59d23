// Resolves the names that declarations use: types, counts, members of keys and columns of indexes.
#include <algorithm>

#include "qmx/builder_state.h"
#include "qmx/did_you_mean.h"
#include "qmx/name_table.h"
#include "qmx/quote.h"

namespace qmx {
namespace {

using Kind = ElementId::Kind;

std::uint32_t Position(std::size_t position) { return static_cast<std::uint32_t>(position); }

template <typename List, typename NameOf>
std::vector<std::string_view> NamesOf(const List& list, NameOf name_of) {
  std::vector<std::string_view> names;
  names.reserve(list.size());
  for (const auto& item : list) names.push_back(name_of(item));
  return names;
}

// The metas of a library and the simple types by name. A simple type hides a meta of its name.
class Types {
 public:
  explicit Types(const DeclaredLibrary& library)
      : metas_(library.metas), words_(NamesOf(metas_, [](const DeclaredMeta& meta) { return meta.name; })), table_(words_) {
    words_.insert(words_.begin(), SimpleNames().begin(), SimpleNames().end());
  }

  // False if there is no such type.
  bool Resolve(DeclaredEntry& entry) const {
    if (const SimpleType* simple = FindSimpleType(entry.decl.type)) {
      entry.type = simple->code;
      entry.unit_size = simple->unit_size == 0 ? entry.decl.size : simple->unit_size;
      return true;
    }
    const auto meta = table_.Find(entry.decl.type);
    if (!meta) return false;
    entry.type = metas_[*meta].kind;
    entry.type_meta = *meta;
    return true;
  }

  std::string Unknown(std::string_view type) const {
    std::string text = "unknown type " + Quote(type) + DidYouMean(type, words_) + "; allowed: ";
    for (const std::string_view name : SimpleNames()) text += std::string(name) + ", ";
    return text + "or a meta of this library";
  }

 private:
  static const std::vector<std::string_view>& SimpleNames() {
    static const auto names = NamesOf(SimpleTypes(), [](const SimpleType& type) { return std::string_view(type.name); });
    return names;
  }

  const std::vector<DeclaredMeta>& metas_;
  std::vector<std::string_view> words_;
  NameTable table_;
};

// Resolves the names inside one meta.
class MetaResolver {
 public:
  MetaResolver(DeclaredMeta& meta, std::uint32_t position, BuildErrors& errors)
      : meta_(meta),
        position_(position),
        errors_(errors),
        names_(NamesOf(meta.entries, [](const DeclaredEntry& entry) { return entry.decl.name; })),
        table_(names_) {}

  void Run() {
    for (std::size_t i = 0; i < meta_.entries.size(); ++i) ResolveRefer(Position(i));
    ResolveKey(meta_.primary_key, Kind::kPrimaryKey, "the primary key");
    ResolveKey(meta_.splittable_key, Kind::kSplittableKey, "the splittable key");
    for (const std::uint32_t member : meta_.primary_key.entries) meta_.entries[member].in_primary_key = true;
    for (std::size_t i = 0; i < meta_.indexes.size(); ++i) ResolveIndex(Position(i));
  }

 private:
  std::string NoEntry(std::string_view name) const {
    return Quote(name) + ", which is no entry of meta " + Quote(meta_.name) + DidYouMean(name, names_);
  }

  // What is wrong with counting the elements of entry `counted` by the entry of that name; empty if nothing.
  std::string WhyNoCount(std::string_view name, std::uint32_t counted) const {
    const auto found = table_.Find(name);
    if (!found) return NoEntry(name);
    const DeclaredEntry& counter = meta_.entries[*found];
    if (*found == counted) return Quote(name) + ", the entry itself";
    if (*found > counted) return Quote(name) + ", which is declared after it";
    if (counter.type == QMX_TYPE_NONE) return "";  // reported already
    if (!IsIntegerType(counter.type)) return Quote(name) + " of type " + Quote(counter.decl.type);
    if (counter.decl.count != 1) return Quote(name) + " with count " + std::to_string(counter.decl.count);
    return "";
  }

  void ResolveRefer(std::uint32_t position) {
    DeclaredEntry& entry = meta_.entries[position];
    if (entry.decl.refer.empty() || errors_.IsFull()) return;
    const std::string why = WhyNoCount(entry.decl.refer, position);
    if (why.empty()) {
      entry.refer = *table_.Find(entry.decl.refer);
      return;
    }
    errors_.Add({Kind::kEntry, position_, position}, "refer",
                "entry " + Quote(entry.decl.name) + " refers to " + why +
                    "; allowed: an integer entry with count 1, declared before it in the same meta");
  }

  void ResolveKey(DeclaredKey& key, Kind kind, const std::string& what) {
    for (const std::string_view name : key.names) {
      if (errors_.IsFull()) return;
      if (const auto found = table_.Find(name)) {
        key.entries.push_back(*found);
      } else {
        errors_.Add({kind, position_}, "entries", what + " names " + NoEntry(name) + "; allowed: entries of the same meta");
      }
    }
  }

  void ResolveIndex(std::uint32_t position) {
    DeclaredIndex& index = meta_.indexes[position];
    for (std::size_t i = 0; i < index.columns.size() && !errors_.IsFull(); ++i) {
      if (const auto found = table_.Find(index.columns[i].entry)) {
        index.entries.push_back(*found);
      } else {
        errors_.Add(
            {Kind::kColumn, position_, position, Position(i)}, "entry",
            "index " + Quote(index.name) + " names " + NoEntry(index.columns[i].entry) + "; allowed: entries of the same meta");
      }
    }
  }

  DeclaredMeta& meta_;
  std::uint32_t position_;
  BuildErrors& errors_;
  std::vector<std::string_view> names_;
  NameTable table_;
};

bool UsesNames(const DeclaredMeta& meta) {
  const auto refers = [](const DeclaredEntry& entry) { return !entry.decl.refer.empty(); };
  return !meta.primary_key.names.empty() || !meta.splittable_key.names.empty() || !meta.indexes.empty() ||
         std::ranges::any_of(meta.entries, refers);
}

}  // namespace

void ResolveNames(DeclaredLibrary& library, BuildErrors& errors) {
  const Types types(library);
  for (std::uint32_t m = 0; m < library.metas.size(); ++m) {
    DeclaredMeta& meta = library.metas[m];
    for (std::uint32_t e = 0; e < meta.entries.size() && !errors.IsFull(); ++e) {
      if (!types.Resolve(meta.entries[e])) errors.Add({Kind::kEntry, m, e}, "type", types.Unknown(meta.entries[e].decl.type));
    }
    if (UsesNames(meta)) MetaResolver(meta, m, errors).Run();
  }
}

}  // namespace qmx
