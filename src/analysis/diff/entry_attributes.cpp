// The table of entry attributes. Tested by tests/report/diff_test.cpp.
#include "analysis/diff/entry_attributes.h"

#include "base/text.h"
#include "schema/declaration.h"

namespace korvel {
namespace {

// Both composite: only the meta changes, not the kind of type.
bool IsBetweenMetas(const EntryModel& a, const EntryModel& b) { return IsCompositeType(a.type) && IsCompositeType(b.type); }

void TakeType(qmx::EntryDecl& to, const EntryModel& from) {
  to.type = from.type;
  to.size = from.size;
}

constexpr EntryAttribute kAttributes[] = {
    {EditKind::kEntryRenamed, "name", [](const EntryModel& a, const EntryModel& b) { return a.name != b.name; },
     [](const EntryModel& entry) { return entry.name; }, [](qmx::EntryDecl& to, const EntryModel& from) { to.name = from.name; }},
    {EditKind::kEntryId, "id", [](const EntryModel& a, const EntryModel& b) { return a.id != b.id; },
     [](const EntryModel& entry) { return entry.id == -1 ? "" : std::to_string(entry.id); },
     [](qmx::EntryDecl& to, const EntryModel& from) { to.id = from.id; }},
    {EditKind::kEntryType, "type",
     [](const EntryModel& a, const EntryModel& b) { return a.type != b.type && !IsBetweenMetas(a, b); }, TypeText, TakeType},
    {EditKind::kEntryMeta, "type",
     [](const EntryModel& a, const EntryModel& b) { return a.type != b.type && IsBetweenMetas(a, b); }, TypeText, TakeType},
    {EditKind::kEntrySize, "size", [](const EntryModel& a, const EntryModel& b) { return a.type == b.type && a.size != b.size; },
     [](const EntryModel& entry) { return std::to_string(entry.size); },
     [](qmx::EntryDecl& to, const EntryModel& from) { to.size = from.size; }},
    {EditKind::kEntryVersion, "version", [](const EntryModel& a, const EntryModel& b) { return a.version != b.version; },
     [](const EntryModel& entry) { return std::to_string(entry.version); },
     [](qmx::EntryDecl& to, const EntryModel& from) { to.version = from.version; }},
    {EditKind::kEntryCount, "count", [](const EntryModel& a, const EntryModel& b) { return a.count != b.count; },
     [](const EntryModel& entry) { return std::to_string(entry.count); },
     [](qmx::EntryDecl& to, const EntryModel& from) { to.count = from.count; }},
    {EditKind::kEntryCustomAttr2, "customattr2",
     [](const EntryModel& a, const EntryModel& b) { return a.customattr2 != b.customattr2; },
     [](const EntryModel& entry) { return entry.customattr2 ? ValueText(*entry.customattr2) : ""; },
     [](qmx::EntryDecl& to, const EntryModel& from) {
       to.customattr2.reset();
       if (from.customattr2) to.customattr2 = *from.customattr2;
     }},
};

}  // namespace

std::span<const EntryAttribute> EntryAttributes() { return kAttributes; }

bool IsSortMark(const EntryModel& entry) { return entry.customattr2 && entry.customattr2->starts_with("sort="); }

std::string TypeText(const EntryModel& entry) {
  return entry.size == 0 ? entry.type : entry.type + "(" + std::to_string(entry.size) + ")";
}

std::string KindText(const MetaModel& meta) { return meta.kind == QMX_TYPE_UNION ? "union" : "structure"; }

std::string ColumnsText(const IndexModel& index) {
  return Join(index.columns, ", ", [](const ColumnModel& column) { return column.entry + (column.descending ? " desc" : ""); });
}

}  // namespace korvel
