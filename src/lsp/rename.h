// Renames a library, structure, entry or index in the text of a schema file, with everything that refers to it.
//
// NOT checked: whether stored data knows the old name. The caller refuses such symbols before it calls these functions; the kind,
// name and structure of the symbol say which it is.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lsp/outline.h"
#include "lsp/symbols.h"

namespace korvel::lsp {

struct TextEdit {
  qmx::Span span;    // what is replaced
  std::string text;  // as it is written in the file
};

// Why the symbol cannot get a name: "what is wrong; allowed: ...". Empty if it can. The reader accepts the file with a name that
// this accepts, if it accepts it with the old one.
std::string FaultOfName(const Outline& outline, const Symbol& symbol, std::string_view new_name);

// The edits of the declaration and of all references, in the order of the text. REQUIRES: FaultOfName is empty.
std::vector<TextEdit> RenameEdits(const Outline& outline, const Symbol& symbol, std::string_view new_name);

}  // namespace korvel::lsp
