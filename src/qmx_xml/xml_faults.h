// The errors of one file: texts for files that are not well-formed XML, or not XML at all, and the list that collects errors.
//
// A file that is given by mistake, or by somebody else through a link, may contain secrets, and errors appear in public logs. So
// no error shows content of a file in which no library ('metalib') has begun, except for the version and the encoding of an XML
// declaration, and for the name of an outermost element that is nearly 'metalib'.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qmx/qmx_xml.h"

namespace qmx {

struct FileFault {
  std::size_t offset = 0;
  std::string text;
};

// Checks the bytes only: size, byte order marks, whether the file begins like XML, and how far before its outermost element.
std::optional<FileFault> FindFileFault(std::string_view text);

// The meaning of an error code of the parser at a position of the file. `open_element` describes the innermost open element, or
// is empty. The text quotes the file only if `has_library`, or if the position is in the tag of the library.
FileFault DescribeSyntaxError(int code, std::string_view text, std::size_t offset, std::string_view open_element,
                              bool has_library);

// Whether files may declare this encoding.
bool IsAllowedEncoding(std::string_view name);

// Collects the faults of one file by byte offset.
class ErrorList {
 public:
  explicit ErrorList(std::size_t max = kMaxErrors) : room_(max) {}

  // Ignored if the list is full.
  void Add(std::size_t offset, std::string text) { Add({offset, std::move(text)}, false); }
  // The same for a file that is not well-formed XML.
  void AddSyntax(FileFault fault) { Add(std::move(fault), true); }

  bool empty() const { return errors_.empty(); }

  // Whether as many errors as allowed have been added.
  bool IsFull() const { return room_ == 0; }

  // The errors in the order of the file; those with the same offset in the order in which they were added. A full list ends in an
  // error that says so.
  std::vector<ReadError> Locate(std::string_view text) const;

 private:
  struct Error {
    FileFault fault;
    bool is_syntax;
  };

  void Add(FileFault fault, bool is_syntax);

  std::size_t room_;  // for further errors
  std::vector<Error> errors_;
};

}  // namespace qmx
