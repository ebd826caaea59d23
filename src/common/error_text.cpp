// Formatting into an error buffer. Tested by tests/rules/text_test.cpp.
#include "common/error_text.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace korvel {

void FormatText(char* buffer, const char* format, ...) {
  char text[kErrorTextSize] = "";  // not in the buffer: an argument may be the text that the buffer still holds
  va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  if (length < 0) text[0] = '\0';
  std::memcpy(buffer, text, std::strlen(text) + 1);
}

void CopyFormat(char* buffer, const char* format) {
  std::size_t length = 0;
  for (const char* p = format; *p != '\0' && length < kErrorTextSize - 1; ++p) {
    if (*p == '%' && p[1] == '\0') {
      length = 0;
      break;
    }
    if (*p == '%' && p[1] == '%') ++p;
    buffer[length++] = *p;
  }
  buffer[length] = '\0';
}

}  // namespace korvel
