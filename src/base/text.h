// Puts texts together: lists with separators, and locations in files. Escapes nothing: see base/quote.h and base/one_line.h.
//
// Every function is linear in its result and may throw std::bad_alloc only.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace korvel {

// Appends `part` to a list that is built step by step, behind `separator` unless the list is still empty.
inline void AppendPart(std::string& list, std::string_view separator, std::string_view part) {
  if (!list.empty()) list.append(separator);
  list.append(part);
}

// The items in order with `separator` between them; "" for no items. `text_of(item)` is the text of an item, by default the
// item itself: a member pointer or a function that returns anything convertible to std::string_view.
template <class Items, class TextOf = std::identity>
std::string Join(const Items& items, std::string_view separator, TextOf text_of = {}) {
  std::string list;
  bool is_first = true;
  for (const auto& item : items) {
    if (!is_first) list.append(separator);
    is_first = false;
    list.append(std::string_view(std::invoke(text_of, item)));
  }
  return list;
}

// "FILE:LINE:COLUMN", the form in which compilers and editors name a location. `location` has the members `line` and `column`.
template <class LineColumn>
std::string FileLineColumn(std::string_view file, const LineColumn& location) {
  return std::string(file) + ":" + std::to_string(location.line) + ":" + std::to_string(location.column);
}

}  // namespace korvel
