// The table of rules and the walk over the structures of a table. What a key contains is compared by key_bytes.cpp. Tested by
// tests/cases/warnings and, on random changes, by tests/codec/answer_test.cpp.
#include "analysis/warnings/advice_matches.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "analysis/warnings/entry_finder.h"
#include "analysis/warnings/key_bytes.h"
#include "analysis/warnings/sort_fields.h"

namespace korvel {
namespace {

using AdviceMatches = std::vector<AdviceMatch>;

// --- Rules about the table as a whole ---

bool ChangesKind(const TableMetas& table) { return table.old_meta->iType != table.new_meta->iType; }

// Whether all members of a new list of key members or columns have names of the old one, in any order and any number of times.
template <class Member>
bool NamesNoOther(const RecordList<Member>& old_list, LPQMXMETA old_meta, const RecordList<Member>& new_list,
                  LPQMXMETA new_meta) {
  const auto is_less = [](const char* a, const char* b) { return std::strcmp(a, b) < 0; };
  std::set<const char*, decltype(is_less)> known(is_less);
  for (const Member* member : old_list) {
    if (const char* name = MemberName(old_meta, member)) known.insert(name);
  }
  for (const Member* member : new_list) {
    const char* name = MemberName(new_meta, member);
    if (name == nullptr || !known.contains(name)) return false;
  }
  return true;
}

// Whether lists of the same length and with the same names differ. Then the checker allows the new list. `is_same` compares what
// members have besides a name.
template <class Member, class Same>
bool Reorders(const RecordList<Member>& old_list, LPQMXMETA old_meta, const RecordList<Member>& new_list, LPQMXMETA new_meta,
              Same is_same) {
  if (old_list.size() != new_list.size()) return false;
  int same = 0;
  while (same < old_list.size() && SameName(MemberName(old_meta, old_list[same]), MemberName(new_meta, new_list[same])) &&
         is_same(*old_list[same], *new_list[same])) {
    ++same;
  }
  return same < old_list.size() && NamesNoOther(old_list, old_meta, new_list, new_meta);
}

bool ReordersKey(const TableMetas& table) {
  return Reorders(PrimaryKeyMembers(table.old_meta), table.old_meta, PrimaryKeyMembers(table.new_meta), table.new_meta,
                  [](const tagQMXDBKeyInfo&, const tagQMXDBKeyInfo&) { return true; });
}

bool RenamesLibrary(const TableMetas& table) {
  const auto name_of = [](LPQMXMETALIB library) { return library->data + library->ptrName; };
  return std::strcmp(name_of(table.old_lib), name_of(table.new_lib)) != 0;
}

struct TableRule {
  const AdviceRule* rule;
  EditKind kind;
  bool (*applies)(const TableMetas& table);
};

constexpr TableRule kTableRules[] = {
    {&kTableKindAdvice, EditKind::kMetaKind, ChangesKind},
    {&kKeyMembersAdvice, EditKind::kPrimaryKey, ReordersKey},
    {&kLibraryRenamedAdvice, EditKind::kLibraryName, RenamesLibrary},
};

// --- Rules about a field of the table or of a structure in it ---

// The structures of a pair, while their fields are compared.
struct Structures {
  Structures(RecordForm record_form, LPQMXMETA old_side, LPQMXMETA new_side)
      : form(record_form), old_meta(old_side), new_meta(new_side), in_old(form, old_meta), in_new(form, new_meta) {}

  // Whether records of the old schema contain a field: packed ones lack fields with a version above that of the library.
  bool IsWritten(LPQMXMETAENTRY old_entry) const {
    return form == RecordForm::kTlv || qmx_get_entry_version(old_entry) <= qmx_get_metalib_version(OwnerOf(old_meta));
  }

  // The largest count that records of the old schema have in a counter; nullopt if it may be negative, or too large for any
  // field.
  std::optional<int> LargestCount(LPQMXMETAENTRY counter) {
    if (!counts) {
      counts.emplace();
      for (const auto [index, entry] : Entries(old_meta)) {
        const LPQMXMETAENTRY refer = qmx_get_entry_refer(entry);
        if (refer == nullptr) continue;
        const auto [known, is_new] = counts->try_emplace(refer, qmx_get_entry_count(entry));
        if (!is_new) known->second = std::min(known->second, qmx_get_entry_count(entry));
      }
    }
    const auto found = counts->find(counter);
    if (found != counts->end()) return found->second;
    const int type = qmx_get_entry_type(counter);
    if (type == QMX_TYPE_UINT8) return std::numeric_limits<std::uint8_t>::max();
    if (type == QMX_TYPE_UINT16) return std::numeric_limits<std::uint16_t>::max();
    return std::nullopt;
  }

