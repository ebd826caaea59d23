// Makes random changes, allowed ones and refused ones. The builder accepts both libraries.
#include "codec/random_change.h"

#include <algorithm>
#include <utility>

namespace codec {
namespace {

using qmx::Protocol;
using support::Field;
using support::Library;
using support::Table;

constexpr const char* kSimple[] = {"int8",   "uint8", "int16",  "uint16", "int32",    "uint32", "int64",
                                   "uint64", "float", "double", "bool",   "datetime", "string", "bytes"};

bool IsIntegerName(const std::string& type) { return type.starts_with("int") || type.starts_with("uint"); }

bool HasSize(const Field& field) { return field.type == "string" || field.type == "bytes"; }

bool Has(const Table& table, const std::string& name) {
  return std::ranges::find(table.fields, name, &Field::name) != table.fields.end();
}

class Maker {
 public:
  explicit Maker(std::mt19937_64& random) : random_(random) {}

  Change Make() {
    Change change;
    change.old_lib = MakeLibrary();
    change.new_lib = change.old_lib;
    change.new_lib.version = OneIn(4) ? 5 : 7;
    for (std::size_t edits = 1 + Below(3); edits > 0; --edits) Edit(change.new_lib);
    SetProtocols(change);
    SetKind(change);
    for (Table& table : change.new_lib.tables) RemoveInvalid(table);
    return change;
  }

 private:
  std::size_t Below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_); }
  bool OneIn(std::size_t n) { return Below(n) == 0; }
  template <class List>
  auto& Any(List& list) {
    return list[Below(std::size(list))];
  }

  // A structure comes before those that embed it; "t" is the last.
  Library MakeLibrary() {
    Library library = support::Of({});
    const std::size_t structures = Below(4);
    for (std::size_t i = 0; i <= structures; ++i) {
      library.tables.push_back(MakeTable(i == structures ? "t" : "s" + std::to_string(i), i));
    }
    Table& table = library.tables.back();
    if (OneIn(4)) std::ranges::for_each(table.key, [&](const std::string& name) { table.split.push_back(name); });
    if (OneIn(4)) table.indexes.push_back({"i", {table.fields.back().name.c_str()}});
    return library;
  }

  Table MakeTable(const std::string& name, std::size_t structures_before) {
    Table table{.name = name, .kind = OneIn(name == "t" ? 40 : 4) ? QMX_TYPE_UNION : QMX_TYPE_STRUCT};
    const std::size_t fields = 1 + Below(5);
    for (std::size_t i = 0; i < fields; ++i) {
      Field field = MakeField(structures_before);
      field.name = "f" + std::to_string(i);
      field.id = static_cast<int>(i) + 1;
      table.fields.push_back(field);
      if (name == "t" && OneIn(field.type.starts_with('s') && !HasSize(field) ? 12 : 3)) table.key.push_back(field.name);
    }
    if (OneIn(2)) {
      if (IsIntegerName(table.fields.front().type)) table.fields.front().count = 1;
      Refer(table, table.fields.back());
    }
    RemoveInvalid(table);
    return table;
  }

  Field MakeField(std::size_t structures_before) {
    Field field;
    field.type = structures_before > 0 && OneIn(3) ? "s" + std::to_string(Below(structures_before)) : Any(kSimple);
    if (HasSize(field)) field.size = 1 + Below(12);
    field.version = OneIn(12) ? 6 : 1 + static_cast<int>(Below(5));
    if (OneIn(4)) field.count = 2 + static_cast<int>(Below(3));
    if (OneIn(8)) field.attr2 = "x";
    return field;
  }

  // Any integer before a field may count it.
  void Refer(Table& table, Field& field) {
    std::vector<std::string> counters;
    for (const Field* one = table.fields.data(); one != &field; ++one) {
      if (IsIntegerName(one->type) && one->count == 1) counters.push_back(one->name);
    }
    if (!counters.empty()) field.refer = Any(counters);
  }

  void Edit(Library& library) {
    using Action = void (Maker::*)(Library&, Table&, Field&);
    static constexpr Action kEdits[] = {
        &Maker::AddField,      &Maker::AddField,    &Maker::AddField,  &Maker::AddField,  &Maker::Resize,    &Maker::Resize,
        &Maker::Resize,        &Maker::GrowCount,   &Maker::GrowCount, &Maker::GrowCount, &Maker::GrowCount, &Maker::Retype,
        &Maker::Rename,        &Maker::Remove,      &Maker::Replace,   &Maker::Swap,      &Maker::ChangeId,  &Maker::EditKey,
        &Maker::ChangeVersion, &Maker::ChangeRefer, &Maker::EditTable, &Maker::ChangeKind};
    Table& table = OneIn(2) ? library.tables.back() : Any(library.tables);
    // Choose key fields less often: nearly every change of one is refused.
    Field* field = &Any(table.fields);
    if (std::ranges::find(table.key, field->name) != table.key.end()) field = &Any(table.fields);
    (this->*Any(kEdits))(library, table, *field);
  }

  void AddField(Library& library, Table& table, Field& before) {
    Field field = MakeField(static_cast<std::size_t>(&table - library.tables.data()));
    field.name = "g" + std::to_string(++added_);
    field.id = 20 + added_;
    field.version = OneIn(5) ? 5 : 6 + static_cast<int>(Below(2));
    if (OneIn(4)) field.refer = before.name;
    const auto place = OneIn(2) ? table.fields.end() : table.fields.begin() + (&before - table.fields.data());
    table.fields.insert(place, field);
  }

