// What all functions of the C interface share: exceptions become results and errors, and structs are filled up to the size that
// the caller knows.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>

#include "korvelcheck/korvelcheck.h"

namespace korvel::capi {

// Thrown for KC_ERROR_ARGUMENT.
struct ArgumentError {
  std::string text;  // "kc_check: old_schema is NULL"
};

// Throws ArgumentError if a required argument of a function is null.
inline void Require(const void* argument, const char* function, const char* name) {
  if (argument == nullptr) throw ArgumentError{std::string(function) + ": " + name + " is NULL"};
}

// The result of the exception that is being handled. Sets *error unless `error` is null.
int ResultOfException(kc_error** error) noexcept;

// Runs the body of a function. No exception leaves it.
template <class Body>
int Call(kc_error** error, const Body& body) noexcept {
  if (error != nullptr) *error = nullptr;
  try {
    body();
    return KC_OK;
  } catch (...) {
    return ResultOfException(error);
  }
}

inline bool IsSize(std::size_t size) { return size > 0 && size <= KC_MAX_STRUCT; }

// Zeroes a struct of the caller: a failed call leaves no verdict in it.
inline int Clear(void* to, std::size_t size, int result) noexcept {
  if (to != nullptr && IsSize(size)) std::memset(to, 0, size);
  return result;
}

// Copies `value` to a struct of the caller, which may be that of an earlier or later version.
template <class Struct>
int Fill(const Struct& value, void* to, std::size_t size) noexcept {
  static_assert(std::is_trivially_copyable_v<Struct> && sizeof(Struct) <= KC_MAX_STRUCT);
  if (to == nullptr || !IsSize(size)) return KC_ERROR_ARGUMENT;
  std::memset(to, 0, size);
  std::memcpy(to, &value, std::min(size, sizeof(value)));
  return KC_OK;
}

// Fills in an element of a list; KC_END behind the last one.
template <class List, class ValueOf>
int FillElement(const List& list, std::size_t index, const ValueOf& value_of, void* to, std::size_t size) noexcept {
  if (to == nullptr || !IsSize(size)) return KC_ERROR_ARGUMENT;
  return index < list.size() ? Fill(value_of(list[index]), to, size) : Clear(to, size, KC_END);
}

}  // namespace korvel::capi
