// Reads the text form of a schema library (XML; the elements and attributes are listed in docs/schema-files.md).
//
// Strict: anything that is not part of the format is refused, and all faults of a file are reported, not only the first. Reading
// stops at a syntax error because the rest of the file cannot be trusted.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_limits.h"
#include "qmx/qmx_source_map.h"

namespace qmx {

struct ReadError {
  LineColumn location;
  std::string text;        // "what is wrong; what is allowed", one line, without file and location
  bool is_syntax = false;  // the file is not well-formed XML, or not XML at all
};

struct Schema {
  Metalib metalib;
  SourceMap source_map;
};

// A schema whose file is no longer in memory.
struct SchemaWithoutText : Schema {
  std::vector<TagRange> metas;  // the start tags of its metas
};

struct ReadResult {
  std::optional<Schema> schema;   // set if and only if `errors` is empty
  std::vector<ReadError> errors;  // in the order of the file
};

// Reads a whole file from memory. UTF-8 only. Linear in its size. Throws nothing but std::bad_alloc.
ReadResult ReadXml(std::string_view text);

// Whether a file that begins with these bytes may be XML. If not, ReadXml reports the same fault no matter what follows.
bool MayBeXml(std::string_view beginning);

// Memory for a file that is parsed in place: ReadXml copies its input, ReadBuffer does not.
class XmlBuffer {
 public:
  // REQUIRES: 0 < capacity <= kMaxFileBytes. Throws std::bad_alloc.
  explicit XmlBuffer(std::size_t capacity);
  ~XmlBuffer();
  XmlBuffer(const XmlBuffer&) = delete;
  XmlBuffer& operator=(const XmlBuffer&) = delete;

  // Where the caller writes the bytes of the file, up to the capacity. They stay unchanged and readable while the buffer lives.
  char* data() const { return bytes_; }

  // Same as ReadXml, for the first `size` bytes. At most one call of this or of ReadAndRelease.
  ReadResult Read(std::size_t size);

  // Same, but gives the memory of the bytes back to the system while they are parsed: afterwards they are undefined. Nullopt if
  // the file has errors, or if memory that was given back is needed after all: only Read of the same bytes can tell.
  std::optional<SchemaWithoutText> ReadAndRelease(std::size_t size);

 private:
  std::shared_ptr<void> parser_;
  char* bytes_ = nullptr;  // owned by the parser
};

}  // namespace qmx
