// Collects the declarations of a schema library; the other builder_ files resolve them and lay them out.
#include <algorithm>
#include <cstring>
#include <tuple>

#include "qmx/builder_state.h"

namespace qmx {

struct MetalibBuilder::State {
  DeclaredLibrary library;

  std::string_view Keep(std::string_view text) {
    if (text.empty()) return "";
    char* copy = static_cast<char*>(library.arena.allocate(text.size(), 1));
    std::memcpy(copy, text.data(), text.size());
    return {copy, text.size()};
  }

  std::optional<std::string_view> Keep(const std::optional<std::string_view>& text) {
    return text ? std::optional(Keep(*text)) : std::nullopt;
  }

  DeclaredKey KeepKey(const std::vector<std::string_view>& entries) {
    DeclaredKey key;
    for (const std::string_view entry : entries) key.names.push_back(Keep(entry));
    return key;
  }

  // The meta that is being declared; null before the first.
  DeclaredMeta* Current() { return library.metas.empty() ? nullptr : &library.metas.back(); }
};

MetalibBuilder::MetalibBuilder(std::string_view name, std::int32_t version, Protocol protocol)
    : state_(std::make_unique<State>()) {
  state_->library.name = state_->Keep(name);
  state_->library.version = version;
  state_->library.protocol = protocol;
}

MetalibBuilder::~MetalibBuilder() = default;

void MetalibBuilder::AddMeta(std::string_view name, enQMXType kind, std::optional<std::string_view> customattr) {
  DeclaredMeta& meta = state_->library.metas.emplace_back();
  meta.name = state_->Keep(name);
  meta.kind = kind;
  meta.customattr = state_->Keep(customattr);
}

void MetalibBuilder::AddEntry(const EntryDecl& entry) {
  DeclaredMeta* meta = state_->Current();
  if (meta == nullptr) return;
  DeclaredEntry& kept = meta->entries.emplace_back();
  const SimpleType* simple = FindSimpleType(entry.type);
  kept.decl = entry;
  kept.decl.name = state_->Keep(entry.name);
  kept.decl.type = simple == nullptr ? state_->Keep(entry.type) : simple->name;
  kept.decl.refer = state_->Keep(entry.refer);
  kept.decl.customattr2 = state_->Keep(entry.customattr2);
}

void MetalibBuilder::SetPrimaryKey(const std::vector<std::string_view>& entries) {
  if (DeclaredMeta* meta = state_->Current()) meta->primary_key = state_->KeepKey(entries);
}

void MetalibBuilder::SetSplittableKey(const std::vector<std::string_view>& entries) {
  if (DeclaredMeta* meta = state_->Current()) meta->splittable_key = state_->KeepKey(entries);
}

void MetalibBuilder::AddIndex(std::string_view name, const std::vector<ColumnDecl>& columns) {
  DeclaredMeta* meta = state_->Current();
  if (meta == nullptr) return;
  DeclaredIndex& index = meta->indexes.emplace_back();
  index.name = state_->Keep(name);
  for (const ColumnDecl& column : columns) index.columns.push_back({state_->Keep(column.entry), column.descending});
}

BuildResult MetalibBuilder::Finish() {
  BuildErrors errors;
  ResolveNames(state_->library, errors);
  ResolveSizes(state_->library, errors);
  CheckKeys(state_->library, errors);
  BuildResult result{std::nullopt, errors.Take()};
  if (result.errors.empty()) result.metalib = LayOut(state_->library);
  return result;
}

void BuildErrors::Add(const ElementId& where, std::string_view attribute, std::string text) {
  if (!IsFull()) errors_.push_back({where, attribute, std::move(text)});
}

std::vector<BuildError> BuildErrors::Take() {
  std::ranges::stable_sort(errors_, {}, [](const BuildError& error) {
    const ElementId& id = error.where;
    return std::tuple(id.meta, id.kind, id.item, id.column);
  });
  return std::move(errors_);
}

}  // namespace qmx
