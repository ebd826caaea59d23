// The elements and attributes of schema files. docs/qmx.rng contains the same as a grammar; a test compares the two.
#include "qmx_xml/schema_form.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "qmx/qmx_limits.h"

namespace qmx {
namespace {

using Kind = ElementId::Kind;

constexpr std::uint64_t kMaxInt32 = 2147483647;
constexpr std::uint64_t kMaxInt64 = 9223372036854775807;
constexpr bool kRequired = true;
constexpr bool kOptional = false;

AttributeForm Text(Attribute id, const char* name, bool is_required, std::size_t longest = kMaxAttributeBytes) {
  return {id, name, is_required, ValueForm::kText, 0, longest};
}

AttributeForm Number(Attribute id, const char* name, bool is_required, std::uint64_t lowest, std::uint64_t highest) {
  return {id, name, is_required, ValueForm::kNumber, lowest, highest};
}

AttributeForm Choice(Attribute id, const char* name, std::vector<std::string_view> choices) {
  return {id, name, kOptional, ValueForm::kChoice, 0, 0, std::move(choices)};
}

const AttributeForm& Name() {
  static const AttributeForm form = Text(Attribute::kName, "name", kRequired, kMaxNameBytes);
  return form;
}

const AttributeForm& Desc() {
  static const AttributeForm form = {Attribute::kDesc, "desc", kOptional, ValueForm::kComment};
  return form;
}

const AttributeForm& KeyEntries() {
  static const AttributeForm form = Text(Attribute::kEntries, "entries", kRequired);
  return form;
}

const std::vector<ElementForm>& Elements() {
  static const std::vector<ElementForm> elements = {
      {Kind::kMetalib,
       "metalib",
       Kind::kMetalib,
       {Name(), Number(Attribute::kVersion, "version", kRequired, 0, kMaxInt32),
        Choice(Attribute::kProtocol, "protocol", {"QMX", "TLV"}), Desc()}},
      {Kind::kMeta,
       "meta",
       Kind::kMetalib,
       {Name(), Choice(Attribute::kKind, "kind", {"structure", "union"}), Text(Attribute::kCustomAttr, "customattr", kOptional),
        Desc()}},
      {Kind::kEntry,
       "entry",
       Kind::kMeta,
       {Name(), Text(Attribute::kType, "type", kRequired), Number(Attribute::kId, "id", kOptional, 0, kMaxInt32),
        Number(Attribute::kVersion, "version", kOptional, 0, kMaxInt32),
        Number(Attribute::kSize, "size", kOptional, 1, kMaxInt64), Number(Attribute::kCount, "count", kOptional, 1, kMaxInt32),
        Text(Attribute::kRefer, "refer", kOptional), Text(Attribute::kCustomAttr2, "customattr2", kOptional), Desc()}},
      {Kind::kPrimaryKey, "primarykey", Kind::kMeta, {KeyEntries(), Desc()}},
      {Kind::kSplittableKey, "splittablekey", Kind::kMeta, {KeyEntries(), Desc()}},
      {Kind::kIndex, "index", Kind::kMeta, {Name(), Desc()}},
      // The desc of a column is its direction, not a description.
      {Kind::kColumn,
       "column",
       Kind::kIndex,
       {Text(Attribute::kEntry, "entry", kRequired), Choice(Attribute::kDesc, "desc", {"true", "false"})}},
  };
  return elements;
}

template <class Form>
const Form* FindByName(const std::vector<Form>& forms, const char* name) {
  const std::uint64_t number = ShortName(name);
  const auto found = std::ranges::find_if(forms, [&](const Form& form) { return form.name.Is(name, number); });
  return found == forms.end() ? nullptr : &*found;
}

}  // namespace

ElementForm::ElementForm(ElementId::Kind kind_, const char* name_, ElementId::Kind parent_,
                         std::vector<AttributeForm> attributes_)
    : kind(kind_), name(name_), parent(parent_), attributes(std::move(attributes_)) {
  for (const AttributeForm& attribute : attributes) required.set(static_cast<std::size_t>(attribute.id), attribute.is_required);
}

const AttributeForm* ElementForm::Find(const char* attribute) const { return FindByName(attributes, attribute); }

const ElementForm* FindElement(const char* name) { return FindByName(Elements(), name); }

std::vector<std::string_view> ChildNames(const ElementForm* parent) {
  std::vector<std::string_view> names;
  for (const ElementForm& element : Elements()) {
    const bool is_child = parent == nullptr ? element.IsOutermost() : !element.IsOutermost() && element.parent == parent->kind;
    if (is_child) names.emplace_back(element.name);
  }
  return names;
}

std::vector<std::string_view> AttributeNames(const ElementForm& element) {
  std::vector<std::string_view> names;
  for (const AttributeForm& attribute : element.attributes) names.emplace_back(attribute.name);
  return names;
}

std::string Listed(const std::vector<std::string_view>& words) { return words.empty() ? "none" : korvel::Join(words, ", "); }

}  // namespace qmx
