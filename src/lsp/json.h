// Values of messages.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

namespace korvel::lsp {

// A list of one value is written Json::array({value}): of {value}, compilers make a list or a copy.
using Json = nlohmann::json;

// Error codes of the protocol.
enum ErrorCode : int {
  kParseError = -32700,
  kInvalidRequest = -32600,
  kMethodNotFound = -32601,
  kInvalidParams = -32602,
  kNotInitialized = -32002,
  kRequestFailed = -32803,
  kRequestCancelled = -32800,
};

// A request that is answered with an error.
struct RequestError : std::runtime_error {
  RequestError(ErrorCode error_code, const std::string& text) : std::runtime_error(text), code(error_code) {}

  ErrorCode code;
};

// Lists and objects inside each other in a message. Values are copied and written by recursion.
inline constexpr int kMaxNesting = 100;

// The value of a message. Throws RequestError if it is not JSON, or nested too deep.
Json ParseMessage(std::string_view message);

// A whole number, at least 0. Throws RequestError for another value.
std::uint64_t Natural(const Json& value);

}  // namespace korvel::lsp
