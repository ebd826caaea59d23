// Formats of texts, checked against the types of their arguments at compile time.
#pragma once

#include <cstddef>
#include <type_traits>

namespace korvel {

// How the conversions of a format are read; used by TextFormat alone.
namespace text_format_detail {

// The next conversion of a format, behind its '%'; null if there is none.
consteval const char* NextConversion(const char* format) {
  for (; *format != '\0'; ++format) {
    if (*format != '%') continue;
    if (format[1] != '%') return format + 1;
    ++format;
  }
  return nullptr;
}

// Whether the conversion prints a T: %s a string, %d an int, %zu or %lu a size.
template <class T>
consteval bool Prints(const char* conversion) {
  static_assert(std::is_same_v<T, const char*> || std::is_same_v<T, int> || std::is_same_v<T, std::size_t>);
  if (conversion == nullptr) return false;
  if constexpr (std::is_same_v<T, const char*>) return conversion[0] == 's';
  if constexpr (std::is_same_v<T, int>) return conversion[0] == 'd';
  return (conversion[0] == 'z' || conversion[0] == 'l') && conversion[1] == 'u';
}
static_assert(std::is_same_v<std::size_t, unsigned long>, "%lu prints a size");

}  // namespace text_format_detail

// A printf format for exactly Args: any other number or kind of conversions does not compile. Holds a pointer to a string
// literal.
template <class... Args>
struct TextFormat {
  consteval TextFormat(const char* format) : text(format) {
    (Expect<Args>(format), ...);
    if (text_format_detail::NextConversion(format) != nullptr) AConversionHasNoArgument();
  }

  const char* text;

 private:
  // Not constexpr: a format that calls one of these does not compile, and the compiler names it.
  static void AConversionHasNoArgument();
  static void AConversionDoesNotFitItsArgument();

  template <class T>
  static consteval void Expect(const char*& format) {
    format = text_format_detail::NextConversion(format);
    if (!text_format_detail::Prints<T>(format)) AConversionDoesNotFitItsArgument();
  }
};

}  // namespace korvel
