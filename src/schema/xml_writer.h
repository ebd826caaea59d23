// Writes schemas as XML: whole files and single elements. The only writer of schema files; src/qmx_xml reads them.
//
// Texts end in no new line, and lines are indented by two blanks a level. Everything is linear in the text. Threads may use
// different writers at the same time.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "schema/model.h"

namespace korvel {

// An attribute and its value, not escaped; nullopt: the element does not have the attribute. Names are constants.
struct AttributeText {
  std::string_view name;
  std::optional<std::string> value;
};

// All attributes that the element may have, absent ones included, in the order in which they are written. Always the same names.
std::vector<AttributeText> AttributesOf(const Model& library);
std::vector<AttributeText> AttributesOf(const MetaModel& meta);
std::vector<AttributeText> AttributesOf(const EntryModel& entry);
std::vector<AttributeText> AttributesOf(const IndexModel& index);
std::vector<AttributeText> AttributesOf(const ColumnModel& column);
// Of a primary or splittable key; nullopt if a member is empty or contains white space, which separates members.
std::optional<std::vector<AttributeText>> KeyAttributes(const std::vector<std::string>& members);

// `value` as it is written between two `quote`s (' or "), hidden characters (IsHidden) and the first '#' of "##[" as references;
// nullopt if it contains a character that XML 1.0 in UTF-8 does not have.
std::optional<std::string> EscapeForXml(std::string_view value, char quote = '"');

// How the lines of an element are laid out.
struct Layout {
  std::string indent;                // of the element itself; its inner elements are indented further
  std::string_view line_end = "\n";  // between lines; borrowed
};

// Appends elements, each on a line of its own. After the first fault nothing more is appended.
class XmlWriter {
 public:
  // `text` comes before the first element, which starts a new line if `text` is not empty.
  explicit XmlWriter(Layout layout, std::string text = "") : layout_(std::move(layout)), text_(std::move(text)) {}

  // A start tag: elements that follow are inside, until Close.
  void Open(std::string_view element, const std::vector<AttributeText>& attributes);
  void Close(std::string_view element);
  // An element without content.
  void Empty(std::string_view element, const std::vector<AttributeText>& attributes);
  // A key, "primarykey" or "splittablekey"; nothing for a key without members.
  void Key(std::string_view element, const std::vector<std::string>& members);
  void Index(const IndexModel& index);

  // Why the text cannot be written: "'name' is '\x01'; allowed: characters of XML 1.0 in UTF-8". Empty: no fault so far.
  const std::string& fault() const { return fault_; }

  // The text, which leaves the writer empty. Incomplete if there was a fault.
  std::string Take() { return std::move(text_); }

 private:
  void Fail(std::string fault);
  void NewLine() { text_.append(layout_.line_end).append(layout_.indent); }
  // The start of a tag, without its end.
  void Begin(std::string_view element, const std::vector<AttributeText>& attributes);

  Layout layout_;
  std::string text_;
  std::string fault_;
};

// One element, from its '<' to its last '>'; nullopt if XML cannot express it.
std::optional<std::string> ElementOf(const EntryModel& entry);
std::optional<std::string> ElementOf(const IndexModel& index, const Layout& layout);
std::optional<std::string> ElementOf(const MetaModel& meta, const Layout& layout);
std::optional<std::string> KeyElement(std::string_view element, const std::vector<std::string>& members);

}  // namespace korvel
