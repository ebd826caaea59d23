// A meta as the builder takes it: names borrowed from models, references by name.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/name_finder.h"
#include "schema/model.h"

namespace korvel {

struct IndexDecl {
  std::string_view name;
  std::vector<qmx::ColumnDecl> columns;
};

// Borrows every text but the attributes, which may be put together of two sides.
struct MetaDecl {
  std::string_view name;
  enQMXType kind = QMX_TYPE_STRUCT;
  std::optional<std::string> customattr = {};
  std::vector<qmx::EntryDecl> entries = {};
  std::vector<std::string_view> primary_key = {};
  std::vector<std::string_view> splittable_key = {};
  std::vector<IndexDecl> indexes = {};
  std::uint32_t position = 0;
};

inline bool IsCompositeType(std::string_view type) { return qmx::FindSimpleType(type) == nullptr; }

// Whether an entry of that type and count can hold the number of another one's elements, if it stands before it.
bool CanHoldCount(std::string_view type, std::int32_t count);

// Takes away refer properties that name no entry, or none that can hold a count. Of EntryDecl or EntryModel.
template <class Entry>
void DropLooseRefers(std::vector<Entry>& entries) {
  NameFinder<Entry> finder(entries);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (entries[i].refer.empty()) continue;
    const std::size_t counter = finder.Find(entries[i].refer);
    if (counter >= i || !CanHoldCount(entries[counter].type, entries[counter].count)) entries[i].refer = {};
  }
}

qmx::EntryDecl DeclOf(const EntryModel& entry);
MetaDecl DeclOf(const MetaModel& meta);
MetaModel ModelOf(const MetaDecl& decl);

// Takes away what refers to an entry that is not there or that can hold no count. An index that loses all its columns goes.
void DropLooseReferences(MetaDecl& decl);

// Adds the meta. REQUIRES: no loose references.
void AddTo(qmx::MetalibBuilder& builder, const MetaDecl& decl);

}  // namespace korvel
