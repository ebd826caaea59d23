// Finds the attributes of a start tag again. Not an XML parser: the tag is known to be well-formed.
#include "qmx/tag_scanner.h"

#include <algorithm>

namespace qmx {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

}  // namespace

TagScanner::TagScanner(std::string_view text, std::size_t element) : text_(text), at_(std::min(element, text.size())) {
  SkipTo(" \t\r\n/>");
}

void TagScanner::SkipTo(std::string_view any_of) { at_ = std::min(text_.find_first_of(any_of, at_), text_.size()); }

void TagScanner::SkipBlanks() { at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size()); }

std::optional<AttributeSpans> TagScanner::Next() {
  AttributeSpans found;
  SkipBlanks();
  found.name.begin = at_;
  SkipTo(" \t\r\n=/>");
  found.name.end = at_;
  SkipBlanks();
  if (at_ == text_.size() || text_[at_] != '=') return std::nullopt;
  SkipTo("\"'");
  if (at_ == text_.size()) return std::nullopt;
  found.value.begin = at_ + 1;
  found.value.end = text_.find(text_[at_], found.value.begin);
  if (found.value.end == std::string_view::npos) return std::nullopt;
  at_ = found.value.end + 1;
  return found;
}

}  // namespace qmx
