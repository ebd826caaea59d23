// The findings and changes of an HTML report.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "report/render/html_page.h"
#include "report/render/html_source.h"

namespace korvel {

// A word with its sign and color. `name` is the CSS class, `word` is markup.
std::string Badge(const char* name, const char* sign, const std::string& word);
std::string Badge(StatusStyle style);

// A term of a description list; empty if `html` is empty.
std::string Term(const std::string& name, const std::string& html);

// One item as text, several as a list.
std::string List(const std::vector<std::string>& items);

// Rule, result code and name of a refusal.
std::string Result(const std::string& rule, int code);

// The summary of a refusal and the checker's own text.
std::string Problem(const std::string& summary, const std::string& checker_text);

// Renders findings and changes, with links to the lines that the page shows. Borrows both arguments.
class HtmlItems {
 public:
  HtmlItems(const Page& page, const HtmlSources& sources) : page_(page), sources_(sources) {}

  std::string Finding(const PageFinding& listed) const;
  std::string Change(const PageChange& change) const;
  // A link to the finding at a position of Page::findings.
  std::string FindingLink(std::size_t position) const;

  // FILE:LINE:COLUMN, as a link if the page shows the line. Empty for a location without a source.
  std::string LocationOf(const Location& location, std::size_t pair) const;

 private:
  std::string AlsoItems(const FoldedFinding& folded) const;

  const Page& page_;
  const HtmlSources& sources_;
};

}  // namespace korvel
