// Changes of keys, indexes and attributes of a table, and of the library. Tested by model_test.cpp, which expects the verdict of
// each.
#include <algorithm>

#include "model/edits.h"
#include "model/mutations.h"

namespace model {
namespace {

using enum TextId;

bool HasKind(const MetaDecl* table) {
  return table != nullptr && table->attr && table->attr->find("TableType") != std::string::npos;
}
bool HasNoAttributes(const MetaDecl* table) { return table != nullptr && table->attr.value_or("").empty(); }
bool IsSortList(const MetaDecl* table) { return HasKind(table) && table->attr->find("=SORTLIST") != std::string::npos; }

// The attributes of a table, which give its type.
bool Replace(MetaDecl* table, const std::string& from, const std::string& to) {
  if (!HasKind(table)) return false;
  const std::size_t place = table->attr->find(from);
  if (place == std::string::npos) return false;
  table->attr->replace(place, from.size(), to);
  return true;
}

bool SetAttributes(MetaDecl* table, bool applies, const char* text) {
  if (!applies) return false;
  table->attr = text;
  return true;
}

bool DropAttributes(LibraryDecl& library, Random&) {
  MetaDecl* const table = Table(library);
  if (!HasKind(table)) return false;
  table->attr = std::nullopt;
  return true;
}

bool BreakAttributes(LibraryDecl& library, Random& random) {
  static const std::vector<std::string> broken = {
      ";",
      "TableType",
      "TableType=",
      "TableType=HEAP",
      "TableType=GENERIC;",
      " TableType=GENERIC",
      "TableType= GENERIC",
      "TableType=GENERIC;Colour=100%s",
      "tabletype=GENERIC",
      "TableType=LIST",
      "TableType=LIST;ListNum=0",
      "TableType=LIST;ListNum=-8",
      "TableType=LIST;ListNum=+8",
      "TableType=LIST;ListNum=8 ",
      "TableType=LIST;ListNum=8;ListNum=8",
      "TableType=LIST;;ListNum=8",
      "TableType=LIST;ListNum=2147483648",
      "TableType=LIST;ListNum=99999999999999999999999",
      "TableType=GENERIC;SortRule=ASC",
      "TableType=GENERIC;DataProtocol=XML",
      "TableType=GENERIC;DataProtocol=QMXQMXQM",
      "ListNum=x",
      "TableType=SORTLIST;ListNum=2%",
      "=",
      "TableType=GENERIC=",
      "TableType=%n%s" + std::string(2000, '%'),
  };
  MetaDecl* const table = Table(library);
  if (table == nullptr) return false;
  table->attr = random.Of(broken);
  return true;
}

bool BreakSortFields(LibraryDecl& library, Random& random) {
  static const std::vector<std::string> broken = {"sort=0", "sort=5", "sort=12", "sort=", "sort=x", "sort=1 ", "sort=99%"};
  FieldDecl* const field = AnyField(Table(library), random, IsSortField);
  if (field == nullptr) return false;
  field->attr2 = random.Of(broken);
  return true;
}

bool DropSortField(LibraryDecl& library, Random&) {
  MetaDecl* const table = Table(library);
  if (!IsSortList(table)) return false;
  std::vector<std::string> names;
  for (const FieldDecl& field : table->fields) {
    if (IsSortField(field, *table)) names.push_back(field.name);
  }
  if (names.size() < 2) return false;
  RemoveField(names.back(), *table);
  return true;
}

bool AddSortField(LibraryDecl& library, Random&) {
  MetaDecl* const table = Table(library);
  if (!IsSortList(table)) return false;
  const auto number = std::ranges::count_if(table->fields, [&](const FieldDecl& field) { return IsSortField(field, *table); });
  if (number >= 4) return false;
  table->fields.push_back({.name = "added", .id = 300, .version = library.version + 1});
  table->fields.back().attr2 = "sort=" + std::to_string(number + 1);
  return true;
}

bool SwapSortFields(LibraryDecl& library, Random& random) {
  FieldDecl* const one = AnyField(Table(library), random, IsSortField);
  FieldDecl* const other = AnyField(Table(library), random, IsSortField);
  if (!IsSortList(Table(library)) || one == other) return false;
  std::swap(one->attr2, other->attr2);
  return true;
}

bool BecomeSortList(LibraryDecl& library, Random&) {
  MetaDecl* const table = Table(library);
  if (!HasNoAttributes(table)) return false;
  table->attr = "TableType=SORTLIST;ListNum=10";
  table->fields.push_back({.name = "added", .id = 300, .version = library.version + 1});
  table->fields.back().attr2 = "sort=1";
  return true;
}

// The name of a field that is not in the key yet.
std::optional<std::string> OtherField(MetaDecl& table, const std::vector<std::string>& names, Random& random) {
  if (table.fields.empty()) return std::nullopt;
  const std::string& name = table.fields[random.Below(table.fields.size())].name;
  return std::ranges::find(names, name) == names.end() ? std::optional(name) : std::nullopt;
}

bool GrowNames(std::vector<std::string>& names, MetaDecl& table, Random& random) {
  const std::optional<std::string> name = OtherField(table, names, random);
  if (names.empty() || !name) return false;
  names.push_back(*name);
  return true;
}

bool ReplaceName(std::vector<std::string>& names, MetaDecl& table, Random& random) {
  const std::optional<std::string> name = OtherField(table, names, random);
  if (names.empty() || !name) return false;
  names[random.Below(names.size())] = *name;
  return true;
}

bool Rotate(std::vector<std::string>& names) {
  if (names.size() < 2 || names[0] == names[1]) return false;
  std::rotate(names.begin(), names.begin() + 1, names.end());
  return true;
}

IndexDecl* AnyIndex(MetaDecl* table, Random& random) {
  if (table == nullptr || table->indexes.empty()) return nullptr;
  return &table->indexes[random.Below(table->indexes.size())];
}

bool AddIndex(LibraryDecl& library, Random& random) {
  MetaDecl* const table = Table(library);
  if (table == nullptr || table->fields.empty()) return false;
  table->indexes.push_back({"added", {random.Of(table->fields).name}});
  return true;
}

bool DropIndex(LibraryDecl& library, Random&) {
  MetaDecl* const table = Table(library);
  if (table == nullptr || table->indexes.empty()) return false;
  table->indexes.pop_back();
  return true;
}

bool ToTlv(LibraryDecl& library, Random&) {
  if (library.flag != 0) return false;
  library.flag = 1;
  return true;
}

bool ToRecordFormat(LibraryDecl& library, Random&) {
  if (library.flag != 1) return false;
  library.flag = 0;
  return true;
}

bool RenameTable(LibraryDecl& library, Random&) {
  RenameMeta("t", "elsewhere", library);
  return true;
}

using L = LibraryDecl;
using R = Random;

constexpr Mutation kMutations[] = {
    {"primary key in another order", kSucceeded, kSucceeded, [](L& l, R&) { return Rotate(Table(l)->key); }},
    {"one more key field", kKeyNumber, kKeyNumber, [](L& l, R& r) { return GrowNames(Table(l)->key, *Table(l), r); }},
    {"another key field", kKeyChanged, kKeyChanged, [](L& l, R& r) { return ReplaceName(Table(l)->key, *Table(l), r); }},
    {"no primary key", kKeyInvalid, kKeyInvalid,
     [](L& l, R&) { return !Table(l)->key.empty() && (Table(l)->key.clear(), true); }},
    {"one more splittable key field", kSplitChanged, kSplitChanged,
     [](L& l, R& r) { return GrowNames(Table(l)->split, *Table(l), r); }},
    {"splittable key in another order", kSplitChanged, kSplitChanged, [](L& l, R&) { return Rotate(Table(l)->split); }},
    {"a splittable key of one field", kSplitChanged, kSplitChanged,
     [](L& l, R&) { return Table(l)->split.size() > 1 && (Table(l)->split.resize(1), true); }},
    {"no splittable key", kSplitPresence, kSplitPresence,
     [](L& l, R&) { return !Table(l)->split.empty() && (Table(l)->split.clear(), true); }},
    {"a splittable key", kSplitPresence, kSplitPresence,
     [](L& l, R&) { return Table(l)->split.empty() && (Table(l)->split = Table(l)->key, !Table(l)->key.empty()); }},
    {"one more index", kEnd, kEnd, AddIndex},
    {"one index less", kIndexNumber, kIndexNumber, DropIndex},
    {"another index name", kIndexName, kIndexName,
     [](L& l, R& r) { return AnyIndex(Table(l), r) && (AnyIndex(Table(l), r)->name += "x", true); }},
    {"one more column", kIndexColumns, kIndexColumns,
     [](L& l, R& r) {
       IndexDecl* const index = AnyIndex(Table(l), r);
       return index != nullptr && GrowNames(index->columns, *Table(l), r);
     }},
    {"another column", kIndexColumns, kIndexColumns,
     [](L& l, R& r) {
       IndexDecl* const index = AnyIndex(Table(l), r);
       return index != nullptr && ReplaceName(index->columns, *Table(l), r);
     }},
    {"columns in another order", kSucceeded, kSucceeded,
     [](L& l, R& r) {
       IndexDecl* const index = AnyIndex(Table(l), r);
       return index != nullptr && Rotate(index->columns);
     }},

    {"no attributes any more", kAttributesRemoved, kAttributesRemoved, DropAttributes},
    {"malformed attributes", kBadAttributes, kBadAttributes, BreakAttributes},
    {"malformed sort fields", kBadAttributes, kBadAttributes, BreakSortFields},
    {"a longer list", kSucceeded, kSucceeded, [](L& l, R&) { return Replace(Table(l), "=10", "=2147483647"); }},
    {"a shorter list", kListNumber, kListNumber, [](L& l, R&) { return Replace(Table(l), "=10", "=009"); }},
    {"a list for a generic table", kListType, kListType,
     [](L& l, R&) { return Replace(Table(l), "TableType=GENERIC", "TableType=LIST;ListNum=10"); }},
    {"a generic table for a list", kListType, kListType, [](L& l, R&) { return Replace(Table(l), "Type=LIST", "Type=GENERIC"); }},
    {"another sort rule", kSortRule, kSortRule, [](L& l, R&) { return Replace(Table(l), "=INSC", "=DESC"); }},
    {"the sort rule that is the rule anyway", kSucceeded, kSucceeded,
     [](L& l, R&) { return Replace(Table(l), ";SortRule=INSC", ""); }},
    {"no sort rule for the other one", kSortRule, kSortRule, [](L& l, R&) { return Replace(Table(l), ";SortRule=DESC", ""); }},
    {"another protocol named", kDataProtocol, kDataProtocol, [](L& l, R&) { return Replace(Table(l), "ocol=QMX", "ocol=TLV"); }},
    {"no protocol named any more", kDataProtocol, kDataProtocol,
     [](L& l, R&) { return Replace(Table(l), ";DataProtocol=TLV", ""); }},
    {"one sort field less", kSortFields, kSortFields, DropSortField},
    {"one more sort field", kSortFields, kSortFields, AddSortField},
    {"sort fields in another order", kSortAttribute, kSortAttribute, SwapSortFields},
    {"attributes of a generic table", kSucceeded, kSucceeded,
     [](L& l, R&) { return SetAttributes(Table(l), HasNoAttributes(Table(l)), "TableType=GENERIC"); }},
    {"attributes of a list", kNotDeclaredType, kNotDeclaredType,
     [](L& l, R&) { return SetAttributes(Table(l), HasNoAttributes(Table(l)), "TableType=LIST;ListNum=10"); }},
    {"attributes of a sorted list", kToSortList, kToSortList, BecomeSortList},

    {"a higher library version", kSucceeded, kSucceeded, [](L& l, R&) { return ++l.version > 0; }},
    {"a lower library version", kLibVersion, kLibVersion, [](L& l, R&) { return --l.version >= -1; }},
    {"from the record format to TLV", kSucceeded, kEnd, ToTlv},
    {"from TLV to the record format", kEnd, kTlvToQmx, ToRecordFormat},
    {"another name of the table", kNoTable, kNoTable, RenameTable},
};

}  // namespace

std::span<const Mutation> TableMutations() { return kMutations; }

}  // namespace model
