// Why a request or a notification failed.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "lsp/json.h"

namespace korvel::lsp {

struct RequestFailure {
  ErrorCode code;
  std::string text;
};

// Why a step failed; nullopt if it did not. A failed step must not end the session, unless the connection or the memory fails.
std::optional<RequestFailure> FailureOf(const std::function<void()>& step);

}  // namespace korvel::lsp
