// Accepts the declarations of a schema library. builder_meta.cpp closes a meta, builder_types.cpp and builder_sizes.cpp resolve
// what depends on other metas, block.cpp stores the bytes.
#include "qmx/qmx_builder.h"

#include <algorithm>
#include <tuple>

#include "base/text.h"
#include "qmx/builder_state.h"
#include "qmx/meta_slots.h"

namespace qmx {
namespace {

using korvel::Quote;

std::int64_t FlagWord(Protocol protocol) {
  switch (protocol) {
    case Protocol::kQmx:
      return 0;
    case Protocol::kTlv:
      return QMX_FLAG_TLV;
    case Protocol::kUnset:
      break;
  }
  return QMX_FLAG_UNSET;
}

std::int64_t AddOptional(Texts& texts, const std::optional<std::string_view>& text) {
  return text ? texts.Add(*text) : QMX_NO_REF;
}

std::optional<MetaSlots> SlotsOf(const Library& library) {
  std::vector<std::string_view> names;
  names.reserve(library.metas.size());
  for (std::uint32_t meta = 0; meta < library.metas.size(); ++meta) names.push_back(library.MetaName(meta));
  return MakeMetaSlots(names);
}

// Appends the offsets and the hash table of the metas, and describes them in the header.
void FinishBlock(Library& library, const MetaSlots& slots) {
  const std::int64_t list = library.block.Append<std::int64_t>(library.metas.size());
  for (std::size_t i = 0; i < library.metas.size(); ++i) library.block.At<std::int64_t>(list, i) = library.metas[i];
  const std::int64_t slot_list = library.block.Append<tagQMXMetaSlot>(slots.slots.size());
  for (std::size_t i = 0; i < slots.slots.size(); ++i) library.block.At<tagQMXMetaSlot>(slot_list, i) = slots.slots[i];
  const std::int64_t name = library.block.AppendBytes({library.name.c_str(), library.name.size() + 1});

  tagQMXMetaLib& header = library.block.Header();
  header.iFlag = FlagWord(library.protocol);
  header.ptrName = name;
  header.ptrMetas = list;
  header.ptrMetaSlots = slot_list;
  header.iVersion = library.version;
  header.iMetaNum = static_cast<std::int32_t>(library.metas.size());
  header.iMetaSlotNum = static_cast<std::int32_t>(slots.slots.size());
  header.iMetaSlotSeed = slots.seed;
}

}  // namespace

struct MetalibBuilder::State {
  Library library;

  OpenMeta& Open() { return library.open; }
  std::uint32_t Meta() const { return Position(library.metas.size() - 1); }

