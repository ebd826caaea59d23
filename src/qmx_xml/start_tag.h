// The attributes of one start tag, checked against the description of its element.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/tag_scanner.h"
#include "qmx_xml/schema_form.h"
#include "qmx_xml/xml_faults.h"

namespace qmx {

class StartTag {
 public:
  // Checks each attribute by itself and adds its faults to `errors`. `attributes` contains names and values alternately, in the
  // order of the tag, and ends in null; `offset` is the position of the tag in the file `text`. All arguments must outlive the
  // tag.
  StartTag(const ElementForm& form, const char** attributes, std::string_view text, std::size_t offset, ErrorList& errors);

  const ElementForm& form() const { return form_; }
  std::size_t offset() const { return offset_; }

  // Whether the tag has the attribute, refused or not.
  bool Has(Attribute id) const { return present_[Index(id)]; }

  // The value; nullopt if it is absent or was refused.
  std::optional<std::string_view> Text(Attribute id) const {
    return accepted_[Index(id)] ? std::optional(texts_[Index(id)]) : std::nullopt;
  }
  std::optional<std::uint64_t> Number(Attribute id) const {
    return accepted_[Index(id)] ? std::optional(numbers_[Index(id)]) : std::nullopt;
  }

  // Refuses the value of an attribute of the tag, or the tag if it has no such attribute.
  void Refuse(Attribute id, std::string what);

 private:
  static constexpr std::size_t kAttributes = static_cast<std::size_t>(Attribute::kNumberOfAttributes);
  static std::size_t Index(Attribute id) { return static_cast<std::size_t>(id); }

  void Take(const AttributeForm& attribute, const char* value);
  bool TakeText(const AttributeForm& attribute, std::string_view value);
  bool TakeNumber(const AttributeForm& attribute, const char* value);
  bool TakeChoice(const AttributeForm& attribute, std::string_view value);
  void RefuseUnknown(std::size_t position, std::string_view name);
  void RefuseMissing();

  // The location in the file of the attribute at that position of the tag.
  AttributeSpans SpansOf(std::size_t position);

  const ElementForm& form_;
  const char** attributes_;
  std::string_view text_;
  std::size_t offset_;
  ErrorList& errors_;
  AttributeSet present_;
  AttributeSet accepted_;
  std::array<std::string_view, kAttributes> texts_;  // accepted texts and choices
  std::array<std::uint64_t, kAttributes> numbers_;   // accepted numbers
  std::vector<AttributeSpans> spans_;                // filled on first use
};

}  // namespace qmx
