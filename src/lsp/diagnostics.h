// The problems of a document as diagnostics of the protocol.
#pragma once

#include <map>
#include <string>

#include "lsp/document_check.h"
#include "lsp/json.h"

namespace korvel::lsp {

// Lists of diagnostics by the address of the document that they are shown in.
using Diagnostics = std::map<std::string, Json>;

// What a check of a document shows: its own diagnostics, and those about the project files that judged it. The document has a
// list in any case. Waived findings are information, with reason and last day.
Diagnostics DiagnosticsOf(const DocumentCheck& check, const Document& document, const Documents& documents);

// The errors of a project file that is being edited, or why the file on the disk is refused. Without errors, an empty list.
Json DiagnosticsOfProjectFile(const Document& document, Links links);

// The diagnostic at the begin of a document that could not be checked.
Json FailedCheck(const std::string& message);

}  // namespace korvel::lsp
