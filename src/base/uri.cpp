// Tested by tests/lsp/uri_test.cpp and tests/report/formats_test.cpp.
#include "base/uri.h"

#include <charconv>

namespace korvel {
namespace {

constexpr std::string_view kFile = "file://";
constexpr std::string_view kLocalHost = "localhost";
constexpr std::string_view kUnescaped = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";

// The byte of "%2F" at the start of a text.
std::optional<char> Escaped(std::string_view text) {
  if (text.size() < 3 || text[0] != '%') return std::nullopt;
  unsigned char byte = 0;
  const auto [end, error] = std::from_chars(text.data() + 1, text.data() + 3, byte, 16);
  if (error != std::errc() || end != text.data() + 3 || byte == 0) return std::nullopt;
  return static_cast<char>(byte);
}

}  // namespace

std::optional<std::string> PathOf(std::string_view uri) {
  if (!uri.starts_with(kFile)) return std::nullopt;
  uri.remove_prefix(kFile.size());
  if (uri.starts_with(kLocalHost)) uri.remove_prefix(kLocalHost.size());
  if (!uri.starts_with('/')) return std::nullopt;
  std::string path;
  while (!uri.empty()) {
    const std::optional<char> escaped = Escaped(uri);
    if (uri.front() == '%' && !escaped) return std::nullopt;
    path += escaped.value_or(uri.front());
    uri.remove_prefix(escaped ? 3 : 1);
  }
  return path;
}

std::string UriOf(std::string_view path) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string uri(path.starts_with('/') ? kFile : "");
  for (const char c : path) {
    if (kUnescaped.find(c) != std::string_view::npos) {
      uri += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      uri.append(1, '%').append(1, kDigits[byte / 16]).append(1, kDigits[byte % 16]);
    }
  }
  return uri;
}

}  // namespace korvel
