// Computes the layout of a table. Two layouts are compared by layout_pairs.cpp; renderers print them. Tested by
// tests/report/layout_test.cpp.
#include "report/result/layout.h"

#include <algorithm>
#include <set>

#include "common/check_table.h"
#include "common/meta_view.h"
#include "qmx/qmx_metalib_kernel.h"
#include "schema/setting_values.h"
#include "schema/settings.h"

namespace korvel {
namespace {

std::string TypeName(LPQMXMETALIB library, LPQMXMETAENTRY entry) {
  if (const LPQMXMETA meta = qmx_get_entry_type_meta(library, entry)) return qmx_get_meta_name(meta);
  const qmx::SimpleType* const type = qmx::FindSimpleType(qmx_get_entry_type(entry));
  return type == nullptr ? "?" : std::string(type->name);
}

constexpr std::size_t kLongPath = 512;  // bytes

// Where the fields of a structure go.
struct Frame {
  std::string prefix;        // of their paths
  std::uint64_t offset = 0;  // of the first byte
  bool in_element = false;   // whether the offset counts from an element
  std::uint64_t times = 1;   // occurrences in a record
  bool is_table = true;
};

class Walk {
 public:
  Walk(const Source& source, TableLayout& layout) : library_(source.Library()), layout_(layout) {
    sort_list_ = TableAttributesOf(source, layout.table).type == TABLE_TYPE_SORTLIST;
  }

  void Run(LPQMXMETA table) {
    for (const auto* member : RecordList<tagQMXDBKeyInfo>(table, table->ptrSplitTableKeyBase, table->iSplitTableKeyMemberNum)) {
      if (const char* name = MemberName(table, member)) splittable_.emplace(name);
    }
    Fields(table, {});
  }

 private:
  void Fields(LPQMXMETA meta, const Frame& frame) {
    std::uint64_t offset = frame.offset;
    for (const auto [index, entry] : Entries(meta)) {
      const std::size_t position = layout_.fields.size();
      layout_.fields.push_back(Field(entry, frame, offset));
      const std::uint64_t size = layout_.fields.back().size;
      if (const LPQMXMETA inner = qmx_get_entry_type_meta(library_, entry)) Open(inner, position, frame);
      layout_.fields[position].end = layout_.fields.size();
      if (meta->iType != QMX_TYPE_UNION) offset += size;
    }
  }

  FieldLayout Field(LPQMXMETAENTRY entry, const Frame& frame, std::uint64_t offset) const {
    FieldLayout field;
    field.name = EntryName(entry);
    field.path = frame.prefix + field.name;
    field.type = TypeName(library_, entry);
    field.id = qmx_get_entry_id(entry);
    field.version = qmx_get_entry_version(entry);
    field.count = std::max(qmx_get_entry_count(entry), 0);
    if (const char* refer = EntryName(qmx_get_entry_refer(entry))) field.refer = refer;
    field.unit_size = qmx_get_entry_unitsize(entry);
    field.size = field.unit_size * static_cast<std::uint64_t>(field.count);
    field.offset = offset;
    field.in_element = frame.in_element;
    field.in_record = field.size * frame.times;
    if (frame.is_table) AddRoles(entry, field);
    return field;
  }

  // Only fields of the table itself can be key or sort fields.
  void AddRoles(LPQMXMETAENTRY entry, FieldLayout& field) const {
    field.key = IsPrimaryKeyMember(entry);
    field.splittable = splittable_.contains(field.name);
    const char* const mark = qmx_get_entry_customattr2(library_, entry);
    if (sort_list_ && mark != nullptr && std::string_view(mark).starts_with("sort=")) field.sort = mark;
  }

  void Open(LPQMXMETA inner, std::size_t position, const Frame& outer) {
    FieldLayout& field = layout_.fields[position];
    // The path of every inner field repeats the path of the structure: long paths cost more.
    const std::size_t cost = static_cast<std::size_t>(EntryCount(inner)) * (1 + field.path.size() / kLongPath);
    if (cost > left_) {
      field.closed = true;
      ++layout_.closed;
      return;
    }
    left_ -= cost;
    const bool repeated = field.count != 1;
    Frame frame;
    frame.prefix = field.path + (repeated ? "[]." : ".");
    frame.offset = repeated ? 0 : field.offset;
    frame.in_element = repeated || outer.in_element;
    frame.times = outer.times * static_cast<std::uint64_t>(field.count);
    frame.is_table = false;
    Fields(inner, frame);
  }

  LPQMXMETALIB library_;
  TableLayout& layout_;
  bool sort_list_ = false;
  std::set<std::string> splittable_;
  std::size_t left_ = kMaxInnerFields;
};

}  // namespace

TableLayout LayoutOf(const Source& source, const std::string& table) {
  TableLayout layout;
  layout.table = table;
  const LPQMXMETA meta = qmx_get_meta_by_name(source.Library(), table.c_str());
  if (meta == nullptr) return layout;
  layout.found = true;
  layout.tlv = ResolveSettings({}, source, table).created_as == CodeOf(kProtocols, "tlv");
  layout.is_union = meta->iType == QMX_TYPE_UNION;
  layout.size = meta->iUnitSize;
  layout.own_fields = static_cast<std::size_t>(EntryCount(meta));
  Walk(source, layout).Run(meta);
  return layout;
}

}  // namespace korvel
