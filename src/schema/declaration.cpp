// Converts models to declarations and back. Compares nothing. Tested by tests/report/model_test.cpp.
#include "schema/declaration.h"

#include <utility>

namespace korvel {
namespace {

std::vector<std::string_view> Views(const std::vector<std::string>& texts) { return {texts.begin(), texts.end()}; }
std::vector<std::string> Strings(const std::vector<std::string_view>& views) { return {views.begin(), views.end()}; }

IndexModel ModelOf(const IndexDecl& decl) {
  IndexModel index{std::string(decl.name), {}};
  for (const qmx::ColumnDecl& column : decl.columns) index.columns.push_back({std::string(column.entry), column.descending});
  return index;
}

EntryModel ModelOf(const qmx::EntryDecl& decl) {
  EntryModel entry{.name = std::string(decl.name), .type = std::string(decl.type), .size = decl.size};
  entry.id = decl.id;
  entry.version = decl.version;
  entry.count = decl.count;
  entry.refer = decl.refer;
  if (decl.customattr2) entry.customattr2.emplace(*decl.customattr2);
  return entry;
}

}  // namespace

bool CanHoldCount(std::string_view type, std::int32_t count) {
  const qmx::SimpleType* const simple = qmx::FindSimpleType(type);
  return simple != nullptr && qmx::IsIntegerType(simple->code) && count == 1;
}

qmx::EntryDecl DeclOf(const EntryModel& entry) {
  qmx::EntryDecl decl{.name = entry.name, .type = entry.type, .size = entry.size};
  decl.id = entry.id;
  decl.version = entry.version;
  decl.count = entry.count;
  decl.refer = entry.refer;
  if (entry.customattr2) decl.customattr2 = *entry.customattr2;
  return decl;
}

MetaDecl DeclOf(const MetaModel& meta) {
  MetaDecl decl{.name = meta.name, .kind = meta.kind, .customattr = meta.customattr, .position = meta.position};
  decl.entries.reserve(meta.entries.size());
  for (const EntryModel& entry : meta.entries) decl.entries.push_back(DeclOf(entry));
  decl.primary_key = Views(meta.primary_key);
  decl.splittable_key = Views(meta.splittable_key);
  for (const IndexModel& index : meta.indexes) {
    decl.indexes.push_back({index.name, {}});
    for (const ColumnModel& column : index.columns) decl.indexes.back().columns.push_back({column.entry, column.descending});
  }
  return decl;
}

MetaModel ModelOf(const MetaDecl& decl) {
  MetaModel meta{.name = std::string(decl.name), .kind = decl.kind, .customattr = decl.customattr};
  meta.entries.reserve(decl.entries.size());
  for (const qmx::EntryDecl& entry : decl.entries) meta.entries.push_back(ModelOf(entry));
  meta.primary_key = Strings(decl.primary_key);
  meta.splittable_key = Strings(decl.splittable_key);
  for (const IndexDecl& index : decl.indexes) meta.indexes.push_back(ModelOf(index));
  meta.position = decl.position;
  return meta;
}

void DropLooseReferences(MetaDecl& decl) {
  DropLooseRefers(decl.entries);
  NameFinder finder(decl.entries);
  const auto is_loose = [&](std::string_view entry) { return finder.Find(entry) == kNowhere; };
  std::erase_if(decl.primary_key, is_loose);
  std::erase_if(decl.splittable_key, is_loose);
  std::erase_if(decl.indexes, [&](IndexDecl& index) {
    return std::erase_if(index.columns, [&](const qmx::ColumnDecl& column) { return is_loose(column.entry); }) > 0 &&
           index.columns.empty();
  });
}

void AddTo(qmx::MetalibBuilder& builder, const MetaDecl& decl) {
  builder.AddMeta(decl.name, decl.kind, decl.customattr);
  for (const qmx::EntryDecl& entry : decl.entries) builder.AddEntry(entry);
  builder.SetPrimaryKey(decl.primary_key);
  builder.SetSplittableKey(decl.splittable_key);
  for (const IndexDecl& index : decl.indexes) builder.AddIndex(index.name, index.columns);
}

}  // namespace korvel
