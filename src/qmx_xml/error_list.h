// Collects the errors of a file by byte offset.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qmx/qmx_xml.h"

namespace qmx {

class ErrorList {
 public:
  // Ignored if the list is full.
  void Add(std::size_t offset, std::string text);

  bool empty() const { return errors_.empty(); }

  // Whether kMaxErrors have been added.
  bool IsFull() const { return errors_.size() >= kMaxErrors; }

  // The errors in the order of the file; those with the same offset in the order in which they were added. A full list ends in an
  // error that says so.
  std::vector<ReadError> Locate(std::string_view text) const;

 private:
  std::vector<std::pair<std::size_t, std::string>> errors_;
};

}  // namespace qmx
