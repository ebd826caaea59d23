// Stand-ins for every operation outside the checker: the metadata library, CheckTable, SplitString and RealCmpVersion. The
// checker linked only against these shows what it needs from outside, and gets results that real libraries never return: entries
// that cannot be read, versions that fail the second time, texts that are formats.
//
// A library here has two parts. Its memory contains only the members that the checker may read directly; every other byte is
// poisoned. The results of the operations are kept separately, in facts that a test sets. Every call is recorded in
// World::calls.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "qmx/qmx_types.h"

namespace stand_ins {

struct EntryFacts {
  std::optional<std::string> name = {};
  std::int32_t id = -1;
  int version = 1;
  int type = 7;
  std::size_t unit_size = 4;
  int count = 1;
  bool refer = false;
  LPQMXMETA type_meta = nullptr;
  std::optional<std::string> attr2 = std::nullopt;
  std::uint8_t db_flag = 0;
};

// No entry: qmx_get_entry_by_index returns null for it.
inline constexpr std::nullopt_t kNull = std::nullopt;

struct MetaFacts {
  std::optional<std::string> name;
  std::vector<LPQMXMETAENTRY> entries;
  int splittable_result = 0;
  std::string splittable_text;
};

// The results of CheckTable for a library's tables.
struct TableFacts {
  int result = -46;
  int type = 0;
  int number = 0;
  int sort_fields = 0;
  int sort_rule = 0;
  std::string protocol = {};
  std::string text = {};
};

// One library. Its memory has a fixed size, far more than any test uses.
class FakeLibrary {
 public:
  // `versions` are returned one after the other; the last one is repeated.
  explicit FakeLibrary(std::string label, std::vector<int> versions = {5}, std::int64_t flag = 0);
  ~FakeLibrary();
  FakeLibrary(const FakeLibrary&) = delete;
  FakeLibrary& operator=(const FakeLibrary&) = delete;

  LPQMXMETALIB Lib() { return reinterpret_cast<LPQMXMETALIB>(memory_.data()); }
  LPQMXMETA AddMeta(std::optional<std::string> name, const std::vector<std::optional<EntryFacts>>& entries);
  void SetKey(LPQMXMETA meta, const std::vector<int>& entries);
  void SetSplittableKey(LPQMXMETA meta, std::string text, int result = 0);
  void AddIndex(LPQMXMETA meta, const std::string& name, const std::vector<int>& entries);

  const std::string label;  // "old" or "new", in the recorded calls
  TableFacts table;
  std::vector<int> versions;

 private:
  std::int64_t Offset(const void* place) const;  // relative to the data area
  template <typename Record>
  Record* Allocate(std::size_t count = 1);

  std::vector<std::uint64_t> memory_;
  std::size_t used_;
  std::vector<LPQMXMETA> metas_;
  std::vector<LPQMXMETAENTRY> entries_;
};

struct World {
  std::map<LPQMXMETALIB, FakeLibrary*> libraries;
  std::map<LPQMXMETA, MetaFacts> metas;
  std::map<LPQMXMETAENTRY, EntryFacts> entries;
  int type_of_null = -1;                   // the result of qmx_get_entry_type for a null entry
  std::vector<std::string> whitelist;      // the result of SplitString
  std::map<std::string, int> comparisons;  // the results of RealCmpVersion, by its second argument
  std::vector<std::string> calls;

  // The recorded calls that begin with these words.
  std::vector<std::string> CallsOf(const std::string& words) const;
};

// The only world of the program; each test begins with a new one.
World& TheWorld();

}  // namespace stand_ins
