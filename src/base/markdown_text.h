// Text inside a Markdown document.
#pragma once

#include <string>
#include <string_view>

namespace korvel {

// The text as text: nothing of it is a mark, a tag, a link, a mention, a cell's or a line's end. On one line.
std::string MarkdownText(std::string_view text);

// A name or a piece of a schema as code; stays so in a cell of a table.
std::string MarkdownCode(std::string_view text);

// Lines as a block of code of some language; no line ends the block.
std::string MarkdownBlock(std::string_view language, std::string_view lines);

}  // namespace korvel
