// The attributes of one start tag, checked against the form of its element.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/tag_scanner.h"
#include "qmx_xml/error_list.h"
#include "qmx_xml/schema_form.h"

namespace qmx {

class StartTag {
 public:
  // Checks everything that can be said of an attribute by itself and adds what is wrong to `errors`. `attributes` are names and
  // values in turn, in the order of the tag, ending in null; `offset` is the place of the tag in the file `text`. All of them
  // must outlive the tag.
  StartTag(const ElementForm& form, const char** attributes, std::string_view text, std::size_t offset, ErrorList& errors);

  const ElementForm& form() const { return form_; }
  std::size_t offset() const { return offset_; }

  // Whether the attribute stands in the tag, refused or not.
  bool Has(Attribute id) const { return At(id).position.has_value(); }

  // The value; nullopt where it is absent or was refused.
  std::optional<std::string_view> Text(Attribute id) const { return At(id).text; }
  std::optional<std::uint64_t> Number(Attribute id) const { return At(id).number; }

  // Refuses the value of an attribute of the tag, or the tag if it has no such attribute.
  void Refuse(Attribute id, std::string what);

 private:
  struct Value {
    std::optional<std::size_t> position;  // among the attributes of the tag
    std::optional<std::string_view> text;
    std::optional<std::uint64_t> number;
  };

  Value& At(Attribute id) { return values_[static_cast<std::size_t>(id)]; }
  const Value& At(Attribute id) const { return values_[static_cast<std::size_t>(id)]; }

  void Take(const AttributeForm& attribute, std::size_t position, std::string_view value);
  void TakeNumber(const AttributeForm& attribute, std::string_view value);
  void TakeChoice(const AttributeForm& attribute, std::string_view value);
  void RefuseUnknown(std::size_t position, std::string_view name);
  void RefuseMissing();

  // Where the attribute at that position of the tag stands in the file.
  AttributeSpans SpansOf(std::size_t position);

  const ElementForm& form_;
  std::string_view text_;
  std::size_t offset_;
  ErrorList& errors_;
  std::array<Value, static_cast<std::size_t>(Attribute::kNumberOfAttributes)> values_;
  std::vector<AttributeSpans> spans_;  // filled when the first one is asked for
};

}  // namespace qmx
