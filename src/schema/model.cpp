// Reads models from libraries; declaration.cpp converts them for the builder. Tested by tests/report/model_test.cpp and
// rewrite_test.cpp.
#include "schema/model.h"

#include <tuple>
#include <unordered_set>
#include <utility>

#include "common/meta_view.h"
#include "schema/declaration.h"

namespace korvel {
namespace {

qmx::Protocol ProtocolOf(LPQMXMETALIB library) {
  if (library->iFlag == QMX_FLAG_UNSET) return qmx::Protocol::kUnset;
  return IsTlv(library) ? qmx::Protocol::kTlv : qmx::Protocol::kQmx;
}

EntryModel ReadEntry(LPQMXMETALIB library, LPQMXMETAENTRY entry) {
  EntryModel model;
  model.name = qmx_get_entry_name(entry);
  if (const LPQMXMETA meta = qmx_get_entry_type_meta(library, entry)) {
    model.type = qmx_get_meta_name(meta);
  } else {
    const qmx::SimpleType& type = *qmx::FindSimpleType(entry->iType);
    model.type = type.name;
    if (type.unit_size == 0) model.size = entry->iUnitSize;
  }
  model.id = entry->iID;
  model.version = entry->iVersion;
  model.count = entry->iCount;
  if (const char* counter = EntryName(qmx_get_entry_refer(entry))) model.refer = counter;
  if (const char* text = qmx_get_entry_customattr2(library, entry)) model.customattr2 = text;
  return model;
}

std::vector<std::string> ReadKey(LPQMXMETA meta, const RecordList<tagQMXDBKeyInfo>& members) {
  std::vector<std::string> names;
  for (const tagQMXDBKeyInfo* member : members) {
    if (const char* name = MemberName(meta, member)) names.emplace_back(name);
  }
  return names;
}

IndexModel ReadIndex(LPQMXMETA meta, LPQMXMETAINDEX index) {
  IndexModel model{IndexName(meta, index), {}};
  for (const tagQMXColumnInfo* column : Columns(meta, index)) {
    if (const char* name = MemberName(meta, column)) model.columns.push_back({name, column->iIsDesc != 0});
  }
  return model;
}

// Visits each meta once, depth first. Recursion is limited because readers limit the nesting of libraries.
class Reader {
 public:
  Reader(const Source& source, Model& model) : source_(source), library_(source.Library()), model_(model) {}

  void Visit(LPQMXMETA meta) {
    if (!visited_.insert(meta).second) return;
    model_.metas.push_back(Read(meta));
    for (const auto [index, entry] : Entries(meta)) {
      const LPQMXMETA inner = qmx_get_entry_type_meta(library_, entry);
      // Of several metas with one name the first counts.
      if (inner != nullptr) Visit(qmx_get_meta_by_name(library_, qmx_get_meta_name(inner)));
    }
  }

 private:
  MetaModel Read(LPQMXMETA meta) const {
    MetaModel model = MetaOf(library_, meta);
    DropLooseRefers(model.entries);  // images may contain counters that schema files may not
    model.position = *PositionOf(source_, model.name);
    return model;
  }

  const Source& source_;
  LPQMXMETALIB library_;
  Model& model_;
  std::unordered_set<LPQMXMETA> visited_;
};

}  // namespace

bool MetaModel::operator==(const MetaModel& other) const {
  const auto parts = [](const MetaModel& one) {
    return std::tie(one.name, one.kind, one.customattr, one.entries, one.primary_key, one.splittable_key, one.indexes);
  };
  return parts(*this) == parts(other);
}

Model HeadOf(LPQMXMETALIB library) { return {library->data + library->ptrName, library->iVersion, ProtocolOf(library), {}}; }

MetaModel MetaOf(LPQMXMETALIB library, LPQMXMETA meta) {
  MetaModel model;
  model.name = qmx_get_meta_name(meta);
  model.kind = static_cast<enQMXType>(meta->iType);
  if (const char* text = qmx_get_meta_customattr(meta)) model.customattr = text;
  model.entries.reserve(static_cast<std::size_t>(EntryCount(meta)));
  for (const auto [index, entry] : Entries(meta)) model.entries.push_back(ReadEntry(library, entry));
  model.primary_key = ReadKey(meta, PrimaryKeyMembers(meta));
  model.splittable_key = ReadKey(meta, {meta, meta->ptrSplitTableKeyBase, meta->iSplitTableKeyMemberNum});
  for (const LPQMXMETAINDEX index : Indexes(meta)) model.indexes.push_back(ReadIndex(meta, index));
  return model;
}

Model ModelOf(const Source& source, const std::string& table) {
  const LPQMXMETALIB library = source.Library();
  Model model = HeadOf(library);
  Reader(source, model).Visit(qmx_get_meta_by_name(library, table.c_str()));
  return model;
}

const MetaModel* MetaCache::Find(const std::string& name) {
  const auto [found, is_new] = metas_.try_emplace(name);
  if (is_new && source_.HasMeta(name)) {
    // What was found before stays where it is.
    for (MetaModel& meta : ModelOf(source_, name).metas) {
      if (std::optional<MetaModel>& known = metas_[meta.name]; !known) known = std::move(meta);
    }
  }
  return found->second ? &*found->second : nullptr;
}

std::size_t PartsOf(const Model& model) {
  std::size_t count = 0;
  for (const MetaModel& meta : model.metas) {
    count += 1 + meta.entries.size() + meta.primary_key.size() + meta.splittable_key.size() + meta.indexes.size();
    for (const IndexModel& index : meta.indexes) count += index.columns.size();
  }
  return count;
}

std::optional<qmx::Metalib> Build(const Model& model) {
  qmx::MetalibBuilder builder(model.name, model.version, model.protocol);
  for (const MetaModel& meta : model.metas) {
    MetaDecl decl = DeclOf(meta);
    DropLooseReferences(decl);
    AddTo(builder, decl);
  }
  return builder.Finish().metalib;
}

}  // namespace korvel
