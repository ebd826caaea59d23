// Quick fixes: the suggestion of a finding, a fixed version of the whole file, a waiver.
#pragma once

#include "lsp/session.h"

namespace korvel::lsp {

// textDocument/codeAction. The fixed version of the file takes time, so it has an edit only for clients that do not
// resolve it: see ResolveCodeAction.
Json CodeActions(Session& session, const Json& params);

// codeAction/resolve: adds the edit. Throws RequestError with the reasons if no version of the file is allowed.
Json ResolveCodeAction(Session& session, const Json& action);

}  // namespace korvel::lsp
