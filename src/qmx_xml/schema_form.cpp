// The elements and attributes of schema files. src/grammar writes the same as a grammar for editors.
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

AttributeForm Text(Attribute id, const char* name, bool is_required, std::string_view doc,
                   std::size_t longest = kMaxAttributeBytes) {
  return {id, name, doc, is_required, ValueForm::kText, 0, longest};
}

AttributeForm Number(Attribute id, const char* name, bool is_required, std::uint64_t lowest, std::uint64_t highest,
                     std::string_view doc) {
  return {id, name, doc, is_required, ValueForm::kNumber, lowest, highest};
}

AttributeForm Choice(Attribute id, const char* name, std::string_view doc, std::vector<ChoiceForm> choices) {
  return {id, name, doc, kOptional, ValueForm::kChoice, 0, 0, std::move(choices)};
}

AttributeForm Name(std::string_view doc) { return Text(Attribute::kName, "name", kRequired, doc, kMaxNameBytes); }

AttributeForm Desc() {
  return {Attribute::kDesc, "desc", "Description for people; it has no effect.", kOptional, ValueForm::kComment};
}

AttributeForm KeyEntries() {
  return Text(Attribute::kEntries, "entries", kRequired,
              "Names of entries of the same meta, separated by spaces, tabs or line ends; at least one.");
}

ElementForm LibraryForm() {
  return {Kind::kMetalib,
          "metalib",
          "A schema library: the tables of a store and the structures inside them.",
          Kind::kMetalib,
          Occurs::kOnce,
          {Name("Name of the library."),
           Number(Attribute::kVersion, "version", kRequired, 0, kMaxInt32, "Version of the library. Raise it with every change."),
           Choice(Attribute::kProtocol, "protocol", "Form of the records; packed if absent.",
                  {{"QMX", "Packed records."}, {"TLV", "Self-describing records. Every entry needs an id."}}),
           Desc()}};
}

ElementForm MetaForm() {
  return {
      Kind::kMeta,
      "meta",
      "A table or a structure. A meta with a primary key is a table.",
      Kind::kMetalib,
      Occurs::kAnyNumber,
      {Name("Name of the meta; unique in the file."),
       Choice(Attribute::kKind, "kind", "Kind of the meta; a structure if absent.",
              {{"structure", "Holds all its entries. Its size is the sum of their sizes, without padding."},
               {"union", "Holds one of its entries. Its size is that of the largest entry."}}),
       Text(
           Attribute::kCustomAttr, "customattr", kOptional,
           "Attributes of the table: KEY=VALUE, joined by ';' without spaces. Keys: TableType, ListNum, SortRule, DataProtocol."),
       Desc()}};
}

ElementForm EntryForm() {
  return {Kind::kEntry,
          "entry",
          "A field. The order of the entries is the order of the fields in a record.",
          Kind::kMeta,
          Occurs::kAtLeastOnce,
          {Name("Name of the entry; unique in the meta."),
           Text(Attribute::kType, "type", kRequired,
                "Type of the entry: a simple type, or the name of a meta of the same file, declared before or after its use."),
           Number(Attribute::kId, "id", kOptional, 0, kMaxInt32,
                  "Id of the entry. Required and unique in the meta if the protocol is TLV."),
           Number(Attribute::kVersion, "version", kOptional, 0, kMaxInt32,
                  "Version of the library in which the entry first appeared; 1 if absent."),
           Number(Attribute::kSize, "size", kOptional, 1, kMaxInt64,
                  "Size of one element in bytes. Required for the types string and bytes, refused for all other types."),
           Number(Attribute::kCount, "count", kOptional, 1, kMaxInt32,
                  "Number of elements; more than 1 makes the entry an array. 1 if absent."),
           Text(Attribute::kRefer, "refer", kOptional,
                "Name of the entry that holds the number of elements a record uses: an integer entry with count 1, declared "
                "earlier in the same meta. All elements are used if absent."),
           Text(Attribute::kCustomAttr2, "customattr2", kOptional,
                "Any text. In a table of type SORTLIST, sort=1 to sort=4 mark the sort fields."),
           Desc()}};
}

ElementForm PrimaryKeyForm() {
  return {Kind::kPrimaryKey, "primarykey",        "The entries whose values identify a record. It makes the meta a table.",
          Kind::kMeta,       Occurs::kAtMostOnce, {KeyEntries(), Desc()}};
}

ElementForm SplittableKeyForm() {
  return {Kind::kSplittableKey, "splittablekey",     "The entries whose values determine on which server a record is stored.",
          Kind::kMeta,          Occurs::kAtMostOnce, {KeyEntries(), Desc()}};
}

ElementForm IndexForm() {
  return {Kind::kIndex,
          "index",
          "An index of the table: its columns, in order.",
          Kind::kMeta,
          Occurs::kAnyNumber,
          {Name("Name of the index; unique in the meta."), Desc()}};
}

// The desc of a column is its direction, not a description.
ElementForm ColumnForm() {
  return {Kind::kColumn,
          "column",
          "A column of an index: an entry and its direction.",
          Kind::kIndex,
          Occurs::kAtLeastOnce,
          {Text(Attribute::kEntry, "entry", kRequired, "Name of an entry of the same meta."),
           Choice(Attribute::kDesc, "desc", "Direction of the column; ascending if absent.",
                  {{"true", "Descending."}, {"false", "Ascending."}})}};
}

template <class Form>
const Form* FindByName(const std::vector<Form>& forms, const char* name) {
  const std::uint64_t number = ShortName(name);
  const auto found = std::ranges::find_if(forms, [&](const Form& form) { return form.name.Is(name, number); });
  return found == forms.end() ? nullptr : &*found;
}

}  // namespace

ElementForm::ElementForm(ElementId::Kind kind_, const char* name_, std::string_view doc_, ElementId::Kind parent_, Occurs occurs_,
                         std::vector<AttributeForm> attributes_)
    : kind(kind_), name(name_), doc(doc_), parent(parent_), occurs(occurs_), attributes(std::move(attributes_)) {
  for (const AttributeForm& attribute : attributes) required.set(static_cast<std::size_t>(attribute.id), attribute.is_required);
}

const AttributeForm* ElementForm::Find(const char* attribute) const { return FindByName(attributes, attribute); }

const std::vector<ElementForm>& Elements() {
  static const std::vector<ElementForm> elements = {LibraryForm(),       MetaForm(),  EntryForm(), PrimaryKeyForm(),
                                                    SplittableKeyForm(), IndexForm(), ColumnForm()};
  return elements;
}

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

std::vector<std::string_view> ChoiceValues(const AttributeForm& attribute) {
  std::vector<std::string_view> values;
  for (const ChoiceForm& choice : attribute.choices) values.push_back(choice.value);
  return values;
}

std::string Listed(const std::vector<std::string_view>& words) { return words.empty() ? "none" : korvel::Join(words, ", "); }

}  // namespace qmx
