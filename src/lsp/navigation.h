// Moves between names and what they stand for, and renames them.
#pragma once

#include "lsp/session.h"

namespace korvel::lsp {

// textDocument/definition, references and documentSymbol.
Json Definition(Session& session, const Json& params);
Json References(Session& session, const Json& params);
Json DocumentSymbols(Session& session, const Json& params);

// textDocument/prepareRename and rename. Refused if a check of the result reports more than now: records and clients know the
// names that a baseline has.
Json PrepareRename(Session& session, const Json& params);
Json Rename(Session& session, const Json& params);

}  // namespace korvel::lsp
