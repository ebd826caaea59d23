// A meta in the form that the builder takes: names borrowed from models, references by name. Faster to make than a model.
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

// Borrows every text except the attributes, which may be combined from two sides.
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

// Whether `type` is the name of a meta, not a simple type.
inline bool IsCompositeType(std::string_view type) { return qmx::FindSimpleType(type) == nullptr; }

// Whether an entry of that type and count can be the counter (refer) of an entry behind it: a single integer.
bool CanHoldCount(std::string_view type, std::int32_t count);

// Clears refer properties that do not name an earlier entry that can be a counter. For EntryDecl and EntryModel.
template <class Entry>
void DropLooseRefers(std::vector<Entry>& entries) {
  NameFinder<Entry> finder(entries);
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (entries[i].refer.empty()) continue;
    const std::size_t counter = finder.Find(entries[i].refer);
    if (counter >= i || !CanHoldCount(entries[counter].type, entries[counter].count)) entries[i].refer = {};
  }
}

// The results of DeclOf borrow from the model, those of ModelOf own their texts. Linear.
qmx::EntryDecl DeclOf(const EntryModel& entry);
MetaDecl DeclOf(const MetaModel& meta);
MetaModel ModelOf(const MetaDecl& decl);

// Removes references to entries that do not exist or cannot be counters. Removes an index that loses all its columns.
void DropLooseReferences(MetaDecl& decl);

// Adds the meta to a library. The builder borrows its texts. REQUIRES: no loose references.
void AddTo(qmx::MetalibBuilder& builder, const MetaDecl& decl);

}  // namespace korvel
