// The rules that an HTML report mentions: how often each occurs, and what it means.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "report/render/html_page.h"

namespace korvel {

class HtmlRules {
 public:
  explicit HtmlRules(const Page& page);

  // The number of findings of each rule, the most frequent first; closed until opened. Empty for fewer than two findings.
  std::string Index() const;

  // A section for each rule: what it protects, and what is allowed instead. Empty without rules.
  std::string Explanations() const;

 private:
  struct Rule {
    std::string_view id;
    std::size_t findings = 0;
    std::string first;  // the id of the first finding on the page, or ""
  };

  void Add(std::string_view id, std::size_t findings, const std::string& first);

  std::vector<Rule> rules_;
};

// The id of a rule, with a link to its explanation.
std::string RuleLink(std::string_view id);

}  // namespace korvel
