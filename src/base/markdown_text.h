// Escapes text for Markdown documents. Bytes that are not UTF-8 become U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace korvel {

// The text as plain text: nothing in it becomes markup, a tag, a link, a mention, or the end of a table cell or line. One line.
std::string MarkdownText(std::string_view text);

// A name or a piece of a schema as inline code, also inside a table cell. One line.
std::string MarkdownCode(std::string_view text);

// Lines as a code block of a language; no line can end the block. REQUIRES: `lines` is empty or ends in a line end.
std::string MarkdownBlock(std::string_view language, std::string_view lines);

}  // namespace korvel
