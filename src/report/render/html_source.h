// The part of an HTML report that shows schema files side by side.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "report/render/html_page.h"

namespace korvel {

// Renders the sources of all pairs; afterwards it knows which lines the page shows.
class HtmlSources {
 public:
  explicit HtmlSources(const Page& page);

  // The section of a pair; empty if there is nothing to show of it.
  const std::string& SectionOf(std::size_t pair) const { return sections_[pair]; }

  // The id of a line of a pair; empty if the page does not show it.
  std::string LineId(std::size_t pair, bool is_new, std::size_t line) const;

 private:
  struct ShownLines {
    std::vector<bool> old_lines;  // by number
    std::vector<bool> new_lines;
  };

  std::string Section(std::size_t number);

  const Page& page_;
  std::size_t rows_left_;
  std::vector<ShownLines> shown_;
  std::vector<std::string> sections_;
};

}  // namespace korvel
