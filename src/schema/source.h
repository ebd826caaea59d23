// A schema library together with the file that it came from.
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
#include "schema/file_text.h"

namespace korvel {

// The text of a schema file as it was read, in which locations are found.
struct SchemaText {
  std::shared_ptr<const FileText> file;
  qmx::SourceMap source_map;
  bool is_dump = false;  // not from a file: written for an image, so that reports can show lines

  // See FileText::Bytes.
  std::string_view Bytes() const { return file->Bytes(); }
};

// A text in memory, which `keeper` owns.
SchemaText KeptText(std::shared_ptr<void> keeper, std::string_view bytes, qmx::SourceMap source_map);
SchemaText KeptText(std::string bytes, qmx::SourceMap source_map);

// Movable and copyable; copies share the bytes. Const operations may run on several threads at once.
struct Source {
  std::string name;  // as messages show it: the path, "<stdin>", or "git:REV:PATH"
  qmx::Metalib metalib;
  std::optional<SchemaText> text;        // absent for an image without dump
  std::vector<std::string_view> tables;  // metas with a primary key, in declaration order
  std::string path_in_project = {};      // identifies the file in fingerprints and waivers (PathInProject); may be empty

  LPQMXMETALIB Library() const { return metalib.get(); }
  const char* LibraryName() const { return Library()->data + Library()->ptrName; }
  bool HasMeta(const std::string& meta) const;
  // Whether it was read from a schema file, not from an image.
  bool IsFromText() const { return text && !text->is_dump; }
};

// Fills `tables`.
void ListTables(Source& source);

// Position of a meta in declaration order, 0-based; nullopt if the library has no meta of the name. Logarithmic.
std::optional<std::uint32_t> PositionOf(const Source& source, const std::string& name);

// An element of a source, one attribute of it, or a part of the attribute's value. Borrows the source.
struct Location {
  const Source* source = nullptr;  // null: no location
  qmx::ElementId element;
  std::string_view attribute;  // its name in schema files, a constant; empty: the element as a whole
  qmx::Span part = {};         // bytes of the attribute's value in the library; empty: the value as a whole

  explicit operator bool() const { return source != nullptr; }
};

// Where a source declares a meta. REQUIRES: it has one of the name.
Location DeclaredAt(const Source& source, const std::string& meta);

// The source that a schema file of this text and name would give; nullopt if the text is not a schema. Linear.
std::optional<Source> SourceOfText(const std::string& name, std::string text);

}  // namespace korvel
