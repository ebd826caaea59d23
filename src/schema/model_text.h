// Models as schema files say them: attributes, and elements written anew.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "schema/model.h"

namespace korvel {

// An attribute and its value; nullopt: the element has none. The names are constants.
struct AttributeText {
  std::string_view name;
  std::optional<std::string> value;
};

// The attributes of an element, those that are absent too, in the order in which they are written. Always the same names.
std::vector<AttributeText> AttributesOf(const Model& library);
std::vector<AttributeText> AttributesOf(const MetaModel& meta);
std::vector<AttributeText> AttributesOf(const EntryModel& entry);
std::vector<AttributeText> AttributesOf(const IndexModel& index);
std::vector<AttributeText> AttributesOf(const ColumnModel& column);
// Of a primary or splittable key. Null for members that no list of names can say: an empty name or one with blanks.
std::optional<std::vector<AttributeText>> KeyAttributes(const std::vector<std::string>& members);

// How an element stands in its file.
struct Layout {
  std::string indent;                // of the element itself, which its inner lines go beyond
  std::string_view line_end = "\n";  // between its lines
};

// An element from its '<' to its end; nullopt if XML cannot say it.
std::optional<std::string> ElementOf(const EntryModel& entry);
std::optional<std::string> ElementOf(const IndexModel& index, const Layout& layout);
std::optional<std::string> ElementOf(const MetaModel& meta, const Layout& layout);
std::optional<std::string> KeyElement(std::string_view element, const std::vector<std::string>& members);

}  // namespace korvel
