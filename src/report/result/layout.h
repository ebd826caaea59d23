// Where the fields of a packed record lie, of one schema or of two beside each other.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/limits.h"
#include "schema/source.h"

namespace korvel {

struct FieldLayout {
  std::string path;  // below the table: "lines[].price_cents"
  std::string name;
  std::string type;  // of schema files: a simple type or the name of a meta
  std::int32_t id = -1;
  std::int32_t version = 1;
  std::int32_t count = 1;
  std::string refer;            // the field that holds the count; empty = fixed
  std::uint64_t unit_size = 0;  // bytes of one element
  std::uint64_t size = 0;       // bytes of all elements
  // Bytes from the start of the record or, inside a repeated structure, from that of an element of the innermost one.
  std::uint64_t offset = 0;
  bool in_element = false;      // the latter
  std::uint64_t in_record = 0;  // bytes of all its occurrences in a record
  bool key = false;             // member of the primary key
  bool splittable = false;      // member of the splittable key
  std::string sort;             // "sort=1" of a sort field, as schema files mark it
  bool closed = false;          // a structure whose fields are left out
  std::size_t end = 0;          // position in the list behind the last field inside it
};

struct TableLayout {
  std::string table;
  bool found = false;          // whether the source has the table; if not, nothing else is set
  bool tlv = false;            // records are written as tags, lengths and values: sizes are those of the packed form
  bool is_union = false;       // all own fields begin at 0
  std::uint64_t size = 0;      // bytes of a packed record
  std::size_t own_fields = 0;  // those at the top
  // Each structure before its fields, in declaration order.
  std::vector<FieldLayout> fields;
  std::size_t closed = 0;  // structures not opened
};

// Linear in what is listed.
TableLayout LayoutOf(const Source& source, const std::string& table);

// What became of a field, by the gravest of what happened.
enum class FieldChange : std::uint8_t { kSame, kMoved, kChanged, kAdded, kRemoved };

// A field of the old layout and the one that it became.
struct FieldPair {
  const FieldLayout* before;  // null if added
  const FieldLayout* after;   // null if removed
  std::size_t level = 1;      // 1 = the table's own

  const FieldLayout& Either() const {
    assert(before != nullptr || after != nullptr);
    return after != nullptr ? *after : *before;
  }
};

// The fields of both layouts in the order of the new one, removed ones behind what they followed. Within a structure fields are
// the same that have the same name, else the same id; in two TLV libraries the same id, else the same name. Borrows from both.
std::vector<FieldPair> PairFields(const TableLayout& before, const TableLayout& after);

struct FieldChangeWords {
  const char* sign;  // ">"
  const char* word;  // "moved"
};

FieldChangeWords WordsOf(FieldChange change);

FieldChange ChangeOf(const FieldPair& pair, bool tlv);

// What happened to it, for people: "grew by 4, moved by +4"; empty for nothing. Offsets do not count in TLV records.
std::string DescribeChange(const FieldPair& pair, bool tlv);

}  // namespace korvel
