// Tested by tests/lsp/protocol_test.cpp.
#include "lsp/request_failure.h"

#include <exception>
#include <new>

#include "base/input_error.h"
#include "base/text.h"
#include "lsp/serve.h"

namespace korvel::lsp {

std::optional<RequestFailure> FailureOf(const std::function<void()>& step) {
  try {
    step();
    return std::nullopt;
  } catch (const ConnectionError&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const RequestError& error) {
    return RequestFailure{error.code, error.what()};
  } catch (const InputError& error) {
    return RequestFailure{kRequestFailed, Join(error.lines, "\n")};
  } catch (const Json::exception&) {
    return RequestFailure{kInvalidParams, "the parameters lack a member, or one has a wrong type"};
  } catch (const std::exception& error) {
    return RequestFailure{kRequestFailed, error.what()};
  }
}

}  // namespace korvel::lsp
