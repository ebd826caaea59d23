// A JSON value. Destroying it allocates nothing: when memory runs out, the exception reaches the caller.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace korvel {

class Json {
 public:
  class Element;

  Json() = default;  // null
  template <std::same_as<bool> Bool>
  Json(Bool value) : value_(value) {}
  template <std::signed_integral Number>
  Json(Number number) : value_(std::int64_t{number}) {}
  template <std::unsigned_integral Number>
  requires(!std::same_as<Number, bool>) Json(Number number) : value_(std::uint64_t{number}) {}
  Json(std::nullptr_t) {}
  Json(const char* text) : value_(std::string(text)) {}
  Json(std::string_view text) : value_(std::string(text)) {}
  Json(std::string text) : value_(std::move(text)) {}
  template <class Value>
  Json(const std::vector<Value>& values) : value_(List()) {
    for (const Value& value : values) push_back(value);
  }
  // {{"name", value}, ...} is an object, everything else an array.
  Json(std::initializer_list<Element> elements);

  // A number that is written as it is: "98.1".
  static Json number(std::string digits);
  static Json array(std::initializer_list<Element> elements = {});
  static Json object();

  // The value of a member, null if it is new; it becomes the last one. Linear in the number of members. REQUIRES: an object or
  // null, which becomes an object.
  Json& operator[](std::string_view name);

  // REQUIRES: an array or null, which becomes an array.
  void push_back(Json value);

  // Adds the members of `object`, or replaces their values. REQUIRES: two objects.
  void update(const Json& object);

  // REQUIRES: an array.
  std::size_t size() const { return std::get<List>(value_).size(); }
  // REQUIRES: a string.
  const std::string& text() const { return std::get<std::string>(value_); }
  // The members, in order. REQUIRES: an object.
  const std::vector<std::string>& names() const { return std::get<Object>(value_).names; }
  const std::vector<Json>& values() const { return std::get<Object>(value_).values; }

  // As text: `indent` blanks for each level, or on one line without blanks if it is negative. Invalid UTF-8 is replaced by
  // U+FFFD.
  std::string dump(int indent) const;

 private:
  using List = std::vector<Json>;
  struct Object {
    std::vector<std::string> names;
    List values;
  };

  struct Digits {
    std::string text;
  };

  bool IsPair() const;
  void AppendTo(std::string& out, int indent, std::size_t depth) const;

  std::variant<std::monostate, bool, std::int64_t, std::uint64_t, Digits, std::string, List, Object> value_;
};

// An element of an initializer list, from which the value can be moved.
class Json::Element {
 public:
  template <class Value, class = std::enable_if_t<std::is_constructible_v<Json, Value&&>>>
  Element(Value&& value) : value_(std::forward<Value>(value)) {}
  Element(std::initializer_list<Element> elements) : value_(elements) {}

  const Json& value() const { return value_; }
  Json Take() const { return std::move(value_); }

 private:
  mutable Json value_;
};

}  // namespace korvel
