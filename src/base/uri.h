// Addresses of files: "file:///srv/schemas/orders.xml".
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvel {

// The absolute path of a file; nullopt for any other address.
std::optional<std::string> PathOf(std::string_view uri);

// The address of a file: of a relative path, a relative one. Everything but letters, digits and "-._~/" is percent-encoded.
std::string UriOf(std::string_view path);

}  // namespace korvel
