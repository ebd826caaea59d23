// The faults of one file: their texts before or instead of being XML, and the list that collects all of them.
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

// Looks at the bytes alone: size, encoding marks, and whether it begins as XML does.
std::optional<FileFault> FindFileFault(std::string_view text);

// What an error code of the parser at a place of the file means. `open_element` describes the innermost open element, or is
// empty.
FileFault DescribeSyntaxError(int code, std::string_view text, std::size_t offset, std::string_view open_element);

// Whether files may declare this encoding.
bool IsAllowedEncoding(std::string_view name);

// Collects the faults of one file by byte offset.
class ErrorList {
 public:
  // Dropped when the list is full.
  void Add(std::size_t offset, std::string text);

  bool empty() const { return errors_.empty(); }

  // Whether kMaxErrors have been added.
  bool IsFull() const { return errors_.size() >= kMaxErrors; }

  // The errors in the order of the file, those of one place as they were added. A full list ends in an error that says so.
  std::vector<ReadError> Locate(std::string_view text) const;

 private:
  std::vector<std::pair<std::size_t, std::string>> errors_;
};

}  // namespace qmx
