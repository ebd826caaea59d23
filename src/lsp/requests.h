// The requests about documents that the server answers.
#pragma once

#include <span>

#include "lsp/session.h"

namespace korvel::lsp {

struct Request {
  const char* method;
  // Throws RequestError, InputError, and Json::exception for parameters of a wrong form.
  Json (*answer)(Session& session, const Json& params);
};

std::span<const Request> Requests();

// What `initialize` says that the server can do.
Json Capabilities(const Client& client);

}  // namespace korvel::lsp
