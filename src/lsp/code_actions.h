// Quick fixes: the suggestion of a finding, a fixed version of the whole file, a waiver.
#pragma once

#include "lsp/session.h"

namespace korvel::lsp {

// How long a waiver lasts that is added in the editor, in days.
inline constexpr int kWaiverDays = 30;

// textDocument/codeAction. The fixed version of the file takes time, so it has no edit: see ResolveCodeAction.
Json CodeActions(Session& session, const Json& params);

// codeAction/resolve: adds the edit. Throws RequestError with the reasons if no version of the file is allowed.
Json ResolveCodeAction(Session& session, const Json& action);

}  // namespace korvel::lsp
