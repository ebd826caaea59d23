// Offsets and sizes of the fields of a packed record, of one schema or of two compared.
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
  std::string path;  // from the table: "lines[].price_cents"
  std::string name;
  std::string type;  // as in schema files: a simple type or the name of a meta
  std::int32_t id = -1;
  std::int32_t version = 1;
  std::int32_t count = 1;
  std::string refer;            // the field with the count; empty = fixed count
  std::uint64_t unit_size = 0;  // bytes of one element
  std::uint64_t size = 0;       // bytes of all elements
  // Bytes from the start of the record; inside a repeated structure, from the start of an element of the innermost one.
  std::uint64_t offset = 0;
  bool in_element = false;      // whether the offset counts from an element
  std::uint64_t in_record = 0;  // bytes of all occurrences in a record
  bool key = false;             // member of the primary key
  bool splittable = false;      // member of the splittable key
  std::string sort;             // "sort=1" of a sort field, as in schema files
  bool closed = false;          // a structure whose fields are not listed
  std::size_t end = 0;          // position in the list after the last field inside it
};

struct TableLayout {
  std::string table;
  bool found = false;          // whether the source has the table; if not, nothing else is set
  bool tlv = false;            // records are tag-length-value: sizes are those of the packed form
  bool is_union = false;       // all own fields start at 0
  std::uint64_t size = 0;      // bytes of a packed record
  std::size_t own_fields = 0;  // of the table itself, without fields inside structures
  // Each structure before its fields, in declaration order.
  std::vector<FieldLayout> fields;
  std::size_t closed = 0;  // number of structures whose fields are not listed
};

// Linear in the number of listed fields.
TableLayout LayoutOf(const Source& source, const std::string& table);

// What happened to a field: the most severe of several changes.
enum class FieldChange : std::uint8_t { kSame, kMoved, kChanged, kAdded, kRemoved };

// A field of the old layout and the same field in the new layout.
struct FieldPair {
  const FieldLayout* before;  // null if added
  const FieldLayout* after;   // null if removed
  std::size_t level = 1;      // 1 = a field of the table itself

  const FieldLayout& Either() const {
    assert(before != nullptr || after != nullptr);
    return after != nullptr ? *after : *before;
  }
};

// The fields of both layouts in the order of the new one; a removed field comes after its old predecessor. Within a structure,
// fields with the same name are the same field, then fields with the same id; in two TLV libraries id comes before name. Borrows
// from both layouts.
std::vector<FieldPair> PairFields(const TableLayout& before, const TableLayout& after);

struct FieldChangeWords {
  const char* sign;  // ">"
  const char* word;  // "moved"
};

FieldChangeWords WordsOf(FieldChange change);

FieldChange ChangeOf(const FieldPair& pair, bool tlv);

// What happened to the field, for people: "grew by 4, moved by +4"; empty for no change. Offsets do not matter in TLV records.
std::string DescribeChange(const FieldPair& pair, bool tlv);

}  // namespace korvel
