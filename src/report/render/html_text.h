// Text as part of an HTML page.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvel {

// The text as content or as the value of a quoted attribute: &, <, >, " and ' escaped, control characters and marks of writing
// direction shown as OneLine shows them, bytes that are no UTF-8 as U+FFFD. What it holds cannot become markup.
std::string Html(std::string_view text);

// The same for a line of source, whose tabs stay.
std::string HtmlLine(std::string_view text);

// <code>text</code>
std::string Code(std::string_view text);

// A link to a place of the page; the content is markup. Without a target the content alone.
std::string Link(const std::string& target, const std::string& content);

}  // namespace korvel
