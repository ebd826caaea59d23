// Makes random pairs of libraries.
#include "linear/random_pair.h"

#include <algorithm>

namespace linear {
namespace {

using support::Field;
using support::Library;
using support::Table;

class Maker {
 public:
  explicit Maker(std::mt19937_64& random) : random_(random) {}

  Pair Make() {
    Pair pair;
    pair.old_lib = MakeLibrary();
    pair.new_lib = pair.old_lib;
    pair.new_lib.version = 6;
    for (int edits = Below(4) - 1; edits > 0; --edits) Edit(pair.new_lib);
    Poke(pair.old_lib);
    if (OneIn(2)) {
      pair.new_lib.pokes = pair.old_lib.pokes;
    } else if (OneIn(2)) {
      Poke(pair.new_lib);
    }
    return pair;
  }

 private:
  int Below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
  bool OneIn(int n) { return Below(n) == 0; }

  // Some longer than what is hashed at once.
  static std::string Name(int number) {
    return (number % 7 == 1 ? "n" : number % 7 == 2 ? "number_" : "name_of_number_") + std::to_string(number);
  }

  // Structures come before what uses them; "t" is the last one and uses any of them, many twice.
  Library MakeLibrary() {
    Library library = support::Of({});
    library.protocol = OneIn(2) ? qmx::Protocol::kTlv : qmx::Protocol::kQmx;
    const int structures = Below(7);
    for (int i = 0; i <= structures; ++i) library.tables.push_back(MakeTable(i == structures ? "t" : "s" + std::to_string(i), i));
    Table& table = library.tables.back();
    const std::string key = table.fields.front().name;
    table.key = {key};
    if (OneIn(3)) MakeIndexes(table);
    return library;
  }

  Table MakeTable(const std::string& name, int structures_before) {
    Table table{.name = name};
    const bool is_long = OneIn(3);
    const int fields = is_long ? 17 + Below(12) : 1 + Below(5);
    const int repeats = OneIn(3) ? 4 : 40;  // the more, the rarer
    for (int i = 0; i < fields; ++i) table.fields.push_back(MakeField(i, repeats));
    for (int composites = Below(5); composites > 0 && structures_before > 0; --composites) {
      table.fields[static_cast<std::size_t>(Below(fields))].type = "s" + std::to_string(Below(structures_before));
    }
    return table;
  }

  Field MakeField(int position, int repeats) {
    Field field{.name = Name(OneIn(repeats) ? Below(position + 1) : position), .type = OneIn(3) ? "uint64" : "int32"};
    field.id = OneIn(repeats) ? Below(position + 2) - 1 : position;
    if (OneIn(12)) field.attr2 = "x";
    return field;
  }

  void MakeIndexes(Table& table) {
    const int indexes = OneIn(2) ? 1 : 20;
    for (int i = 0; i < indexes; ++i) {
      support::Index index{"i" + std::to_string(OneIn(10) ? 0 : i), {}};
      for (const Field& field : table.fields) index.columns.emplace_back(field.name.c_str());
      table.indexes.push_back(index);
    }
  }

  // Whether a key, an index or a poke may name the field.
  static bool IsNamed(const Table& table, const Field& field) {
    return table.name != "t" || !table.indexes.empty() || field.name == table.key.front();
  }

  void Edit(Library& library) {
    Table& table = library.tables[static_cast<std::size_t>(Below(static_cast<int>(library.tables.size())))];
    Field& field = table.fields[static_cast<std::size_t>(Below(static_cast<int>(table.fields.size())))];
    switch (Below(11)) {
      case 0:
        field.version += Below(3);
        break;
      case 1:
        field.id = Below(30) - 1;
        break;
      case 2:
        std::swap(field, table.fields.back());
        break;
      case 3:
        field.count += 60000;
        break;
      case 4:
        field.attr2 = "y";
        break;
      case 5:
        std::ranges::reverse(table.indexes);
        break;
      case 6:
        if (!IsNamed(table, field)) field.name = Name(Below(60));
        break;
      case 7:
        if (!IsNamed(table, field)) table.fields.erase(table.fields.begin() + (&field - table.fields.data()));
        break;
      case 8:
        // Another structure, or the same; it may be met in a pair with another one too.
        if (field.type.starts_with('s')) field.type = "s" + std::to_string(Below(std::stoi(field.type.substr(1)) + 1));
        break;
      default:
        // An added field, mostly one that may be added, at the end or before another.
        table.fields.insert(OneIn(2) ? table.fields.end() : table.fields.begin() + (&field - table.fields.data()),
                            {.name = Name(50 + Below(9)), .id = 50 + Below(9), .version = OneIn(4) ? 5 : 6});
    }
  }

  // Structures that turn out empty, fields without a name or a structure. One poke for each structure: they find fields by name.
  void Poke(Library& library) {
    for (const Table& table : library.tables) {
      if (table.name == "t") continue;
      const std::string name = table.fields[static_cast<std::size_t>(Below(static_cast<int>(table.fields.size())))].name;
      if (OneIn(5)) {
        library.pokes.push_back(support::EntryNumber(table.name, 0));
      } else if (OneIn(9)) {
        library.pokes.push_back(support::NoName(table.name, name));
      } else if (OneIn(15)) {
        library.pokes.push_back(support::NoStructure(table.name, name));
      }
    }
  }

  std::mt19937_64& random_;
};

}  // namespace

Pair RandomPair(std::mt19937_64& random) { return Maker(random).Make(); }

}  // namespace linear
