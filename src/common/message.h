// A text with conversions, checked against the types of its arguments when compiled.
#pragma once

#include <cstddef>
#include <type_traits>

namespace korvel {

// The next conversion of a format, behind its '%'; null if there is none.
consteval const char* NextConversion(const char* format) {
  for (; *format != '\0'; ++format) {
    if (*format != '%') continue;
    if (format[1] != '%') return format + 1;
    ++format;
  }
  return nullptr;
}

// Whether the conversion prints a T: %s a text, %d an int, %zu or %lu a size.
template <class T>
consteval bool Prints(const char* conversion) {
  static_assert(std::is_same_v<T, const char*> || std::is_same_v<T, int> || std::is_same_v<T, std::size_t>);
  if (conversion == nullptr) return false;
  if constexpr (std::is_same_v<T, const char*>) return conversion[0] == 's';
  if constexpr (std::is_same_v<T, int>) return conversion[0] == 'd';
  return (conversion[0] == 'z' || conversion[0] == 'l') && conversion[1] == 'u';
}
static_assert(std::is_same_v<std::size_t, unsigned long>, "%lu prints a size");

// A format for exactly Args. Any other number or kind of conversions does not compile.
template <class... Args>
struct Message {
  consteval Message(const char* format) : text(format) {
    (Expect<Args>(format), ...);
    if (NextConversion(format) != nullptr) AConversionHasNoArgument();
  }

  const char* text;

 private:
  // Cannot be called when compiled: what says why a message does not compile.
  static void AConversionHasNoArgument();
  static void AConversionDoesNotFitItsArgument();

  template <class T>
  static consteval void Expect(const char*& format) {
    format = NextConversion(format);
    if (!Prints<T>(format)) AConversionDoesNotFitItsArgument();
  }
};

}  // namespace korvel
