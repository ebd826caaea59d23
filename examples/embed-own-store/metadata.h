// The metadata library of this store: tables of fields that have one value each. Composite fields, counters, attributes, indexes
// and splittable keys do not exist here.
//
// The records of the checker are the base classes. It reads few of their members, listed in docs/embedding.md; everything else it
// gets from the operations in metadata.cpp.
#pragma once

#include <deque>
#include <string>

#include "qmx/qmx_types.h"

namespace store {

struct Field : tagQMXMetaEntry {
  Field(std::string field_name, enQMXType field_type, std::size_t field_size, int added_in = 1);

  std::string name;
  enQMXType type;
  std::size_t size;  // bytes
  int version;       // of the library that added it
};

struct Table : tagQMXMeta {
  std::string name;
  std::deque<Field> fields;  // the first one is the primary key
  tagQMXDBKeyInfo key;
};

// Tables stay where they are: the checker finds the library from a table's address.
class Library : public tagQMXMetaLib {
 public:
  explicit Library(int library_version);
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  void AddTable(std::string name, std::deque<Field> fields);

  int version;
  std::deque<Table> tables;

 private:
  std::int64_t OffsetOf(const void* record) const;
};

}  // namespace store