  RecordForm form;
  LPQMXMETA old_meta;
  LPQMXMETA new_meta;
  EntryFinder in_old;
  EntryFinder in_new;
  std::optional<std::map<LPQMXMETAENTRY, int>> counts;  // of each counter of the old side, the smallest count of what it counts
};

// Whether the counter of an entry may have more in old records than the entry can have elements.
bool IsCountedByOldRecords(Structures& structures, LPQMXMETAENTRY new_entry) {
  if (!HasRefer(new_entry)) return false;
  const LPQMXMETAENTRY counter = structures.in_old.Find(qmx_get_entry_refer(new_entry), 0);
  if (counter == nullptr || !structures.IsWritten(counter)) return false;
  const std::optional<int> largest = structures.LargestCount(counter);
  return !largest || *largest > qmx_get_entry_count(new_entry);
}

bool ChangesCounter(Structures& structures, LPQMXMETAENTRY old_entry, LPQMXMETAENTRY new_entry) {
  if (old_entry == nullptr) return false;
  const LPQMXMETAENTRY old_counter = qmx_get_entry_refer(old_entry);
  const LPQMXMETAENTRY new_counter = qmx_get_entry_refer(new_entry);
  if (old_counter == nullptr && new_counter == nullptr) return false;
  // Also of a field that no old record contains: it may be in a key, which has as many default elements.
  return !IsSameField(structures.form, old_counter, new_counter);
}

bool AddsCounted(Structures& structures, LPQMXMETAENTRY old_entry, LPQMXMETAENTRY new_entry) {
  return old_entry == nullptr && IsCountedByOldRecords(structures, new_entry);
}

struct FieldRule {
  const AdviceRule* rule;
  EditKind kind;
  // `old_entry` is null for an added field. A removed field is in no rule.
  bool (*applies)(Structures& structures, LPQMXMETAENTRY old_entry, LPQMXMETAENTRY new_entry);
};

constexpr FieldRule kFieldRules[] = {
    {&kReferChangedAdvice, EditKind::kEntryRefer, ChangesCounter},
    {&kReferAddedAdvice, EditKind::kEntryAdded, AddsCounted},
};

// --- The walk ---

RecordList<tagQMXMetaEntry> EntryRecords(LPQMXMETA meta) { return {meta, meta->ptrEntries, EntryCount(meta)}; }

// Whether a meta has a counted or composite field. Reads nothing but two members of each record: most tables have none.
bool HasCountedOrComposite(LPQMXMETA meta) {
  const RecordList<tagQMXMetaEntry> entries = EntryRecords(meta);
  if (entries.size() == 0 || entries[0] == nullptr) return false;
  const tagQMXMetaEntry* const end = entries[0] + entries.size();
  return std::any_of(static_cast<const tagQMXMetaEntry*>(entries[0]), end, [](const tagQMXMetaEntry& entry) {
    return entry.ptrRefer != QMX_NO_REF || entry.ptrTypeMeta != QMX_NO_REF;
  });
}

// Whether the records of both sides are the same bytes. In libraries that are alike but for a few characters, names may differ.
bool HasSameRecords(LPQMXMETA old_meta, LPQMXMETA new_meta) {
  const RecordList<tagQMXMetaEntry> old_list = EntryRecords(old_meta);
  const RecordList<tagQMXMetaEntry> new_list = EntryRecords(new_meta);
  if (old_list.size() != new_list.size()) return false;
  if (old_list.size() == 0 || old_list[0] == nullptr || new_list[0] == nullptr) return true;
  return std::memcmp(old_list[0], new_list[0], static_cast<std::size_t>(old_list.size()) * sizeof(tagQMXMetaEntry)) == 0;
}

class AdviceSearch {
 public:
  explicit AdviceSearch(const TableMetas& table)
      : table_(table), is_same_version_(qmx_get_metalib_version(table.old_lib) == qmx_get_metalib_version(table.new_lib)) {}

  AdviceMatches Run() {
    for (const TableRule& rule : kTableRules) {
      if (rule.applies(table_)) AddOfTable(*rule.rule, rule.kind);
    }
    if (table_.created_as != kCreatedAsTlv) CompareIn(RecordForm::kPacked);
    if (IsTlv(table_.old_lib) && IsTlv(table_.new_lib)) CompareIn(RecordForm::kTlv);
    CompareSortFields();
    CompareIndexes();
    if (adds_unversioned_) AddOfTable(kVersionNotRaisedAdvice, EditKind::kLibraryVersion);
    std::ranges::stable_sort(matches_, {}, [](const AdviceMatch& match) { return match.rule->level; });
    return std::move(matches_);
  }

 private:
  static constexpr int kCreatedAsTlv = 2;  // kProtocols

  void AddOfTable(const AdviceRule& rule, EditKind kind) {
    Add({&rule, kind, table_.old_meta, table_.new_meta, nullptr, nullptr});
  }

  // Both forms may have the same match.
  void Add(const AdviceMatch& match) {
    const auto known = std::tuple(match.rule, match.kind, match.old_meta, match.old_entry, match.new_entry, match.old_index);
    if (added_.insert(known).second) matches_.push_back(match);
  }

