// A schema library together with the file that it came from, as reports need it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_source_map.h"

namespace korvel {

// A schema file as it was read: what places are found in.
struct SchemaText {
  std::shared_ptr<void> keeper;  // keeps the bytes
  std::string_view bytes;
  qmx::SourceMap source_map;
  bool is_dump = false;  // no file has it: it was written for an image, so that there are lines to show
};

struct Source {
  std::string name;  // as shown: the path, "<stdin>", or "git:REV:PATH"
  qmx::Metalib metalib;
  std::optional<SchemaText> text;        // an image has none of its own
  std::vector<std::string_view> tables;  // metas with a primary key, in declaration order

  LPQMXMETALIB Library() const { return metalib.get(); }
  const char* LibraryName() const { return Library()->data + Library()->ptrName; }
  bool HasMeta(const std::string& meta) const;
};

// Fills `tables`.
void ListTables(Source& source);

// Position of a meta in declaration order; nullopt if the library has none of the name. Logarithmic.
std::optional<std::uint32_t> PositionOf(const Source& source, const std::string& name);

// An element of a source and, where one attribute of it is meant, that attribute.
struct Location {
  const Source* source = nullptr;  // null: nowhere
  qmx::ElementId element;
  std::string_view attribute;  // of schema files, a constant; empty: the element as a whole

  explicit operator bool() const { return source != nullptr; }
};

// Where a source declares a meta. REQUIRES: it has one of the name.
Location DeclaredAt(const Source& source, const std::string& meta);

}  // namespace korvel
