// Completion: what can be typed at the cursor.
#pragma once

#include "lsp/session.h"

namespace korvel::lsp {

// textDocument/completion.
Json Complete(Session& session, const Json& params);

}  // namespace korvel::lsp