  void CompareIn(RecordForm form) {
    for (const KeyDifference& one : CompareKeyStructures(form, table_.old_meta, table_.new_meta)) {
      Add({&kKeyStructureAdvice, one.kind, one.old_meta, one.new_meta, one.old_entry, one.new_entry});
    }
    known_.clear();
    Walk(form, table_.old_meta, table_.new_meta);
  }

  void Walk(RecordForm form, LPQMXMETA old_meta, LPQMXMETA new_meta) {
    const bool has_same_records = HasSameRecords(old_meta, new_meta);
    const bool may_be_counted = HasCountedOrComposite(old_meta) || (!has_same_records && HasCountedOrComposite(new_meta));
    const bool may_be_unversioned = is_same_version_ && !adds_unversioned_ && !has_same_records;
    if (!may_be_counted && !may_be_unversioned) return;
    if (!known_.insert({old_meta, new_meta}).second) return;
    Structures structures(form, old_meta, new_meta);
    for (const auto [index, old_entry] : Entries(old_meta)) {
      const LPQMXMETAENTRY new_entry = structures.in_new.Find(old_entry, index);
      if (new_entry == nullptr) continue;
      Apply(structures, old_entry, new_entry);
      const LPQMXMETA old_inner = qmx_get_entry_type_meta(table_.old_lib, old_entry);
      const LPQMXMETA new_inner = qmx_get_entry_type_meta(table_.new_lib, new_entry);
      if (old_inner != nullptr && new_inner != nullptr) Walk(form, old_inner, new_inner);
    }
    for (const auto [index, new_entry] : Entries(new_meta)) {
      if (structures.in_old.Find(new_entry, index) != nullptr) continue;
      adds_unversioned_ =
          adds_unversioned_ || (is_same_version_ && (form == RecordForm::kTlv || !ReplacesField(structures, old_meta, index)));
      Apply(structures, nullptr, new_entry);
    }
  }

  // Whether a removed field was at this position. In packed records, an added one may be the same field with another name.
  static bool ReplacesField(Structures& structures, LPQMXMETA old_meta, int index) {
    const LPQMXMETAENTRY old_entry = qmx_get_entry_by_index(old_meta, index);
    return old_entry != nullptr && structures.in_new.Find(old_entry, index) == nullptr;
  }

  void Apply(Structures& structures, LPQMXMETAENTRY old_entry, LPQMXMETAENTRY new_entry) {
    for (const FieldRule& rule : kFieldRules) {
      if (!rule.applies(structures, old_entry, new_entry)) continue;
      Add({rule.rule, rule.kind, structures.old_meta, structures.new_meta, old_entry, new_entry});
    }
  }

  void CompareSortFields() {
    const bool is_tlv = IsTlv(table_.old_lib) && IsTlv(table_.new_lib);
    const RecordForm form = is_tlv ? RecordForm::kTlv : RecordForm::kPacked;
    for (const auto& [old_entry, new_entry] : LostSortFields(form, table_.old_meta, table_.new_meta)) {
      Add({&kSortFieldsAdvice, EditKind::kEntryCustomAttr2, table_.old_meta, table_.new_meta, old_entry, new_entry});
    }
  }

  void CompareIndexes() {
    std::map<std::string_view, LPQMXMETAINDEX> by_name;
    for (tagQMXMetaIndex* new_index : Indexes(table_.new_meta)) {
      if (const char* name = IndexName(table_.new_meta, new_index)) by_name.emplace(name, new_index);
    }
    for (tagQMXMetaIndex* old_index : Indexes(table_.old_meta)) {
      const char* const name = IndexName(table_.old_meta, old_index);
      const auto found = name == nullptr ? by_name.end() : by_name.find(name);
      if (found == by_name.end() || !ReordersColumns(old_index, found->second)) continue;
      Add({&kIndexColumnsAdvice, EditKind::kIndexColumns, table_.old_meta, table_.new_meta, nullptr, nullptr, old_index,
           found->second});
    }
  }

  bool ReordersColumns(LPQMXMETAINDEX old_index, LPQMXMETAINDEX new_index) const {
    const auto is_same = [](const tagQMXColumnInfo& a, const tagQMXColumnInfo& b) { return a.iIsDesc == b.iIsDesc; };
    return Reorders(Columns(table_.old_meta, old_index), table_.old_meta, Columns(table_.new_meta, new_index), table_.new_meta,
                    is_same);
  }

  const TableMetas& table_;
  const bool is_same_version_;
  bool adds_unversioned_ = false;
  std::set<std::pair<LPQMXMETA, LPQMXMETA>> known_;
  std::set<std::tuple<const AdviceRule*, EditKind, LPQMXMETA, LPQMXMETAENTRY, LPQMXMETAENTRY, LPQMXMETAINDEX>> added_;
  AdviceMatches matches_;
};

}  // namespace

std::vector<AdviceMatch> FindAdviceMatches(const TableMetas& table) { return AdviceSearch(table).Run(); }

}  // namespace korvel
