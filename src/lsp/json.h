// Values of messages.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace korvel::lsp {

using Json = nlohmann::json;

// Error codes of the protocol.
enum ErrorCode : int {
  kParseError = -32700,
  kInvalidRequest = -32600,
  kMethodNotFound = -32601,
  kInvalidParams = -32602,
  kInternalFailure = -32603,
  kNotInitialized = -32002,
  kRequestFailed = -32803,
  kRequestCancelled = -32800,
};

// A request that is answered with an error.
struct RequestError : std::runtime_error {
  RequestError(ErrorCode error_code, const std::string& text) : std::runtime_error(text), code(error_code) {}

  ErrorCode code;
};

}  // namespace korvel::lsp
