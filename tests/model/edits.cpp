// Finds and edits fields of libraries declared as values. The edits themselves are in mutations_*.cpp. Tested by model_test.cpp.
#include "model/edits.h"

#include <algorithm>

namespace model {
namespace {

bool Contains(const std::vector<std::string>& names, const std::string& name) {
  return std::ranges::find(names, name) != names.end();
}

MetaDecl* Find(const std::string& name, LibraryDecl& library) {
  const auto found = std::ranges::find(library.metas, name, &MetaDecl::name);
  return found == library.metas.end() ? nullptr : &*found;
}

void Collect(const MetaDecl& meta, LibraryDecl& library, std::vector<MetaDecl*>& held) {
  for (const FieldDecl& field : meta.fields) {
    MetaDecl* const structure = Find(field.type, library);
    if (structure == nullptr || std::ranges::find(held, structure) != held.end()) continue;
    held.push_back(structure);
    Collect(*structure, library, held);
  }
}

bool IsNamed(const std::string& name, const MetaDecl& meta) {
  const auto has_it = [&name](const IndexDecl& index) { return Contains(index.columns, name); };
  return Contains(meta.key, name) || Contains(meta.split, name) || std::ranges::any_of(meta.indexes, has_it) ||
         std::ranges::find(meta.fields, name, &FieldDecl::refer) != meta.fields.end();
}

}  // namespace

MetaDecl* Table(LibraryDecl& library) { return Find("t", library); }

MetaDecl* Inside(LibraryDecl& library, Random& random) {
  std::vector<MetaDecl*> held;
  if (const MetaDecl* const table = Table(library)) Collect(*table, library, held);
  return held.empty() ? nullptr : random.Of(held);
}

MetaDecl* Anything(LibraryDecl& library, Random& random) {
  if (library.metas.empty()) return nullptr;
  return random.OneIn(3) ? &library.metas[random.Below(library.metas.size())] : Table(library);
}

FieldDecl* AnyField(MetaDecl* meta, Random& random, IsWanted is_wanted) {
  if (meta == nullptr) return nullptr;
  std::vector<FieldDecl*> wanted;
  for (FieldDecl& field : meta->fields) {
    if (is_wanted(field, *meta)) wanted.push_back(&field);
  }
  return wanted.empty() ? nullptr : random.Of(wanted);
}

bool IsAny(const FieldDecl&, const MetaDecl&) { return true; }
bool IsKey(const FieldDecl& field, const MetaDecl& meta) { return Contains(meta.key, field.name); }
bool IsFree(const FieldDecl& field, const MetaDecl& meta) { return !IsNamed(field.name, meta) && !IsSortField(field, meta); }
bool HasSize(const FieldDecl& field, const MetaDecl&) { return field.size > 1; }
bool IsSortField(const FieldDecl& field, const MetaDecl&) { return field.attr2 && field.attr2->starts_with("sort="); }

void RemoveField(std::string name, MetaDecl& meta) {
  std::erase_if(meta.fields, [&name](const FieldDecl& field) { return field.name == name; });
  std::erase(meta.key, name);
  std::erase(meta.split, name);
  for (IndexDecl& index : meta.indexes) std::erase(index.columns, name);
  for (FieldDecl& field : meta.fields) {
    if (field.refer == name) field.refer.clear();
  }
}

void RenameField(std::string name, const std::string& to, MetaDecl& meta) {
  for (FieldDecl& field : meta.fields) {
    if (field.name == name) field.name = to;
    if (field.refer == name) field.refer = to;
  }
  std::ranges::replace(meta.key, name, to);
  std::ranges::replace(meta.split, name, to);
  for (IndexDecl& index : meta.indexes) std::ranges::replace(index.columns, name, to);
}

void RenameMeta(std::string name, const std::string& to, LibraryDecl& library) {
  for (MetaDecl& meta : library.metas) {
    if (meta.name == name) meta.name = to;
    for (FieldDecl& field : meta.fields) {
      if (field.type == name) field.type = to;
    }
  }
}

}  // namespace model
