// The elements and attributes of schema files, as data.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/qmx_source_map.h"

namespace qmx {

// Every attribute name of the form.
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

enum class ValueForm { kText, kNumber, kChoice };

struct AttributeForm {
  Attribute id;
  std::string_view name;
  bool is_required = false;
  ValueForm form = ValueForm::kText;
  std::uint64_t lowest = 0;                    // kNumber
  std::uint64_t highest = 0;                   // kNumber
  std::vector<std::string_view> choices = {};  // kChoice
};

struct ElementForm {
  ElementId::Kind kind;
  std::string_view name;
  ElementId::Kind parent;  // itself for the outermost element
  std::vector<AttributeForm> attributes;

  bool IsOutermost() const { return parent == kind; }
  const AttributeForm* Find(std::string_view attribute) const;  // null if there is none
};

// The form of an element by name; null if there is none.
const ElementForm* FindElement(std::string_view name);

// Names of the elements that may stand in an element, or outermost for null.
std::vector<std::string_view> ChildNames(const ElementForm* parent);

std::vector<std::string_view> AttributeNames(const ElementForm& element);

// "a, b, c"; "none" for no words.
std::string Listed(const std::vector<std::string_view>& words);

}  // namespace qmx
