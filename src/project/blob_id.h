// The id that git gives to the content of a file.
#pragma once

#include <string>
#include <string_view>

namespace korvel {

// The id of a file with these bytes in a repository that uses SHA-1, as most do: 40 hexadecimal digits. Linear.
std::string BlobId(std::string_view bytes);

}  // namespace korvel
