// The attributes of one start tag, checked against the form of its element.
#include "qmx_xml/start_tag.h"

#include <algorithm>
#include <charconv>

#include "qmx/did_you_mean.h"
#include "qmx/quote.h"

namespace qmx {
namespace {

bool IsDecimal(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

StartTag::StartTag(const ElementForm& form, const char** attributes, std::string_view text, std::size_t offset, ErrorList& errors)
    : form_(form), text_(text), offset_(offset), errors_(errors) {
  for (std::size_t i = 0; attributes[2 * i] != nullptr && !errors_.IsFull(); ++i) {
    if (const AttributeForm* attribute = form_.Find(attributes[2 * i])) {
      Take(*attribute, i, attributes[2 * i + 1]);
    } else {
      RefuseUnknown(i, attributes[2 * i]);
    }
  }
  RefuseMissing();
}

void StartTag::Take(const AttributeForm& attribute, std::size_t position, std::string_view value) {
  At(attribute.id).position = position;
  switch (attribute.form) {
    case ValueForm::kText:
      At(attribute.id).text = value;
      break;
    case ValueForm::kNumber:
      TakeNumber(attribute, value);
      break;
    case ValueForm::kChoice:
      TakeChoice(attribute, value);
      break;
  }
}

void StartTag::TakeNumber(const AttributeForm& attribute, std::string_view value) {
  std::uint64_t number = 0;
  const auto result = std::from_chars(value.data(), value.data() + value.size(), number);
  const bool is_in_range = result.ec == std::errc() && number >= attribute.lowest && number <= attribute.highest;
  if (IsDecimal(value) && is_in_range) {
    At(attribute.id).number = number;
    return;
  }
  Refuse(attribute.id, Quote(attribute.name) + " is " + Quote(value) +
                           (IsDecimal(value) ? ", out of range" : ", which is not a number") +
                           "; allowed: " + std::to_string(attribute.lowest) + " to " + std::to_string(attribute.highest));
}

void StartTag::TakeChoice(const AttributeForm& attribute, std::string_view value) {
  if (std::ranges::find(attribute.choices, value) != attribute.choices.end()) {
    At(attribute.id).text = value;
    return;
  }
  Refuse(attribute.id, Quote(attribute.name) + " is " + Quote(value) + DidYouMean(value, attribute.choices) +
                           "; allowed: " + Listed(attribute.choices));
}

void StartTag::RefuseUnknown(std::size_t position, std::string_view name) {
  const std::vector<std::string_view> names = AttributeNames(form_);
  errors_.Add(SpansOf(position).name.begin, "unknown attribute " + Quote(name) + " of element " + Quote(form_.name) +
                                                DidYouMean(name, names) + "; allowed: " + Listed(names));
}

void StartTag::RefuseMissing() {
  std::vector<std::string_view> required;
  for (const AttributeForm& attribute : form_.attributes) {
    if (attribute.is_required) required.push_back(attribute.name);
  }
  for (const AttributeForm& attribute : form_.attributes) {
    if (!attribute.is_required || Has(attribute.id)) continue;
    errors_.Add(offset_, "element " + Quote(form_.name) + " has no attribute " + Quote(attribute.name) +
                             "; required: " + Listed(required));
  }
}

void StartTag::Refuse(Attribute id, std::string what) {
  const std::optional<std::size_t> position = At(id).position;
  errors_.Add(position ? SpansOf(*position).value.begin : offset_, std::move(what));
}

AttributeSpans StartTag::SpansOf(std::size_t position) {
  if (spans_.empty()) {
    TagScanner scanner(text_, offset_);
    while (const auto found = scanner.Next()) spans_.push_back(*found);
  }
  return position < spans_.size() ? spans_[position] : AttributeSpans{{offset_, offset_}, {offset_, offset_}};
}

}  // namespace qmx
