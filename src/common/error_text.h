// Formats texts into an error buffer: that of a ModifyTable or of a CheckTable. Logs nothing.
#pragma once

#include <cstddef>
#include <type_traits>

namespace korvel {

// Capacity of an error buffer in bytes, including the terminating zero.
inline constexpr std::size_t kErrorTextSize = 1024;

// A parameter of this type takes no part in template deduction: an argument is converted to the type that the format names, so
// that an int passed for a size is widened before it is formatted.
template <class T>
using Exactly = std::type_identity_t<T>;

// Formats as printf does. A text that does not fit is cut to 1023 bytes; one that cannot be formatted leaves the buffer empty.
// Arguments may point into the buffer.
void FormatText(char* buffer, const char* format, ...);

// Copies a text that is used as a format without arguments: "%%" becomes "%", any other conversion is copied as it is, and a text
// that ends in a single "%" cannot be formatted and leaves the buffer empty. Cut to 1023 bytes.
void CopyFormat(char* buffer, const char* format);

}  // namespace korvel
