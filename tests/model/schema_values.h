// A schema library as a value that is cheap to change at random. Like a schema file, plus the invalid states at the end of each
// structure, which no schema file can express and which are set in the built block.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "qmx/qmx_builder.h"

namespace model {

struct FieldDecl {
  std::string name = {};
  std::string type = "uint32";
  std::uint64_t size = 0;  // bytes; for "string" and "bytes"
  std::int32_t id = -1;
  std::int32_t version = 1;
  std::int32_t count = 1;
  std::string refer = {};
  std::optional<std::string> attr2 = std::nullopt;

  bool nameless = false;
  bool without_structure = false;
  std::optional<std::uint64_t> odd_unit_size = std::nullopt;
  std::optional<std::int32_t> odd_count = std::nullopt;
  std::optional<std::uint8_t> odd_flags = std::nullopt;
  bool operator==(const FieldDecl&) const = default;
};

struct IndexDecl {
  std::string name;
  std::vector<std::string> columns;
  bool operator==(const IndexDecl&) const = default;
};

struct MetaDecl {
  std::string name = {};
  bool is_union = false;
  std::vector<FieldDecl> fields = {};
  std::vector<std::string> key = {};
  std::vector<std::string> split = {};
  std::vector<IndexDecl> indexes = {};
  std::optional<std::string> attr = std::nullopt;

  bool without_key_list = false;                             // the reference is -1, whatever the count is
  std::optional<std::int16_t> odd_key_count = std::nullopt;  // at most the number of members, if there is a list
  bool operator==(const MetaDecl&) const = default;
};

struct LibraryDecl {
  std::int32_t version = 5;
  std::int64_t flag = 0;  // the whole flag word: 0 record format, 1 TLV, -1 unset, and others
  std::vector<MetaDecl> metas = {};
  bool operator==(const LibraryDecl&) const = default;
};

// The library; nothing if it cannot be laid out, for example because a field refers to one that does not exist.
std::optional<qmx::Metalib> Build(const LibraryDecl& library);

// As a schema file, with invalid states in comments.
std::string Print(const LibraryDecl& library);

}  // namespace model
