// Texts of tests with a mark where the cursor is.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace lsp_test {

struct MarkedText {
  // `marked` contains one '|', which is removed.
  explicit MarkedText(std::string marked) : text(std::move(marked)), offset(text.find('|')) { text.erase(offset, 1); }

  std::string text;
  std::size_t offset;
};

// The marked text in a structure "orders" of a library of version 7.
inline MarkedText InMeta(const std::string& marked) {
  return MarkedText("<metalib name='m' version='7'><meta name='orders'>" + marked + "</meta></metalib>");
}

}  // namespace lsp_test
