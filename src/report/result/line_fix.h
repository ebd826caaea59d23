// The fix of a finding as whole lines, for services that replace lines only and take a suggestion as a block of text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/findings/finding.h"

namespace korvel {

struct LineFix {
  std::size_t first = 0;          // the lines that are replaced, from 1
  std::size_t last = 0;           // the last of them
  std::string text;               // what replaces them: at least one line, each with its end
  const char* problem = nullptr;  // why there is no such fix: "it ..."; otherwise null. If set, the other members mean nothing
};

// The lines of a text as services count them: they end in LF.
class LineStarts {
 public:
  // Borrows the text. Linear.
  explicit LineStarts(std::string_view text);

  // The fix, which is not empty, as lines. Replacing them gives the bytes that the fix gives. Lines that the fix would join with
  // the next one, or remove, are replaced together with the next one. A problem are: a fix over more than 50 lines or 20,000
  // bytes, a last line without line end, hidden characters (also CR) except tabs, bytes that are not UTF-8, and lines that a
  // service could take for a command to it.
  LineFix Fixed(const std::vector<Replacement>& fix) const;

 private:
  std::size_t LineAt(std::size_t offset) const;  // 0-based
  std::size_t Begin(std::size_t line) const { return line < begins_.size() ? begins_[line] : text_.size(); }
  std::string TextOf(std::size_t first, std::size_t last, const std::vector<Replacement>& fix) const;

  std::string_view text_;
  std::vector<std::size_t> begins_;  // of each line
};

}  // namespace korvel
