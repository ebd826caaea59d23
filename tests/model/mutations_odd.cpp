// Changes that no schema file can express, and changes that make an invalid library. The model and the checker must agree on the
// result; nothing else is asserted.
#include "model/edits.h"
#include "model/mutations.h"

namespace model {
namespace {

using enum TextId;

const std::vector<std::string> kOddNames = {"",
                                            "9lives",
                                            "a-b",
                                            "two words",
                                            std::string(31, 'n'),
                                            std::string(32, 'n'),
                                            std::string(40, 'x') + "-",
                                            "caf\xc3\xa9",
                                            "100%s%n",
                                            "_",
                                            "{entry}",
                                            std::string(700, 'q'),
                                            std::string(1100, 'r')};

bool OddName(LibraryDecl& library, Random& random) {
  MetaDecl* const meta = Anything(library, random);
  const FieldDecl* const field = AnyField(meta, random, IsAny);
  if (field == nullptr) return false;
  RenameField(field->name, random.Of(kOddNames), *meta);
  return true;
}

// So long that the text of a splittable key with two of them does not fit.
bool LongKeyNames(LibraryDecl& library, Random& random) {
  MetaDecl* const table = Table(library);
  if (table == nullptr || table->key.size() < 2) return false;
  for (std::size_t i = 0; i < 2; ++i) {
    const std::string name = table->key[i];
    RenameField(name, name.substr(0, 2) + std::string(520, static_cast<char>('a' + i)), *table);
  }
  table->split = table->key;
  if (random.OneIn(2)) table->split.resize(1);
  return true;
}

bool OddMetaName(LibraryDecl& library, Random& random) {
  const MetaDecl* const structure = Inside(library, random);
  if (structure == nullptr) return false;
  RenameMeta(structure->name, random.OneIn(2) ? "%s box" : std::string(1050, 'b'), library);
  return true;
}

bool Duplicate(LibraryDecl& library, Random& random) {
  MetaDecl* const meta = Anything(library, random);
  const FieldDecl* const field = AnyField(meta, random, IsAny);
  if (field == nullptr) return false;
  FieldDecl twin = *field;
  if (random.OneIn(2)) twin.id = 400;
  if (random.OneIn(2)) twin.attr2 = random.OneIn(2) ? "" : "twin";
  if (random.OneIn(2)) twin.refer.clear();
  const auto place = static_cast<std::ptrdiff_t>(random.Below(meta->fields.size() + 1));
  meta->fields.insert(meta->fields.begin() + place, std::move(twin));
  return true;
}

// Adds another name with the id of a key field, before or after it.
bool DuplicateKeyId(LibraryDecl& library, Random& random) {
  MetaDecl* const table = Table(library);
  const FieldDecl* const field = AnyField(table, random, IsKey);
  if (field == nullptr) return false;
  FieldDecl twin = *field;
  twin.name = "same_id";
  table->fields.insert(random.OneIn(3) ? table->fields.end() : table->fields.begin(), std::move(twin));
  return true;
}

bool Empty(MetaDecl* meta) {
  if (meta == nullptr) return false;
  meta->fields.clear();
  meta->key.clear();
  meta->split.clear();
  meta->indexes.clear();
  return true;
}

bool TwiceInKey(LibraryDecl& library, Random&) {
  MetaDecl* const table = Table(library);
  if (table == nullptr || table->key.size() < 2) return false;
  table->key.back() = table->key.front();
  return true;
}

bool OddKeyList(LibraryDecl& library, Random& random) {
  MetaDecl* const table = Table(library);
  if (table == nullptr) return false;
  table->without_key_list = random.OneIn(2);
  const std::size_t most = table->without_key_list ? 5 : table->key.size() + 1;
  const int least = random.OneIn(5) ? -1 : 0;
  table->odd_key_count = static_cast<std::int16_t>(least + static_cast<int>(random.Below(most)));
  return true;
}

// Adds another structure with an existing name, before or after it.
bool TwiceTheMeta(LibraryDecl& library, Random& random) {
  MetaDecl twin = *Anything(library, random);
  twin.fields.insert(twin.fields.begin(), {.name = "twin", .type = "uint8"});
  library.metas.insert(random.OneIn(2) ? library.metas.end() : library.metas.begin(), std::move(twin));
  return true;
}

template <typename Member, typename Value>
bool SetAny(Member FieldDecl::*member, const std::vector<Value>& values, LibraryDecl& library, Random& random) {
  FieldDecl* const field = AnyField(Anything(library, random), random, IsAny);
  if (field == nullptr) return false;
  field->*member = random.Of(values);
  return true;
}

bool TwiceTheIndex(LibraryDecl& library, Random& random) {
  MetaDecl* const table = Table(library);
  if (table == nullptr || table->indexes.empty() || table->fields.empty()) return false;
  IndexDecl twin = random.Of(table->indexes);
  if (random.OneIn(2)) twin.columns.clear();
  if (random.OneIn(2)) twin.columns.push_back(table->fields[random.Below(table->fields.size())].name);
  table->indexes.push_back(std::move(twin));
  return true;
}

using L = LibraryDecl;
using R = Random;

const std::vector<bool> kYes = {true};
const std::vector<int> kNoId = {-1};
const std::vector<std::uint64_t> kSizes = {0, 1, 131072, 131073, 10485761, UINT64_MAX, UINT64_MAX / 2 + 1};
const std::vector<std::int32_t> kCounts = {0, -1, 1, 2, INT32_MAX, INT32_MIN, 65536};
const std::vector<std::uint8_t> kFlags = {0, 0x10, 0xff, 0xef, 0x01};

constexpr Mutation kMutations[] = {
    {"an odd name", kEnd, kEnd, OddName},
    {"long key names", kEnd, kEnd, LongKeyNames},
    {"an odd name of a structure", kEnd, kEnd, OddMetaName},
    {"a field twice", kEnd, kEnd, Duplicate},
    {"the id of a key field twice", kEnd, kEnd, DuplicateKeyId},
    {"an empty table", kEnd, kEnd, [](L& l, R& r) { return r.OneIn(4) && Empty(Table(l)); }},
    {"an empty structure", kEnd, kEnd, [](L& l, R& r) { return Empty(Inside(l, r)); }},
    {"a key field twice in the key", kEnd, kEnd, TwiceInKey},
    {"an odd list of key fields", kEnd, kEnd, OddKeyList},
    {"an index name twice", kEnd, kEnd, TwiceTheIndex},
    {"a structure's name twice", kEnd, kEnd, TwiceTheMeta},
    {"a field without a name", kEnd, kEnd, [](L& l, R& r) { return SetAny(&FieldDecl::nameless, kYes, l, r); }},
    {"a composite field without a structure", kEnd, kEnd,
     [](L& l, R& r) { return SetAny(&FieldDecl::without_structure, kYes, l, r); }},
    {"an odd unit size", kEnd, kEnd, [](L& l, R& r) { return SetAny(&FieldDecl::odd_unit_size, kSizes, l, r); }},
    {"an odd count", kEnd, kEnd, [](L& l, R& r) { return SetAny(&FieldDecl::odd_count, kCounts, l, r); }},
    {"odd flags", kEnd, kEnd, [](L& l, R& r) { return SetAny(&FieldDecl::odd_flags, kFlags, l, r); }},
    {"no id", kEnd, kEnd, [](L& l, R& r) { return SetAny(&FieldDecl::id, kNoId, l, r); }},
    {"a flag word", kEnd, kEnd, [](L& l, R& r) { return l.flag = static_cast<int>(r.Below(8)) - 4, true; }},
    {"a library without a version", kEnd, kEnd, [](L& l, R&) { return l.version = -1, true; }},
};

}  // namespace

std::span<const Mutation> OddMutations() { return kMutations; }

}  // namespace model
