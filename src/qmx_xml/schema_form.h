// The elements and attributes of schema files, as data: what the reader allows, and the documentation that editors show.
// Documentation is one or two plain sentences without markup. It contains no ranges and allowed values: these are data, too.
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

// A value of an attribute that allows only some.
struct ChoiceForm {
  std::string_view value;
  std::string_view doc;
};

struct AttributeForm {
  Attribute id;
  FormName name;
  std::string_view doc;
  bool is_required = false;
  ValueForm form = ValueForm::kText;
  std::uint64_t lowest = 0;              // kNumber
  std::uint64_t highest = 0;             // kNumber; for kText the maximum length in bytes
  std::vector<ChoiceForm> choices = {};  // kChoice
};

using AttributeSet = std::bitset<static_cast<std::size_t>(Attribute::kNumberOfAttributes)>;

// How often an element occurs in its parent.
enum class Occurs { kOnce, kAtMostOnce, kAtLeastOnce, kAnyNumber };

struct ElementForm {
  ElementForm(ElementId::Kind kind, const char* name, std::string_view doc, ElementId::Kind parent, Occurs occurs,
              std::vector<AttributeForm> attributes);

  ElementId::Kind kind;
  FormName name;
  std::string_view doc;
  ElementId::Kind parent;  // the element itself for the outermost element
  Occurs occurs;           // for the grammar and for documentation; schema_handler.cpp checks it
  std::vector<AttributeForm> attributes;
  AttributeSet required;

  bool IsOutermost() const { return parent == kind; }
  const AttributeForm* Find(const char* attribute) const;  // null if there is none
};

// All elements; parents precede their children.
const std::vector<ElementForm>& Elements();

// The description of an element by name; null if there is none.
const ElementForm* FindElement(const char* name);

// Names of the elements that are allowed inside an element, or outermost for null.
std::vector<std::string_view> ChildNames(const ElementForm* parent);

std::vector<std::string_view> AttributeNames(const ElementForm& element);

// The values that an attribute of the form kChoice allows.
std::vector<std::string_view> ChoiceValues(const AttributeForm& attribute);

// "a, b, c"; "none" for an empty list.
std::string Listed(const std::vector<std::string_view>& words);

}  // namespace qmx
