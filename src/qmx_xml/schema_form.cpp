// The elements and attributes of schema files. docs/qmx.rng says the same as a grammar; a test holds the two together.
#include "qmx_xml/schema_form.h"

#include <algorithm>

namespace qmx {
namespace {

using Kind = ElementId::Kind;

constexpr std::uint64_t kMaxInt32 = 2147483647;
constexpr std::uint64_t kMaxInt64 = 9223372036854775807;
constexpr bool kRequired = true;
constexpr bool kOptional = false;

AttributeForm Text(Attribute id, std::string_view name, bool is_required) { return {id, name, is_required}; }

AttributeForm Number(Attribute id, std::string_view name, bool is_required, std::uint64_t lowest, std::uint64_t highest) {
  return {id, name, is_required, ValueForm::kNumber, lowest, highest};
}

AttributeForm Choice(Attribute id, std::string_view name, std::vector<std::string_view> choices) {
  return {id, name, kOptional, ValueForm::kChoice, 0, 0, std::move(choices)};
}

const AttributeForm& Name() {
  static const AttributeForm form = Text(Attribute::kName, "name", kRequired);
  return form;
}

const AttributeForm& Desc() {
  static const AttributeForm form = Text(Attribute::kDesc, "desc", kOptional);
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
      // A column's desc is its direction, not a description.
      {Kind::kColumn,
       "column",
       Kind::kIndex,
       {Text(Attribute::kEntry, "entry", kRequired), Choice(Attribute::kDesc, "desc", {"true", "false"})}},
  };
  return elements;
}

}  // namespace

const AttributeForm* ElementForm::Find(std::string_view attribute) const {
  const auto found = std::ranges::find(attributes, attribute, &AttributeForm::name);
  return found == attributes.end() ? nullptr : &*found;
}

const ElementForm* FindElement(std::string_view name) {
  const auto found = std::ranges::find(Elements(), name, &ElementForm::name);
  return found == Elements().end() ? nullptr : &*found;
}

std::vector<std::string_view> ChildNames(const ElementForm* parent) {
  std::vector<std::string_view> names;
  for (const ElementForm& element : Elements()) {
    const bool is_child = parent == nullptr ? element.IsOutermost() : !element.IsOutermost() && element.parent == parent->kind;
    if (is_child) names.push_back(element.name);
  }
  return names;
}

std::vector<std::string_view> AttributeNames(const ElementForm& element) {
  std::vector<std::string_view> names;
  for (const AttributeForm& attribute : element.attributes) names.push_back(attribute.name);
  return names;
}

std::string Listed(const std::vector<std::string_view>& words) {
  if (words.empty()) return "none";
  std::string list;
  for (const std::string_view word : words) list += (list.empty() ? "" : ", ") + std::string(word);
  return list;
}

}  // namespace qmx
