// The elements and attributes of schema files, as data.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/qmx_source_map.h"
#include "qmx/short_name.h"

namespace qmx {

// All attribute names of the format.
enum class Attribute {
  kName,
  kVersion,
  kProtocol,
  kKind,
  kCustomAttr,
  kType,
  kId,
  kSize,
  kCount,
  kRefer,
  kCustomAttr2,
  kEntries,
  kEntry,
  kDesc,
  kNumberOfAttributes
};

enum class ValueForm { kText, kNumber, kChoice, kComment };  // kComment: any text, which is ignored

// A name in the format.
struct FormName {
  FormName(const char* name) : text(name), number(ShortName(name)) {}

  bool Is(const char* other, std::uint64_t other_number) const {
    return number == other_number && (IsWholeName(number) || std::strcmp(text, other) == 0);
  }
  operator std::string_view() const { return text; }

  const char* text;
  std::uint64_t number;  // its ShortName
};

struct AttributeForm {
  Attribute id;
  FormName name;
  bool is_required = false;
  ValueForm form = ValueForm::kText;
  std::uint64_t lowest = 0;                    // kNumber
  std::uint64_t highest = 0;                   // kNumber; for kText the maximum length in bytes
  std::vector<std::string_view> choices = {};  // kChoice
};

using AttributeSet = std::bitset<static_cast<std::size_t>(Attribute::kNumberOfAttributes)>;

struct ElementForm {
  ElementForm(ElementId::Kind kind, const char* name, ElementId::Kind parent, std::vector<AttributeForm> attributes);

  ElementId::Kind kind;
  FormName name;
  ElementId::Kind parent;  // the element itself for the outermost element
  std::vector<AttributeForm> attributes;
  AttributeSet required;

  bool IsOutermost() const { return parent == kind; }
  const AttributeForm* Find(const char* attribute) const;  // null if there is none
};

// The description of an element by name; null if there is none.
const ElementForm* FindElement(const char* name);

// Names of the elements that are allowed inside an element, or outermost for null.
std::vector<std::string_view> ChildNames(const ElementForm* parent);

std::vector<std::string_view> AttributeNames(const ElementForm& element);

// "a, b, c"; "none" for an empty list.
std::string Listed(const std::vector<std::string_view>& words);

}  // namespace qmx