  void KeepKey(std::vector<Texts::Place>& key, const std::vector<std::string_view>& entries) {
    key.clear();
    for (const std::string_view entry : entries) key.push_back(Open().words.Add(entry));
  }
};

MetalibBuilder::MetalibBuilder(std::string_view name, std::int32_t version, Protocol protocol)
    : state_(std::make_unique<State>()) {
  state_->library.name = name;
  state_->library.version = version;
  state_->library.protocol = protocol;
}

MetalibBuilder::~MetalibBuilder() = default;

bool MetalibBuilder::AddMeta(std::string_view name, enQMXType kind, std::optional<std::string_view> customattr) {
  Library& library = state_->library;
  CloseMeta(library);
  OpenMeta& open = library.open;
  open.is_open = true;
  open.first_composite = library.composites.size();
  const std::int64_t at = library.block.Append<tagQMXMeta>(1);
  auto& meta = library.block.At<tagQMXMeta>(at);
  meta.ptrMeta = at;
  meta.ptrName = open.texts.Add(name);
  meta.ptrCustomAttr = AddOptional(open.texts, customattr);
  meta.iType = kind;
  const std::uint32_t position = Position(library.metas.size());
  library.metas.push_back(at);
  library.meta_names.push_back(library.names.Add(name));
  return library.meta_index.Add(name, position, [&](std::uint32_t other) { return library.MetaName(other); });
}

bool MetalibBuilder::AddEntry(const EntryDecl& decl) {
  Library& library = state_->library;
  OpenMeta& open = library.open;
  if (!open.is_open) return true;
  const std::int64_t at = library.block.Append<tagQMXMetaEntry>(1);
  const std::uint32_t meta = state_->Meta();
  const std::uint32_t position = library.EntryNum(meta);
  library.Meta(meta).iEntriesNum = static_cast<std::int32_t>(position + 1);

  auto& entry = library.block.At<tagQMXMetaEntry>(at);
  entry.ptrEntry = at;
  entry.ptrName = open.texts.Add(decl.name);
  entry.ptrCustomAttr2 = AddOptional(open.texts, decl.customattr2);
  entry.ptrTypeMeta = QMX_NO_REF;
  entry.ptrRefer = QMX_NO_REF;
  entry.iID = decl.id;
  entry.iVersion = decl.version;
  entry.iCount = decl.count;
  if (const SimpleType* simple = FindSimpleType(decl.type)) {
    entry.iType = simple->code;
    entry.iUnitSize = simple->unit_size == 0 ? decl.size : simple->unit_size;
  } else {
    entry.iType = QMX_TYPE_NONE;
    library.composites.push_back({meta, position, library.types.Add(decl.type)});
  }
  if (!decl.refer.empty()) open.refers.push_back({position, open.words.Add(decl.refer)});
  return open.entry_names.Add(decl.name, position,
                              [&](std::uint32_t other) { return open.texts.At(library.Entry(meta, other).ptrName); });
}

void MetalibBuilder::SetPrimaryKey(const std::vector<std::string_view>& entries) {
  if (state_->Open().is_open) state_->KeepKey(state_->Open().primary_key, entries);
}

void MetalibBuilder::SetSplittableKey(const std::vector<std::string_view>& entries) {
  if (state_->Open().is_open) state_->KeepKey(state_->Open().splittable_key, entries);
}

bool MetalibBuilder::AddIndex(std::string_view name, const std::vector<ColumnDecl>& columns) {
  OpenMeta& open = state_->Open();
  if (!open.is_open) return true;
  const std::uint32_t position = Position(open.indexes.size());
  open.indexes.push_back({open.texts.Add(name), open.columns.size()});
  for (const ColumnDecl& column : columns) open.columns.push_back({open.words.Add(column.entry), column.descending});
  return open.index_names.Add(name, position, [&](std::uint32_t other) { return open.texts.At(open.indexes[other].name); });
}

BuildResult MetalibBuilder::Finish() {
  Library& library = state_->library;
  CloseMeta(library);
  ResolveTypes(library);
  SizeComposites(library);
  BuildResult result{std::nullopt, library.errors.Take()};
  if (!result.errors.empty()) return result;
  if (const std::optional<MetaSlots> slots = SlotsOf(library)) {
    FinishBlock(library, *slots);
    result.metalib = library.block.Finish();
  } else {
    result.errors.push_back({{ElementId::Kind::kMetalib},
                             "",
                             "the names of the metas are constructed to collide in a hash table; allowed: names that do not"});
  }
  return result;
}

void BuildErrors::Add(Stage stage, const ElementId& where, std::string_view attribute, std::string text) {
  if (!IsFull()) errors_.emplace_back(stage, BuildError{where, attribute, std::move(text)});
}

void BuildErrors::AddRefer(const ElementId& where, std::string_view name, const std::string& refers_to) {
  Add(Stage::kNames, where, "refer",
      "entry " + Quote(name) + " refers to " + refers_to +
          "; allowed: an integer entry with count 1, declared before it in the same meta");
}

std::vector<BuildError> BuildErrors::Take() {
  std::ranges::stable_sort(errors_, {}, [](const auto& error) {
    const ElementId& id = error.second.where;
    return std::tuple(id.meta, id.kind, id.item, id.column, error.first);
  });
  std::vector<BuildError> errors;
  errors.reserve(errors_.size());
  for (auto& [stage, error] : errors_) errors.push_back(std::move(error));
  return errors;
}

}  // namespace qmx
