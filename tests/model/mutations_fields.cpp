// Changes of fields, of the table itself and of structures inside it. Tested by model_test.cpp, which expects the verdict of
// each.
#include <algorithm>

#include "model/edits.h"
#include "model/mutations.h"

namespace model {
namespace {

using enum TextId;

bool IsFreeAndNoKey(const FieldDecl& field, const MetaDecl& meta) { return IsFree(field, meta) && !IsKey(field, meta); }
bool IsSizedAndNoKey(const FieldDecl& field, const MetaDecl& meta) { return HasSize(field, meta) && !IsKey(field, meta); }
bool IsSizedKey(const FieldDecl& field, const MetaDecl& meta) { return HasSize(field, meta) && IsKey(field, meta); }
bool HasRefer(const FieldDecl& field, const MetaDecl&) { return !field.refer.empty(); }
bool HasNoAttribute(const FieldDecl& field, const MetaDecl&) { return field.attr2.value_or("").empty(); }
bool HasAttribute(const FieldDecl& field, const MetaDecl&) { return field.attr2 && !field.attr2->empty(); }

bool HoldsNoCount(const FieldDecl& field, const MetaDecl& meta) {
  return field.refer.empty() && std::ranges::find(meta.fields, field.name, &FieldDecl::refer) == meta.fields.end();
}
bool HoldsNoCountAndIsMany(const FieldDecl& field, const MetaDecl& meta) { return HoldsNoCount(field, meta) && field.count > 1; }

const std::vector<std::vector<std::string>> kSameSize = {
    {"int8", "uint8"}, {"int16", "uint16"}, {"int32", "uint32"}, {"int64", "uint64"}};

bool HasTwin(const FieldDecl& field, const MetaDecl&) {
  return std::ranges::any_of(kSameSize, [&](const auto& twins) { return std::ranges::find(twins, field.type) != twins.end(); });
}

bool FlipType(FieldDecl* field) {
  if (field == nullptr) return false;
  for (const std::vector<std::string>& twins : kSameSize) {
    const auto found = std::ranges::find(twins, field->type);
    if (found == twins.end()) continue;
    field->type = found == twins.begin() ? twins[1] : twins[0];
    return true;
  }
  return false;
}

bool AddField(MetaDecl* meta, std::size_t place, int version) {
  if (meta == nullptr) return false;
  const std::size_t number = meta->fields.size();
  const FieldDecl field{.name = "n" + std::to_string(number), .id = 200 + static_cast<int>(number), .version = version};
  meta->fields.insert(meta->fields.begin() + static_cast<std::ptrdiff_t>(std::min(place, number)), field);
  return true;
}

bool AddFieldSomewhere(MetaDecl* meta, int version, Random& random) { return AddField(meta, random.Below(8), version); }

bool Rename(MetaDecl* meta, Random& random, IsWanted is_wanted) {
  FieldDecl* const field = AnyField(meta, random, is_wanted);
  if (field == nullptr) return false;
  RenameField(field->name, "renamed" + std::to_string(random.Below(10)), *meta);
  return true;
}

bool SwapNeighbours(MetaDecl* meta, Random& random) {
  if (meta == nullptr || meta->fields.size() < 2) return false;
  const std::size_t first = random.Below(meta->fields.size() - 1);
  std::swap(meta->fields[first], meta->fields[first + 1]);
  return true;
}

template <typename Number>
bool Add(Number FieldDecl::*member, int amount, FieldDecl* field) {
  if (field == nullptr) return false;
  field->*member = static_cast<Number>(static_cast<std::int64_t>(field->*member) + amount);
  return true;
}

bool SetAttribute(FieldDecl* field, std::optional<std::string> to) {
  if (field == nullptr || field->attr2 == to) return false;
  field->attr2 = std::move(to);
  return true;
}

bool GrowALot(FieldDecl* field, Random& random) {
  if (field == nullptr) return false;
  const std::vector<std::uint64_t> sizes = {131072, 131073, 262144, 262145, 10485760, 10485761, 20000000};
  field->size = std::max(field->size, random.Of(sizes));
  return true;
}

// A simple field becomes a structure, or the reverse.
bool ChangeType(LibraryDecl& library, Random& random) {
  FieldDecl* const field = AnyField(Anything(library, random), random, IsAny);
  if (field == nullptr) return false;
  const std::vector<std::string> types = {"s0", "s1", "s2", "string", "bytes", "uint8", "double", "uint64"};
  field->type = random.Of(types);
  field->size = field->type == "string" || field->type == "bytes" ? 64 : 0;
  return true;
}

// Replaces a structure by one with another name and the same fields.
bool ReplaceStructure(LibraryDecl& library, Random& random) {
  FieldDecl* const field = AnyField(Table(library), random, IsAny);
  if (field == nullptr) return false;
  const auto found = std::ranges::find(library.metas, field->type, &MetaDecl::name);
  if (found == library.metas.end()) return false;
  MetaDecl twin = *found;
  twin.name = field->type = "twin";
  library.metas.push_back(std::move(twin));
  return true;
}

bool SwapKind(LibraryDecl& library, Random& random) {
  MetaDecl* const structure = Inside(library, random);
  if (structure == nullptr) return false;
  structure->is_union = !structure->is_union;
  return true;
}

bool DropInside(LibraryDecl& library, Random& random) {
  MetaDecl* const structure = Inside(library, random);
  if (structure == nullptr || structure->fields.size() < 2) return false;
  RemoveField(structure->fields[random.Below(structure->fields.size())].name, *structure);
  return true;
}

// Removes a field and enlarges another by more than its size.
bool DropInsideAndGrow(LibraryDecl& library, Random& random) {
  return DropInside(library, random) && GrowALot(AnyField(Inside(library, random), random, HasSize), random);
}

bool Drop(LibraryDecl& library, Random& random) {
  const FieldDecl* const field = AnyField(Table(library), random, IsFreeAndNoKey);
  if (field == nullptr) return false;
  RemoveField(field->name, *Table(library));
  return true;
}

bool SameId(LibraryDecl& library, Random& random) {
  FieldDecl* const field = AnyField(Anything(library, random), random, IsAny);
  if (field == nullptr) return false;
  field->id = static_cast<int>(random.Below(8)) - 1;
  return true;
}

using L = LibraryDecl;
using R = Random;

constexpr Mutation kMutations[] = {
    {"nothing", kSucceeded, kSucceeded, [](L&, R&) { return true; }},
    {"add a field at the end", kSucceeded, kSucceeded, [](L& l, R&) { return AddField(Table(l), 1000, l.version + 1); }},
    {"add a field somewhere", kSucceeded, kSucceeded, [](L& l, R& r) { return AddFieldSomewhere(Table(l), l.version + 1, r); }},
    {"add a field as old as the library", kNewVersionLow, kSucceeded,
     [](L& l, R& r) { return AddFieldSomewhere(Table(l), l.version, r); }},
    {"add a field of version 0", kNewVersionLow, kSucceeded, [](L& l, R& r) { return AddFieldSomewhere(Table(l), 0, r); }},
    {"drop a field", kEntryRemoved, kEntryRemovedTlv, Drop},
    {"rename a field", kEntryRemoved, kEntryRemovedTlv, [](L& l, R& r) { return Rename(Table(l), r, IsFreeAndNoKey); }},
    {"rename a key field", kKeyChanged, kKeyChanged,
     [](L& l, R& r) { return Table(l) && Table(l)->split.empty() && Rename(Table(l), r, IsKey); }},
    {"widen a field that is no key", kSucceeded, kSucceeded,
     [](L& l, R& r) { return Add(&FieldDecl::size, 1, AnyField(Table(l), r, IsSizedAndNoKey)); }},
    {"narrow a field that is no key", kSizeReduced, kSizeReduced,
     [](L& l, R& r) { return Add(&FieldDecl::size, -1, AnyField(Table(l), r, IsSizedAndNoKey)); }},
    {"widen a key field", kKeySize, kKeySizeTlv,
     [](L& l, R& r) { return Add(&FieldDecl::size, 1, AnyField(Table(l), r, IsSizedKey)); }},
    {"narrow a key field", kKeySize, kKeySizeTlv,
     [](L& l, R& r) { return Add(&FieldDecl::size, -1, AnyField(Table(l), r, IsSizedKey)); }},
    {"widen a field far", kSucceeded, kSucceeded, [](L& l, R& r) { return GrowALot(AnyField(Table(l), r, IsSizedAndNoKey), r); }},
    {"another type of the same size", kTypeChanged, kTypeChanged,
     [](L& l, R& r) { return FlipType(AnyField(Table(l), r, HasTwin)); }},
    {"more elements without a refer", kCountChanged, kCountChanged,
     [](L& l, R& r) { return Add(&FieldDecl::count, 1, AnyField(Table(l), r, HoldsNoCount)); }},
    {"fewer elements without a refer", kCountChanged, kCountChanged,
     [](L& l, R& r) { return Add(&FieldDecl::count, -1, AnyField(Table(l), r, HoldsNoCountAndIsMany)); }},
    {"more elements with a refer", kSucceeded, kSucceeded,
     [](L& l, R& r) { return Add(&FieldDecl::count, 1, AnyField(Table(l), r, HasRefer)); }},
    {"fewer elements with a refer", kCountReduced, kCountReduced,
     [](L& l, R& r) { return Add(&FieldDecl::count, -1, AnyField(Table(l), r, HasRefer)); }},
    {"an attribute", kAttributeChanged, kSucceeded,
     [](L& l, R& r) { return SetAttribute(AnyField(Table(l), r, HasNoAttribute), "secret"); }},
    {"another attribute", kEnd, kEnd,
     [](L& l, R& r) { return SetAttribute(AnyField(Anything(l, r), r, HasAttribute), "secret"); }},
    {"no attribute any more", kAttributeChanged, kSucceeded,
     [](L& l, R& r) {
       FieldDecl* const field = AnyField(Table(l), r, HasAttribute);
       return field != nullptr && !IsSortField(*field, *Table(l)) && SetAttribute(field, std::nullopt);
     }},
    {"an empty attribute for none", kSucceeded, kSucceeded,
     [](L& l, R& r) {
       FieldDecl* const field = AnyField(Table(l), r, IsAny);
       return field != nullptr && !field->attr2 && SetAttribute(field, "");
     }},
    {"swap two fields", kOrder, kSucceeded, [](L& l, R& r) { return SwapNeighbours(Table(l), r); }},
    {"another version of a field", kVersionChanged, kSucceeded,
     [](L& l, R& r) {
       FieldDecl* const field = AnyField(Table(l), r, IsAny);
       return Add(&FieldDecl::version, r.OneIn(2) ? 1 : -1, field);
     }},
    {"another id of a field", kSucceeded, kEntryRemovedTlv,
     [](L& l, R& r) { return Add(&FieldDecl::id, 1000, AnyField(Table(l), r, IsAny)); }},
    {"another structure with the same fields", kStructureChanged, kSucceeded, ReplaceStructure},

    {"add a field inside", kSucceeded, kSucceeded, [](L& l, R& r) { return AddFieldSomewhere(Inside(l, r), l.version + 1, r); }},
    {"add a field inside as old as the library", kNewVersionLow, kSucceeded,
     [](L& l, R& r) { return AddFieldSomewhere(Inside(l, r), l.version, r); }},
    {"drop a field inside", kEnd, kEnd, DropInside},
    {"drop a field inside and widen another", kEnd, kEnd, DropInsideAndGrow},
    {"rename a field inside", kEntryRemoved, kSucceeded, [](L& l, R& r) { return Rename(Inside(l, r), r, IsAny); }},
    {"widen a field inside", kSucceeded, kSucceeded,
     [](L& l, R& r) { return Add(&FieldDecl::size, 1, AnyField(Inside(l, r), r, HasSize)); }},
    {"narrow a field inside", kSizeReduced, kSizeReduced,
     [](L& l, R& r) { return Add(&FieldDecl::size, -1, AnyField(Inside(l, r), r, HasSize)); }},
    {"another type of the same size inside", kTypeChanged, kTypeChangedTlv,
     [](L& l, R& r) { return FlipType(AnyField(Inside(l, r), r, HasTwin)); }},
    {"more elements inside without a refer", kCountChanged, kSucceeded,
     [](L& l, R& r) { return Add(&FieldDecl::count, 1, AnyField(Inside(l, r), r, HoldsNoCount)); }},
    {"more elements inside with a refer", kSucceeded, kSucceeded,
     [](L& l, R& r) { return Add(&FieldDecl::count, 1, AnyField(Inside(l, r), r, HasRefer)); }},
    {"fewer elements inside", kEnd, kEnd,
     [](L& l, R& r) { return Add(&FieldDecl::count, -1, AnyField(Inside(l, r), r, HoldsNoCountAndIsMany)); }},
    {"swap two fields inside", kOrder, kSucceeded, [](L& l, R& r) { return SwapNeighbours(Inside(l, r), r); }},
    {"another version of a field inside", kVersionChanged, kSucceeded,
     [](L& l, R& r) { return Add(&FieldDecl::version, 1, AnyField(Inside(l, r), r, IsAny)); }},
    {"another id of a field inside", kSucceeded, kSucceeded,
     [](L& l, R& r) { return Add(&FieldDecl::id, 1000, AnyField(Inside(l, r), r, IsAny)); }},
    {"a structure for a union", kEnd, kEnd, SwapKind},

    {"another type", kEnd, kEnd, ChangeType},
    {"an id that another field may have", kEnd, kEnd, SameId},
};

}  // namespace

std::span<const Mutation> FieldMutations() { return kMutations; }

const char* ApplyAny(std::span<const Mutation> mutations, LibraryDecl& library, Random& random) {
  if (Table(library) == nullptr) return nullptr;
  const Mutation& mutation = mutations[random.Below(mutations.size())];
  return mutation.apply(library, random) ? mutation.label : nullptr;
}

}  // namespace model
