// Finds the elements of a text for an outline, in one pass. See outline.h for how it takes broken markup.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "lsp/outline.h"

namespace korvel::lsp {

class OutlineScanner {
 public:
  // Fills an empty outline of a text.
  explicit OutlineScanner(Outline& outline) : outline_(outline), text_(outline.text_) {}

  void Run();

 private:
  void ScanMarkup();
  void ScanOther(std::size_t opening, std::string_view closing);
  void ScanDeclaration();
  void ScanEndTag();
  void ScanStartTag();
  // Returns false at the end of the tag.
  bool ScanPart();
  void ScanAttribute();
  void ScanQuoted(TagAttribute& attribute);

  void EnterParent(Element& element);
  void CloseByEndTag(std::string_view name, std::size_t end);
  // Ends the innermost open element.
  void Close(std::size_t end, bool has_end_tag);

  Outline& outline_;
  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t limit_ = 0;           // no tag that begins in front of it reaches behind it
  std::vector<ElementIndex> open_;  // elements without an end so far, outermost first
};

}  // namespace korvel::lsp
