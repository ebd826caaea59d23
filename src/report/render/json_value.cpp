// Tested by tests/report/json_value_test.cpp.
#include "report/render/json_value.h"

#include <algorithm>

namespace korvel {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

bool IsBetween(char c, int first, int last) {
  const int byte = static_cast<unsigned char>(c);
  return first <= byte && byte <= last;
}

// The bytes of the character at the start of a text.
struct Sequence {
  std::size_t length;    // that it should have
  std::size_t accepted;  // of them, those that are there: the start of the text; 0 if no character begins like this
};

Sequence SequenceAt(std::string_view text) {
  const char lead = text.front();
  const std::size_t length = IsBetween(lead, 0x00, 0x7F)   ? 1
                             : IsBetween(lead, 0xC2, 0xDF) ? 2
                             : IsBetween(lead, 0xE0, 0xEF) ? 3
                             : IsBetween(lead, 0xF0, 0xF4) ? 4
                                                           : 0;
  if (length == 0) return {1, 0};
  // The second byte excludes overlong forms, surrogates and what is above U+10FFFF.
  const int first = lead == '\xE0' ? 0xA0 : lead == '\xF0' ? 0x90 : 0x80;
  const int last = lead == '\xED' ? 0x9F : lead == '\xF4' ? 0x8F : 0xBF;
  std::size_t accepted = 1;
  while (accepted < std::min(length, text.size())) {
    const bool is_second = accepted == 1;
    if (!IsBetween(text[accepted], is_second ? first : 0x80, is_second ? last : 0xBF)) break;
    ++accepted;
  }
  return {length, accepted};
}

void AppendControl(std::string& out, char c) {
  constexpr std::string_view kLetters = "\bb\ff\nn\rr\tt\"\"\\\\";
  constexpr char kDigits[] = "0123456789abcdef";
  for (std::size_t i = 0; i < kLetters.size(); i += 2) {
    if (kLetters[i] == c) {
      out.append(1, '\\').append(1, kLetters[i + 1]);
      return;
    }
  }
  out.append("\\u00").append(1, kDigits[c >> 4]).append(1, kDigits[c & 15]);
}

bool IsPlain(char c) { return IsBetween(c, 0x20, 0x7F) && c != '"' && c != '\\'; }

// A sequence that ends too early becomes one replacement character.
void AppendText(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    const auto plain = static_cast<std::size_t>(std::ranges::find_if_not(text, IsPlain) - text.begin());
    out.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (text.empty()) break;
    const Sequence sequence = SequenceAt(text);
    if (sequence.length == 1 && sequence.accepted == 1) {
      AppendControl(out, text.front());
    } else {
      out.append(sequence.accepted == sequence.length ? text.substr(0, sequence.length) : kReplacement);
    }
    text.remove_prefix(std::max<std::size_t>(sequence.accepted, 1));
  }
  out += '"';
}

void AppendLine(std::string& out, int indent, std::size_t depth) {
  if (indent >= 0) out.append(1, '\n').append(static_cast<std::size_t>(indent) * depth, ' ');
}

// "[", `count` items with `append`, "]".
template <class Append>
void AppendItems(std::string& out, const char* brackets, std::size_t count, int indent, std::size_t depth, const Append& append) {
  out += brackets[0];
  for (std::size_t i = 0; i < count; ++i) {
    if (i > 0) out += ',';
    AppendLine(out, indent, depth + 1);
    append(i);
  }
  if (count > 0) AppendLine(out, indent, depth);
  out += brackets[1];
}

}  // namespace

Json::Json(std::initializer_list<Element> elements) {
  if (!std::ranges::all_of(elements, [](const Element& element) { return element.value().IsPair(); })) {
    *this = array(elements);
    return;
  }
  Object& object = value_.emplace<Object>();
  object.names.reserve(elements.size());
  object.values.reserve(elements.size());
  for (const Element& element : elements) {
    Json pair = element.Take();
    List& parts = std::get<List>(pair.value_);
    object.names.push_back(std::move(std::get<std::string>(parts[0].value_)));
    object.values.push_back(std::move(parts[1]));
  }
}

Json Json::array(std::initializer_list<Element> elements) {
  Json json;
  List& list = json.value_.emplace<List>();
  list.reserve(elements.size());
  for (const Element& element : elements) list.push_back(element.Take());
  return json;
}

Json Json::number(std::string digits) {
  Json json;
  json.value_ = Digits{std::move(digits)};
  return json;
}

Json Json::object() {
  Json json;
  json.value_.emplace<Object>();
  return json;
}

bool Json::IsPair() const {
  const List* const list = std::get_if<List>(&value_);
  return list != nullptr && list->size() == 2 && std::holds_alternative<std::string>(list->front().value_);
}

Json& Json::operator[](std::string_view name) {
  if (std::holds_alternative<std::monostate>(value_)) value_.emplace<Object>();
  auto& [names, values] = std::get<Object>(value_);
  const auto position = static_cast<std::size_t>(std::ranges::find(names, name) - names.begin());
  if (position < names.size()) return values[position];
  names.emplace_back(name);
  return values.emplace_back();
}

void Json::push_back(Json value) {
  if (std::holds_alternative<std::monostate>(value_)) value_.emplace<List>();
  std::get<List>(value_).push_back(std::move(value));
}

void Json::update(const Json& object) {
  for (std::size_t i = 0; i < object.names().size(); ++i) (*this)[object.names()[i]] = object.values()[i];
}

std::string Json::dump(int indent) const {
  std::string out;
  AppendTo(out, indent, 0);
  return out;
}

void Json::AppendTo(std::string& out, int indent, std::size_t depth) const {
  if (const auto* const is_true = std::get_if<bool>(&value_)) {
    out += *is_true ? "true" : "false";
  } else if (const auto* const number = std::get_if<std::int64_t>(&value_)) {
    out += std::to_string(*number);
  } else if (const auto* const natural = std::get_if<std::uint64_t>(&value_)) {
    out += std::to_string(*natural);
  } else if (const auto* const digits = std::get_if<Digits>(&value_)) {
    out += digits->text;
  } else if (const auto* const text = std::get_if<std::string>(&value_)) {
    AppendText(out, *text);
  } else if (const auto* const list = std::get_if<List>(&value_)) {
    AppendItems(out, "[]", list->size(), indent, depth, [&](std::size_t i) { (*list)[i].AppendTo(out, indent, depth + 1); });
  } else if (const auto* const object = std::get_if<Object>(&value_)) {
    AppendItems(out, "{}", object->names.size(), indent, depth, [&](std::size_t i) {
      AppendText(out, object->names[i]);
      out += indent >= 0 ? ": " : ":";
      object->values[i].AppendTo(out, indent, depth + 1);
    });
  } else {
    out += "null";
  }
}

}  // namespace korvel
