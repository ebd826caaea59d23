// Makes random libraries and calls. Changes of libraries are in mutations_*.cpp. Tested by model_test.cpp, which requires that
// every text of the checker occurs.
#include "model/random_scenario.h"

#include <algorithm>

#include "model/mutations.h"

namespace model {
namespace {

const std::vector<std::int64_t> kFlags = {0, 0, 0, 0, 1, 1, 1, 1, -1};
const std::vector<std::int64_t> kOddFlags = {2, 3, -2, -3, 5};
const std::vector<std::uint64_t> kLargeSizes = {131071, 131072, 131073, 262144, 262145, 10485760, 10485761};
const std::vector<std::string> kIntegerTypes = {"int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64"};
const std::vector<std::string> kOtherTypes = {"float", "double", "bool", "datetime", "string", "bytes"};

FieldDecl RandomField(const std::string& name, const std::vector<std::string>& structures, int version, Random& random) {
  FieldDecl field{.name = name};
  field.type =
      !structures.empty() && random.OneIn(3) ? random.Of(structures) : random.Of(random.OneIn(2) ? kIntegerTypes : kOtherTypes);
  const bool has_size = field.type == "string" || field.type == "bytes";
  if (has_size) field.size = random.OneIn(8) ? random.Of(kLargeSizes) : 2 + random.Below(40);
  field.version = 1 + static_cast<int>(random.Below(static_cast<std::size_t>(version)));
  if (random.OneIn(3)) field.count = 2 + static_cast<int>(random.Below(7));
  if (random.OneIn(60)) field.count = 131073;
  if (random.OneIn(8)) field.attr2 = random.OneIn(3) ? "" : "pii";
  return field;
}

bool IsOneOf(const std::vector<std::string>& types, const FieldDecl& field) {
  return std::ranges::find(types, field.type) != types.end();
}

bool IsSimple(const FieldDecl& field) { return IsOneOf(kIntegerTypes, field) || IsOneOf(kOtherTypes, field); }
bool CanHoldACount(const FieldDecl& field) { return field.count == 1 && IsOneOf(kIntegerTypes, field); }

void AddFields(std::size_t number, const std::string& prefix, const std::vector<std::string>& structures, int version,
               MetaDecl& meta, Random& random) {
  for (std::size_t i = 0; i < number; ++i) {
    FieldDecl field = RandomField(prefix + std::to_string(i), structures, version, random);
    field.id = static_cast<int>(meta.fields.size());  // from 0
    if (field.count > 1 && !meta.fields.empty() && random.OneIn(2)) {
      const FieldDecl& before = random.Of(meta.fields);
      if (CanHoldACount(before)) field.refer = before.name;
    }
    meta.fields.push_back(std::move(field));
  }
}

// Mostly a few; sometimes so many that the checker uses an index instead of a linear search.
std::size_t RandomWidth(std::size_t few, Random& random) {
  return random.OneIn(40) ? 15 + random.Below(60) : 1 + random.Below(few);
}

void AddKeys(MetaDecl& table, Random& random) {
  for (const FieldDecl& field : table.fields) {
    const bool is_wanted = table.key.empty() || (table.key.size() < 3 && random.OneIn(2));
    if (is_wanted && IsSimple(field)) table.key.push_back(field.name);
  }
  if (random.OneIn(2)) return;
  table.split = table.key;
  table.split.resize(1 + random.Below(table.key.size()));
}

void AddIndexes(MetaDecl& table, Random& random) {
  const std::size_t number = random.Below(3);
  for (std::size_t i = 0; i < number; ++i) {
    IndexDecl index{"i" + std::to_string(i), {}};
    index.columns.resize(1 + random.Below(3));
    for (std::string& column : index.columns) column = random.Of(table.fields).name;
    table.indexes.push_back(std::move(index));
  }
}

void AddSortFields(std::size_t number, MetaDecl& table, Random& random) {
  for (std::size_t i = 0; i < number; ++i) {
    table.fields.push_back({.name = "o" + std::to_string(i), .id = 500 + static_cast<int>(i)});
    table.fields.back().type = random.Of(kIntegerTypes);
    table.fields.back().attr2 = "sort=" + std::to_string(i + 1);
  }
}

// Makes it a table of a random type: the attributes, and the fields that they refer to.
void AddKind(MetaDecl& table, Random& random) {
  const std::string protocol = random.OneIn(2) ? "" : random.OneIn(2) ? ";DataProtocol=QMX" : ";DataProtocol=TLV";
  const std::string rule = random.OneIn(2) ? "" : random.OneIn(2) ? ";SortRule=INSC" : ";SortRule=DESC";
  switch (random.Below(5)) {
    case 0:
      table.attr = "TableType=GENERIC" + protocol;
      break;
    case 1:
      table.attr = "TableType=LIST;ListNum=10" + rule + protocol;
      table.indexes.clear();
      break;
    case 2:
      table.attr = "ListNum=10" + rule + ";TableType=SORTLIST" + protocol;
      table.indexes.clear();
      AddSortFields(1 + random.Below(4), table, random);
      break;
    case 3:
      if (random.OneIn(2)) table.attr = random.Of<std::string>({"", "ListNum=8", "DataProtocol=TLV", "SortRule=DESC"});
      break;
    default:
      break;
  }
}

MetaDecl RandomTable(const std::string& name, const std::vector<std::string>& structures, int version, Random& random) {
  MetaDecl table{.name = name};
  const bool is_text = random.OneIn(2);
  table.fields.push_back({.name = "k", .type = is_text ? "string" : "uint64", .size = is_text ? 16U : 0U, .id = 900});
  AddFields(RandomWidth(6, random), "f", structures, version, table, random);
  AddKeys(table, random);
  AddIndexes(table, random);
  AddKind(table, random);
  return table;
}

bool IsList(const MetaDecl& table) { return table.attr && table.attr->find("LIST") != std::string::npos; }

const MetaDecl* FindTable(const LibraryDecl& library) {
  const auto found = std::ranges::find(library.metas, "t", &MetaDecl::name);
  return found == library.metas.end() ? nullptr : &*found;
}

Name RandomTableName(Random& random) {
  if (random.OneIn(150)) return std::nullopt;
  if (random.OneIn(150)) return random.Of<std::string>({"", "none", "s0", "%s%n", std::string(1100, 'z')});
  return random.OneIn(20) ? "u" : "t";
}

std::string RandomWhitelist(const LibraryDecl& library, Random& random) {
  std::string text = random.OneIn(3) ? ";" : "";
  const MetaDecl* const table = FindTable(library);
  if (table == nullptr || random.OneIn(3)) return text;
  for (const FieldDecl& field : table->fields) {
    if (!random.OneIn(4)) text += field.name + (random.OneIn(8) ? ";;" : ";");
  }
  return text;
}

const std::vector<std::string> kServers = {"3.28.9",   "3.29.0",  "3.29", "3.29.0.0", "3.38.99",    "3.39.0",
                                           "3.39.0.1", "3.039.0", "4",    "2.99",     "3.29.0-rc1", "99999999999999999999.1",
                                           "x",        ".",       "3..",  "03.39",    "3.x.5",      "%s",
                                           "3.40",     "10.0.0"};

Call RandomQuestion(const LibraryDecl& old_library, const LibraryDecl& new_library, Random& random) {
  Call call = MainCheckCall(random.OneIn(3) ? new_library : old_library);
  if (random.OneIn(2)) call.operation = static_cast<Operation>(random.Below(static_cast<std::size_t>(Operation::kEnd)));
  call.old_table = RandomTableName(random);
  call.new_table = random.OneIn(10) ? RandomTableName(random) : call.old_table;
  call.without_old = random.OneIn(150);
  call.without_new = random.OneIn(150);
  if (random.OneIn(25)) call.table_type = random.Of<int>({0, 1, 2, -1, 7});
  if (random.OneIn(5)) call.init_version = 1;
  if (random.OneIn(40)) call.init_version = random.Of<int>({0, 2, 3, -1});
  if (random.OneIn(2)) call.server = random.Of(kServers);
  call.whitelist = RandomWhitelist(new_library, random);
  if (random.OneIn(4)) call.list_num = random.Of<int>({0, 9, 11, -1});
  return call;
}

// Structures that contain each other at several depths, some of them empty on one side: the checker skips pairs of structures
// that it has checked, and each empty structure leaves its own text in the buffer.
LibraryDecl NestedLibrary(Random& random) {
  LibraryDecl library;
  library.version = 0;  // below that of the fields, so that fields may be missing on the old side
  library.flag = random.Of(kFlags);
  std::vector<std::string> structures;
  const auto add = [&](const std::string& name, std::size_t fields) {
    MetaDecl meta{.name = name};
    for (std::size_t i = 0; i < fields; ++i) {
      const bool is_structure = !structures.empty() && !random.OneIn(3);
      meta.fields.push_back({.name = "m" + std::to_string(i), .type = is_structure ? random.Of(structures) : "int32"});
      meta.fields.back().id = static_cast<int>(i);
    }
    library.metas.push_back(std::move(meta));
  };
  for (std::size_t i = 0; i < 4; ++i) {
    add("s" + std::to_string(i), 1 + random.Below(2));
    structures.push_back("s" + std::to_string(i));
  }
  add("t", 4 + random.Below(4));
  MetaDecl& table = library.metas.back();
  table.fields.push_back({.name = "k", .type = "int32", .id = 900});
  table.key = {"k"};
  return library;
}

Scenario NestedScenario(Random& random) {
  Scenario scenario;
  scenario.old_library = NestedLibrary(random);
  scenario.new_library = scenario.old_library;
  for (MetaDecl& meta : scenario.new_library.metas) {
    if (meta.key.empty() && random.OneIn(2)) meta.fields.clear();
  }
  if (random.OneIn(2)) std::swap(scenario.old_library, scenario.new_library);
  // Pairs whose check reached the log are never skipped.
  scenario.gate.absent = true;
  scenario.calls = RandomCalls(scenario.old_library, scenario.new_library, random);
  // These compare structures and return 0 with a text in the buffer.
  for (Call& call : scenario.calls) call.operation = random.OneIn(2) ? Operation::kCompatible : Operation::kValues;
  return scenario;
}

}  // namespace

LibraryDecl RandomLibrary(LibraryKind kind, Random& random) {
  LibraryDecl library;
  library.version = 1 + static_cast<int>(random.Below(6));
  library.flag = random.Of(kFlags);
  std::vector<std::string> structures;
  const std::size_t number = random.OneIn(20) ? 6 : random.Below(4);
  for (std::size_t i = 0; i < number; ++i) {
    MetaDecl structure{.name = "s" + std::to_string(i), .is_union = random.OneIn(4)};
    AddFields(RandomWidth(4, random), "m", structures, library.version, structure, random);
    structures.push_back(structure.name);
    library.metas.push_back(std::move(structure));
  }
  const auto place = static_cast<std::ptrdiff_t>(random.Below(library.metas.size() + 1));
  library.metas.insert(library.metas.begin() + place, RandomTable("t", structures, library.version, random));
  if (random.OneIn(6)) library.metas.push_back(RandomTable("u", structures, library.version, random));
  if (kind == LibraryKind::kValid) return library;
  if (random.OneIn(20)) library.flag = random.Of(kOddFlags);
  while (random.OneIn(3)) ApplyAny(OddMutations(), library, random);
  return library;
}

Call MainCheckCall(const LibraryDecl& library) {
  Call call{.init_version = library.flag != -1 && (library.flag & 1) == 1 ? 2 : 1, .list_num = 10};
  const MetaDecl* const table = FindTable(library);
  call.table_type = table != nullptr && IsList(*table) ? 1 : 0;
  return call;
}

std::vector<Call> RandomCalls(const LibraryDecl& old_library, const LibraryDecl& new_library, Random& random) {
  std::vector<Call> calls;
  do {
    calls.push_back(RandomQuestion(old_library, new_library, random));
  } while (random.OneIn(2));
  return calls;
}

LogGate RandomGate(Random& random) {
  const std::vector<int> bounds = {-1, 0, 299, 300, 301, 399, 400, 401, 599, 600, 601};
  LogGate gate;
  gate.absent = random.OneIn(8);
  if (random.OneIn(5)) gate.high = random.Of(bounds);
  if (random.OneIn(5)) gate.low = random.Of(bounds);
  gate.can_write = !random.OneIn(30);
  return gate;
}

Scenario RandomScenario(Random& random) {
  if (random.OneIn(20)) return NestedScenario(random);
  Scenario scenario;
  scenario.old_library = RandomLibrary(random.OneIn(3) ? LibraryKind::kOdd : LibraryKind::kValid, random);
  scenario.new_library = scenario.old_library;
  std::size_t changes = random.OneIn(2) ? 1 : random.Below(6);
  while (changes-- > 0) {
    const std::size_t kind = random.Below(10);
    const auto mutations = kind < 5 ? FieldMutations() : kind < 8 ? TableMutations() : OddMutations();
    ApplyAny(mutations, scenario.new_library, random);
  }
  if (random.OneIn(5)) std::swap(scenario.old_library, scenario.new_library);
  scenario.gate = RandomGate(random);
  scenario.calls = RandomCalls(scenario.old_library, scenario.new_library, random);
  return scenario;
}

}  // namespace model
