// Everything that a checker can read from a schema library, as plain values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "qmx/qmx_types.h"

namespace model {

using Name = std::optional<std::string>;  // absent: a null text

struct PlainMeta;

struct PlainEntry {
  Name name;
  int id = -1;
  int version = 0;
  int type = 0;
  const PlainMeta* structure = nullptr;  // of the same library; null if it has none
  std::size_t unit_size = 0;
  int count = 0;
  bool has_refer = false;
  Name attr2;
  bool is_key = false;
};

struct PlainIndex {
  Name name;
  std::vector<Name> columns;
};

struct PlainMeta {
  Name name;
  Name attr;
  bool is_tlv = false;  // the flag of its library
  std::vector<PlainEntry> entries;
  bool has_key = false;  // has members and a list
  int key_count = 0;
  std::vector<Name> key;
  bool has_split = false;
  bool split_is_readable = false;
  std::string split;
  std::vector<PlainIndex> indexes;
};

// Not copyable: entries point to metas.
struct PlainLibrary {
  explicit PlainLibrary(LPQMXMETALIB library);
  PlainLibrary(const PlainLibrary&) = delete;
  PlainLibrary& operator=(const PlainLibrary&) = delete;

  const PlainMeta* Find(const Name& name) const;  // the first one with that name

  int version = 0;
  bool is_tlv = false;
  std::vector<PlainMeta> metas;
};

}  // namespace model
