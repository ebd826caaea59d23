// What the editor shows beside the cursor: sizes, changes, the meaning of an attribute, the rule of a diagnostic.
#pragma once

#include "lsp/session.h"

namespace korvel::lsp {

// textDocument/hover. Null where there is nothing to say.
Json Hover(Session& session, const Json& params);

}  // namespace korvel::lsp
