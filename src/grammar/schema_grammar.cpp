// Makes the grammar of schema files from the table of elements and attributes. The table does not contain the rules that join two
// attributes (size and type, id and protocol); these are written here. Tested by tests/qmx/grammar_test.cpp.
#include "grammar/schema_grammar.h"

#include <utility>

#include "qmx/qmx_builder.h"
#include "qmx_xml/schema_form.h"

namespace grammar {
namespace {

using qmx::Attribute;
using qmx::AttributeForm;
using qmx::ElementForm;
using qmx::SimpleType;
using qmx::ValueForm;

using Kind = Pattern::Kind;
using ElementKind = qmx::ElementId::Kind;

// Metas and entries are defined twice: in a library with protocol TLV, every entry needs an id.
enum class Variant { kAny, kTlv };

constexpr const char* kComment =
    R"(Grammar of schema files, for completion, documentation and checks in editors.
'make docs' writes this file from the table of elements and attributes that the reader of schema files uses.

It accepts every file that korvelcheck accepts. These rules cannot be expressed in a grammar, so only korvelcheck checks them:
- Types, refer, entries and entry name something that is declared in the file and suitable. A structure may have any name, so
  the grammar accepts a misspelled type such as unit16 as the name of a structure; 'korvelcheck lint' refuses it.
- Names are unique, and ids in a library with protocol TLV.
- Structures do not contain themselves.
- Limits: lengths in bytes, numbers of members, nesting, total sizes.
- Document types, entities, encodings and declarations of namespaces are refused. Some validators allow spaces around a number.
)";

Pattern Make(Kind kind, std::vector<Pattern> children) { return {.kind = kind, .children = std::move(children)}; }

Pattern Ref(std::string name) { return {.kind = Kind::kRef, .name = std::move(name)}; }

Pattern Data(const char* type, std::vector<std::pair<std::string, std::string>> params = {}) {
  return {.kind = Kind::kData, .name = type, .params = std::move(params)};
}

Pattern Value(std::string_view value, std::string_view doc = "") {
  return {.kind = Kind::kValue, .name = std::string(value), .doc = std::string(doc)};
}

Pattern AttributeOf(const AttributeForm& form, Pattern value) {
  return {.kind = Kind::kAttribute, .name = form.name.text, .doc = std::string(form.doc), .children = {std::move(value)}};
}

Pattern ChoiceOf(const AttributeForm& form) {
  Pattern choice{.kind = Kind::kChoice};
  for (const qmx::ChoiceForm& value : form.choices) choice.children.push_back(Value(value.value, value.doc));
  return choice;
}

Pattern TextOf(const AttributeForm& form) {
  if (form.id == Attribute::kEntries) return Make(Kind::kList, {Make(Kind::kOneOrMore, {Data("string")})});
  if (form.id == Attribute::kRefer) return Data("string", {{"minLength", "1"}});
  return {};
}

Pattern ValueOf(const AttributeForm& form) {
  switch (form.form) {
    case ValueForm::kNumber:
      return Data(
          "integer",
          {{"minInclusive", std::to_string(form.lowest)}, {"maxInclusive", std::to_string(form.highest)}, {"pattern", "[0-9]+"}});
    case ValueForm::kChoice:
      return ChoiceOf(form);
    case ValueForm::kText:
      return TextOf(form);
    case ValueForm::kComment:
      break;
  }
  return {};
}

Pattern AttributePattern(const AttributeForm& form) {
  Pattern attribute = AttributeOf(form, ValueOf(form));
  return form.is_required ? attribute : Make(Kind::kOptional, {std::move(attribute)});
}

// string and bytes with a size; or the other simple types and the names of structures, without one.
Pattern TypeAndSize(const AttributeForm& type, const AttributeForm& size) {
  Pattern sized{.kind = Kind::kChoice};
  Pattern other{.kind = Kind::kChoice};
  Pattern structure = Data("string");
  for (const SimpleType& form : qmx::SimpleTypes()) {
    (form.unit_size == 0 ? sized : other).children.push_back(Value(form.name, form.doc));
    if (form.unit_size == 0) structure.children.push_back(Value(form.name));
  }
  other.children.push_back(std::move(structure));
  return Make(Kind::kChoice, {Make(Kind::kGroup, {AttributeOf(type, std::move(sized)), AttributeOf(size, ValueOf(size))}),
                              AttributeOf(type, std::move(other))});
}

// The attributes of an element, except those that depend on the protocol.
std::vector<Pattern> Attributes(const ElementForm& element) {
  std::vector<Pattern> attributes;
  for (const AttributeForm& form : element.attributes) {
    if (form.id == Attribute::kProtocol || form.id == Attribute::kId || form.id == Attribute::kSize) continue;
    attributes.push_back(form.id == Attribute::kType ? TypeAndSize(form, *element.Find("size")) : AttributePattern(form));
  }
  return attributes;
}

bool HasVariants(const ElementForm& element) { return element.kind == ElementKind::kMeta || element.kind == ElementKind::kEntry; }

std::string DefinitionName(const ElementForm& element, Variant variant) {
  return (variant == Variant::kTlv && HasVariants(element) ? "tlv." : "") + std::string(element.name);
}

std::string AttributesName(const ElementForm& element) { return std::string(element.name) + ".attributes"; }

Pattern Repeated(qmx::Occurs occurs, Pattern pattern) {
  switch (occurs) {
    case qmx::Occurs::kOnce:
      break;
    case qmx::Occurs::kAtMostOnce:
      return Make(Kind::kOptional, {std::move(pattern)});
    case qmx::Occurs::kAtLeastOnce:
      return Make(Kind::kOneOrMore, {std::move(pattern)});
    case qmx::Occurs::kAnyNumber:
      return Make(Kind::kZeroOrMore, {std::move(pattern)});
  }
  return pattern;
}

// The child elements, in any order.
void AddChildren(const ElementForm& parent, Variant variant, std::vector<Pattern>& content) {
  Pattern children{.kind = Kind::kInterleave};
  for (const std::string_view name : qmx::ChildNames(&parent)) {
    const ElementForm& child = *qmx::FindElement(std::string(name).c_str());
    children.children.push_back(Repeated(child.occurs, Ref(DefinitionName(child, variant))));
  }
  if (children.children.size() > 1) {
    content.push_back(std::move(children));
  } else if (!children.children.empty()) {
    content.push_back(std::move(children.children[0]));
  }
}

// The protocol, and the children that it allows.
Pattern ProtocolAndChildren(const ElementForm& metalib) {
  const AttributeForm& protocol = *metalib.Find("protocol");
  Pattern alternatives{.kind = Kind::kChoice};
  for (const qmx::ChoiceForm& choice : protocol.choices) {
    const bool is_tlv = choice.value == "TLV";
    Pattern attribute = AttributeOf(protocol, Value(choice.value, choice.doc));
    std::vector<Pattern> content = {is_tlv ? std::move(attribute) : Make(Kind::kOptional, {std::move(attribute)})};
    AddChildren(metalib, is_tlv ? Variant::kTlv : Variant::kAny, content);
    alternatives.children.push_back(Make(Kind::kGroup, std::move(content)));
  }
  return alternatives;
}

Pattern ElementPattern(const ElementForm& form, Variant variant) {
  std::vector<Pattern> content = HasVariants(form) ? std::vector{Ref(AttributesName(form))} : Attributes(form);
  if (const AttributeForm* id = form.Find("id")) {
    content.push_back(variant == Variant::kTlv ? AttributeOf(*id, ValueOf(*id)) : AttributePattern(*id));
  }
  if (form.IsOutermost()) {
    content.push_back(ProtocolAndChildren(form));
  } else {
    AddChildren(form, variant, content);
  }
  return {.kind = Kind::kElement, .name = form.name.text, .doc = std::string(form.doc), .children = std::move(content)};
}

}  // namespace

Grammar SchemaGrammar() {
  Grammar grammar{.comment = kComment, .start = qmx::Elements().front().name.text, .definitions = {}};
  for (const ElementForm& form : qmx::Elements()) {
    grammar.definitions.push_back({DefinitionName(form, Variant::kAny), ElementPattern(form, Variant::kAny)});
    if (!HasVariants(form)) continue;
    grammar.definitions.push_back({DefinitionName(form, Variant::kTlv), ElementPattern(form, Variant::kTlv)});
    grammar.definitions.push_back({AttributesName(form), Make(Kind::kGroup, Attributes(form))});
  }
  return grammar;
}

}  // namespace grammar
