// The line above each table, "42 bytes, 2 refused, 1 new", which opens the report as a page.
#pragma once

#include "lsp/session.h"

namespace korvel::lsp {

// The command of the line; its argument is the address of the document.
inline constexpr char kReportCommand[] = "korvelcheck.report";

// textDocument/codeLens.
Json CodeLenses(Session& session, const Json& params);

}  // namespace korvel::lsp
