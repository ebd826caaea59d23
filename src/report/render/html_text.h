// Building blocks of HTML pages: escaped text, links, and the embedded style and script.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvel {

// The text as content or as the value of a quoted attribute; it cannot become markup. Escapes &, <, >, " and '. Control
// characters and writing-direction marks are shown as by OneLine, invalid UTF-8 as U+FFFD.
std::string Html(std::string_view text);

// A line of source, its hidden characters shown as by OneLine; tabs stay. Not yet HTML.
std::string SourceLine(std::string_view text);

// The same as HTML.
std::string HtmlLine(std::string_view text);

// <code>text</code>
std::string Code(std::string_view text);

// A link to the element of the page with the id `target`; `content` is markup. Only the content if `target` is empty.
std::string Link(const std::string& target, const std::string& content);

// A file of src/report/render/html, embedded by cmake/EmbedPage.cmake when the program is built.
struct Asset {
  std::string_view text;
  std::string_view hash;  // "sha256-...", for the Content-Security-Policy
};

extern const Asset kPageStyle;
extern const Asset kPageScript;
extern const Asset kHistoryScript;

// The page up to <body>: it allows the style and `script` only. `title` is markup.
std::string HtmlHead(const Asset& script, const std::string& title);

}  // namespace korvel
