// The attributes of one start tag, checked against the description of its element.
#include "qmx_xml/start_tag.h"

#include <algorithm>

#include "base/did_you_mean.h"
#include "base/text.h"

namespace qmx {
namespace {

using korvel::DidYouMean;
using korvel::Quote;

bool IsDecimal(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

// Nullopt if the text is not a decimal number, or too large. Parsed byte by byte: the parser has just written these bytes one by
// one, and wider reads, as in strlen, would stall on them.
std::optional<std::uint64_t> ParseDecimal(const char* text) {
  std::uint64_t number = 0;
  const char* at = text;
  for (; *at >= '0' && *at <= '9'; ++at) {
    const auto digit = static_cast<std::uint64_t>(*at - '0');
    if (__builtin_mul_overflow(number, 10U, &number) || __builtin_add_overflow(number, digit, &number)) return std::nullopt;
  }
  return at == text || *at != '\0' ? std::nullopt : std::optional(number);
}

}  // namespace

StartTag::StartTag(const ElementForm& form, const char** attributes, std::string_view text, std::size_t offset, ErrorList& errors)
    : form_(form), attributes_(attributes), text_(text), offset_(offset), errors_(errors) {
  for (std::size_t i = 0; attributes[2 * i] != nullptr && !errors_.IsFull(); ++i) {
    const char* const name = attributes[2 * i];
    if (const AttributeForm* attribute = form_.Find(name)) {
      Take(*attribute, attributes[2 * i + 1]);
    } else {
      RefuseUnknown(i, name);
    }
  }
  if ((form_.required & ~present_).any()) RefuseMissing();
}

void StartTag::Take(const AttributeForm& attribute, const char* value) {
  const std::size_t index = Index(attribute.id);
  present_.set(index);
  switch (attribute.form) {
    case ValueForm::kText:
      accepted_.set(index, TakeText(attribute, value));
      break;
    case ValueForm::kNumber:
      accepted_.set(index, TakeNumber(attribute, value));
      break;
    case ValueForm::kChoice:
      accepted_.set(index, TakeChoice(attribute, value));
      break;
    case ValueForm::kComment:
      break;
  }
}

bool StartTag::TakeText(const AttributeForm& attribute, std::string_view value) {
  texts_[Index(attribute.id)] = value;
  if (value.size() <= attribute.highest) return true;
  Refuse(attribute.id, Quote(attribute.name) + " has " + std::to_string(value.size()) + " bytes; allowed: at most " +
                           std::to_string(attribute.highest));
  return false;
}

bool StartTag::TakeNumber(const AttributeForm& attribute, const char* value) {
  const std::optional<std::uint64_t> number = ParseDecimal(value);
  if (number && *number >= attribute.lowest && *number <= attribute.highest) {
    numbers_[Index(attribute.id)] = *number;
    return true;
  }
  Refuse(attribute.id, Quote(attribute.name) + " is " + Quote(value) +
                           (IsDecimal(value) ? ", out of range" : ", which is not a number") +
                           "; allowed: " + std::to_string(attribute.lowest) + " to " + std::to_string(attribute.highest));
  return false;
}

bool StartTag::TakeChoice(const AttributeForm& attribute, std::string_view value) {
  texts_[Index(attribute.id)] = value;
  if (std::ranges::find(attribute.choices, value, &ChoiceForm::value) != attribute.choices.end()) return true;
  const std::vector<std::string_view> allowed = ChoiceValues(attribute);
  Refuse(attribute.id,
         Quote(attribute.name) + " is " + Quote(value) + DidYouMean(value, allowed) + "; allowed: " + Listed(allowed));
  return false;
}

void StartTag::RefuseUnknown(std::size_t position, std::string_view name) {
  const std::vector<std::string_view> names = AttributeNames(form_);
  errors_.Add(SpansOf(position).name.begin, "unknown attribute " + Quote(name) + " of element " + Quote(form_.name) +
                                                DidYouMean(name, names) + "; allowed: " + Listed(names));
}

void StartTag::RefuseMissing() {
  std::vector<std::string_view> required;
  for (const AttributeForm& attribute : form_.attributes) {
    if (attribute.is_required) required.emplace_back(attribute.name);
  }
  for (const AttributeForm& attribute : form_.attributes) {
    if (!attribute.is_required || Has(attribute.id)) continue;
    errors_.Add(offset_, "element " + Quote(form_.name) + " has no attribute " + Quote(attribute.name) +
                             "; required: " + Listed(required));
  }
}

void StartTag::Refuse(Attribute id, std::string what) {
  std::size_t offset = offset_;
  for (std::size_t i = 0; attributes_[2 * i] != nullptr; ++i) {
    const AttributeForm* attribute = form_.Find(attributes_[2 * i]);
    if (attribute != nullptr && attribute->id == id) offset = SpansOf(i).value.begin;
  }
  errors_.Add(offset, std::move(what));
}

AttributeSpans StartTag::SpansOf(std::size_t position) {
  if (spans_.empty()) {
    TagScanner scanner(text_, offset_);
    while (const auto found = scanner.Next()) spans_.push_back(*found);
  }
  return position < spans_.size() ? spans_[position] : AttributeSpans{{offset_, offset_}, {offset_, offset_}};
}

}  // namespace qmx
