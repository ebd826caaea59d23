// The findings that the text of a history lists already: a step refers to those of earlier steps.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "report/result/fold.h"

namespace korvel {

class SeenFindings {
 public:
  // Begins with the listed findings of the next step, counted from 1. Returns for each of them the first step that lists the same
  // finding, with the same paths and the same waiver; 0 for a new one.
  std::vector<std::size_t> Add(const FoldedReport& step, std::size_t number);

 private:
  std::map<std::string, std::size_t> first_;
};

}  // namespace korvel
