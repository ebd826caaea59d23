// Reads the text form of a schema library (XML; the elements and attributes are listed in docs/schema-files.md).
//
// Strict: what is not part of the form is refused, and every fault of a file is reported, not the first one. A syntax error ends
// the reading, since nothing behind it can be trusted.
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
  LineColumn place;
  std::string text;  // "what is wrong; what is allowed", one line, without file and place
};

struct Schema {
  Metalib metalib;
  SourceMap source_map;
};

struct ReadResult {
  std::optional<Schema> schema;   // set if and only if `errors` is empty
  std::vector<ReadError> errors;  // in the order of the file
};

// Reads a whole file held in memory. UTF-8 only. Linear in its size. Throws nothing but std::bad_alloc.
ReadResult ReadXml(std::string_view text);

// Whether a file that begins with these bytes may be XML. If not, reading it tells the same fault, whatever follows.
bool MayBeXml(std::string_view beginning);

// Memory for a file that is read in place: ReadXml copies what it gets, this does not.
class XmlBuffer {
 public:
  // REQUIRES: 0 < capacity <= kMaxFileBytes. Throws std::bad_alloc.
  explicit XmlBuffer(std::size_t capacity);
  ~XmlBuffer();
  XmlBuffer(const XmlBuffer&) = delete;
  XmlBuffer& operator=(const XmlBuffer&) = delete;

  // Where the caller puts the file's bytes, up to the capacity. They stay as they are, and stay readable, while the buffer lives.
  char* data() const { return bytes_; }

  // As ReadXml of the first `size` bytes. At most once.
  ReadResult Read(std::size_t size);

 private:
  std::shared_ptr<void> parser_;
  char* bytes_ = nullptr;  // the parser's
};

}  // namespace qmx