  void Resize(Library&, Table& table, Field&) {
    for (Field& field : table.fields) {
      if (HasSize(field)) field.size = OneIn(4) ? 1 + field.size / 2 : field.size + Below(9);
    }
  }

  void GrowCount(Library&, Table& table, Field& any) {
    const auto counted = std::ranges::find_if(table.fields, [](const Field& field) { return !field.refer.empty(); });
    if (counted == table.fields.end() && !OneIn(6)) return;
    Field& field = counted == table.fields.end() ? any : *counted;
    field.count = OneIn(4) ? 1 + field.count / 2 : field.count + 1 + static_cast<int>(Below(3));
  }

  void Retype(Library& library, Table& table, Field& field) {
    const Field other = MakeField(static_cast<std::size_t>(&table - library.tables.data()));
    field.type = other.type;
    field.size = other.size;
  }

  void Rename(Library&, Table& table, Field& field) {
    const std::string name = "h" + std::to_string(++added_);
    for (Field& one : table.fields) {
      if (one.refer == field.name) one.refer = name;
    }
    std::ranges::replace(table.key, field.name, name);
    field.name = name;
  }

  void Remove(Library&, Table& table, Field& field) {
    if (table.fields.size() > 1) table.fields.erase(table.fields.begin() + (&field - table.fields.data()));
  }

  // Replaces a field by another one with the same type.
  void Replace(Library& library, Table& table, Field& field) {
    Rename(library, table, field);
    field.id = 20 + added_;
    field.version = 6;
  }

  void Swap(Library&, Table& table, Field& field) { std::swap(field, Any(table.fields)); }

  void ChangeId(Library&, Table& table, Field& field) {
    if (OneIn(2))
      std::swap(field.id, Any(table.fields).id);
    else
      field.id = 20 + ++added_;
  }

  void ChangeVersion(Library&, Table&, Field& field) { field.version = 1 + static_cast<int>(Below(7)); }

  void ChangeRefer(Library&, Table& table, Field& any) {
    const auto counted = std::ranges::find_if(table.fields, [](const Field& field) { return !field.refer.empty(); });
    Field& field = counted == table.fields.end() ? any : *counted;
    if (field.refer.empty() || OneIn(2))
      Refer(table, field);
    else
      field.refer.clear();
  }

  void EditKey(Library& library, Table&, Field&) {
    Table& table = library.tables.back();
    std::vector<std::string>& key = OneIn(3) && !table.split.empty() ? table.split : table.key;
    if (key.empty()) return;
    switch (Below(5)) {
      case 0:
        Any(key) = Any(table.fields).name;
        break;
      case 1:
        key.pop_back();
        break;
      case 2:
        table.split.push_back(Any(key));
        break;
      case 3:
        std::swap(Any(key), Any(key));
        break;
      default:
        Any(key) = Any(key);
    }
  }

  // Changes something that is not part of a record.
  void EditTable(Library& library, Table&, Field& field) {
    Table& table = library.tables.back();
    if (OneIn(2))
      field.attr2 = "y";
    else if (table.indexes.empty())
      table.indexes.push_back({"i", {table.fields.front().name.c_str()}});
    else
      table.indexes.clear();
  }

  void ChangeKind(Library&, Table& table, Field&) {
    if (table.name != "t" || OneIn(3)) table.kind = table.kind == QMX_TYPE_UNION ? QMX_TYPE_STRUCT : QMX_TYPE_UNION;
  }

  void SetProtocols(Change& change) {
    const std::size_t way = Below(4);
    change.old_lib.protocol = way < 2 ? Protocol::kQmx : Protocol::kTlv;
    change.new_lib.protocol = way < 1 ? Protocol::kQmx : Protocol::kTlv;
    change.created_in = way < 3 ? 1 : 2;
  }

  void SetKind(Change& change) {
    if (!OneIn(3) || !change.old_lib.tables.back().indexes.empty()) return;
    change.table_type = 1;
    change.list_num = 8;
    change.old_lib.tables.back().attr = "TableType=LIST;ListNum=8";
    change.new_lib.tables.back().attr = OneIn(3) ? "TableType=LIST;ListNum=9" : "TableType=LIST;ListNum=8";
  }

  // Removes what the builder would refuse: unknown names, and a refer property without an integer before it. A counted field is
  // not older than its counter, and fields of a union are not counted.
  static void RemoveInvalid(Table& table) {
    const auto is_gone = [&](const std::string& name) { return !Has(table, name); };
    std::erase_if(table.key, is_gone);
    std::erase_if(table.split, is_gone);
    std::erase_if(table.indexes, [&](const support::Index& index) { return is_gone(index.columns.front().entry); });
    if (table.name == "t" && table.key.empty()) table.key.push_back(table.fields.front().name);
    for (auto field = table.fields.begin(); field != table.fields.end(); ++field) {
      if (field->refer.empty()) continue;
      const auto counter = std::ranges::find(table.fields.begin(), field, field->refer, &Field::name);
      if (counter == field || !IsIntegerName(counter->type) || counter->count != 1 || table.kind == QMX_TYPE_UNION) {
        field->refer.clear();
      } else if (counter->version > field->version) {
        field->version = counter->version;
      }
    }
  }

  std::mt19937_64& random_;
  int added_ = 0;
};

}  // namespace

Change RandomChange(std::mt19937_64& random) { return Maker(random).Make(); }

}  // namespace codec
