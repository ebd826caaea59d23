// The checker on pairs of libraries that are made of the input, so that nearly every input is a pair: the builder is asked to lay
// out what the bytes say, then an edited copy of it.
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/ask_all.h"
#include "fuzz/input.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_builder.h"

namespace {

constexpr int kMaxMetas = 4;
constexpr int kMaxEntries = 12;
constexpr const char* kNames[] = {"uid", "zone", "n",      "note",  "items", "a",
                                  "a_1", "",     "wei%rd", "naïve", "_",     "name_that_is_longer_than_the_longest_allowed_one"};
constexpr const char* kMetas[] = {"t", "u", "v", "w"};
constexpr const char* kTypes[] = {"int8",   "uint8",  "int16", "uint16",   "int32", "uint32", "int64", "uint64", "float",
                                  "double", "string", "bytes", "datetime", "t",     "u",      "v",     "w"};
constexpr const char* kAttributes[] = {"TableType=GENERIC",
                                       "TableType=LIST;ListNum=8",
                                       "TableType=SORTLIST;ListNum=8;SortFieldNum=1",
                                       "DataProtocol=TLV;TableType=GENERIC",
                                       "TableType=LIST;ListNum=x",
                                       ";;=%s="};

template <std::size_t size>
const char* Pick(fuzz::Input& input, const char* const (&names)[size]) {
  return names[input.Below(static_cast<int>(size))];
}

struct Entry {
  std::string name;
  std::string type;
  std::uint64_t size = 0;
  std::int32_t id = -1;
  std::int32_t version = 1;
  std::int32_t count = 1;
  std::string refer;
  bool has_sort = false;
};

struct Meta {
  std::string name;
  bool is_union = false;
  int attributes = -1;
  std::vector<Entry> entries;
  std::vector<std::string> primary_key;
  std::vector<std::string> splittable_key;
  std::vector<std::string> index;
};

struct Library {
  std::int32_t version = 1;
  qmx::Protocol protocol = qmx::Protocol::kUnset;
  std::vector<Meta> metas;
};

Entry MakeEntry(fuzz::Input& input) {
  Entry entry;
  entry.name = Pick(input, kNames);
  entry.type = Pick(input, kTypes);
  entry.size = static_cast<std::uint32_t>(input.Number());
  entry.id = input.Number();
  entry.version = input.Number();
  entry.count = input.Number();
  if (input.Below(4) == 0) entry.refer = Pick(input, kNames);
  entry.has_sort = input.Below(4) == 0;
  return entry;
}

std::vector<std::string> MakeKey(fuzz::Input& input) {
  std::vector<std::string> key;
  for (int i = input.Below(4); i > 0; --i) key.emplace_back(Pick(input, kNames));
  return key;
}

Meta MakeMeta(fuzz::Input& input, const char* name) {
  Meta meta;
  meta.name = name;
  meta.is_union = input.Below(8) == 0;
  if (input.Below(3) == 0) meta.attributes = input.Below(std::size(kAttributes));
  for (int i = input.Below(kMaxEntries); i > 0; --i) meta.entries.push_back(MakeEntry(input));
  meta.primary_key = MakeKey(input);
  meta.splittable_key = MakeKey(input);
  meta.index = MakeKey(input);
  return meta;
}

Library MakeLibrary(fuzz::Input& input) {
  Library library;
  library.version = input.Number();
  library.protocol = static_cast<qmx::Protocol>(input.Below(3));
  for (int i = 0, count = 1 + input.Below(kMaxMetas); i < count; ++i) library.metas.push_back(MakeMeta(input, kMetas[i]));
  return library;
}

void EditEntry(fuzz::Input& input, Entry& entry) {
  switch (input.Below(8)) {
    case 0:
      entry.name = Pick(input, kNames);
      break;
    case 1:
      entry.type = Pick(input, kTypes);
      break;
    case 2:
      entry.size = static_cast<std::uint32_t>(input.Number());
      break;
    case 3:
      entry.id = input.Number();
      break;
    case 4:
      entry.version = input.Number();
      break;
    case 5:
      entry.count = input.Number();
      break;
    case 6:
      entry.refer = Pick(input, kNames);
      break;
    default:
      entry.has_sort = !entry.has_sort;
      break;
  }
}

void EditMeta(fuzz::Input& input, Meta& meta) {
  const auto at = [&] { return meta.entries.begin() + input.Below(static_cast<int>(meta.entries.size())); };
  switch (input.Below(8)) {
    case 0:
      meta.entries.push_back(MakeEntry(input));
      break;
    case 1:
      if (!meta.entries.empty()) meta.entries.erase(at());
      break;
    case 2:
      if (!meta.entries.empty()) std::iter_swap(meta.entries.begin(), at());
      break;
    case 3:
      meta.primary_key = MakeKey(input);
      break;
    case 4:
      meta.splittable_key = MakeKey(input);
      break;
    case 5:
      meta.index = MakeKey(input);
      break;
    case 6:
      meta.attributes = input.Below(std::size(kAttributes));
      break;
    default:
      if (!meta.entries.empty()) EditEntry(input, *at());
      break;
  }
}

Library Edited(fuzz::Input& input, Library library) {
  if (input.Below(4) == 0) library.version = input.Number();
  if (input.Below(8) == 0) library.protocol = static_cast<qmx::Protocol>(input.Below(3));
  for (int i = input.Below(6); i > 0; --i)
    EditMeta(input, library.metas[static_cast<std::size_t>(input.Below(4)) % library.metas.size()]);
  return library;
}

std::optional<qmx::Metalib> Build(const Library& library) {
  qmx::MetalibBuilder builder("fuzz", library.version, library.protocol);
  for (const Meta& meta : library.metas) {
    std::optional<std::string_view> attributes;
    if (meta.attributes >= 0) attributes = kAttributes[meta.attributes];
    builder.AddMeta(meta.name, meta.is_union ? QMX_TYPE_UNION : QMX_TYPE_STRUCT, attributes);
    for (const Entry& entry : meta.entries) {
      qmx::EntryDecl decl{.name = entry.name, .type = entry.type, .size = entry.size};
      decl.id = entry.id;
      decl.version = entry.version;
      decl.count = entry.count;
      decl.refer = entry.refer;
      if (entry.has_sort) decl.customattr2 = "sort=1";
      builder.AddEntry(decl);
    }
    builder.SetPrimaryKey({meta.primary_key.begin(), meta.primary_key.end()});
    builder.SetSplittableKey({meta.splittable_key.begin(), meta.splittable_key.end()});
    std::vector<qmx::ColumnDecl> columns;
    for (const std::string& entry : meta.index) columns.push_back({entry, false});
    if (!columns.empty()) builder.AddIndex("by", columns);
  }
  return builder.Finish().metalib;
}

fuzz::Settings MakeSettings(fuzz::Input& input) {
  static constexpr const char* kVersions[] = {"", "3.28.0", "3.29.0", "3.99"};
  fuzz::Settings settings;
  settings.type = input.Below(4) - 1;
  settings.created_as = input.Below(4);
  settings.server_version = Pick(input, kVersions);
  settings.list_num = input.Number();
  return settings;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const fuzz::Settings settings = MakeSettings(input);
  const Library declared = MakeLibrary(input);
  const auto old_library = Build(declared);
  const auto new_library = Build(Edited(input, declared));
  if (old_library) image::ReadEverything(old_library->get());
  if (!old_library || !new_library) return 0;
  fuzz::AskAll(old_library->get(), new_library->get(), settings);
  return 0;
}
