// Writes elements and escapes attribute values. Edits of existing text are made by analysis/suggest/rewrite.cpp.
// Tested by tests/report/rewrite_test.cpp and tests/tool/image_test.cpp.
#include "schema/xml_writer.h"

#include <algorithm>
#include <utility>

#include "base/characters.h"
#include "base/text.h"
#include "qmx/qmx_xml.h"

namespace korvel {
namespace {

constexpr std::string_view kStep = "  ";  // by which inner elements are indented

// A number, unless it is the default of an absent attribute.
template <class Number>
std::optional<std::string> Unless(Number value, Number absent) {
  return value == absent ? std::nullopt : std::optional(std::to_string(value));
}

std::optional<std::string> UnlessEmpty(const std::string& text) { return text.empty() ? std::nullopt : std::optional(text); }

std::optional<std::string> ProtocolText(qmx::Protocol protocol) {
  if (protocol == qmx::Protocol::kUnset) return std::nullopt;
  return protocol == qmx::Protocol::kTlv ? "TLV" : "QMX";
}

bool IsListable(const std::string& member) { return !member.empty() && member.find_first_of(" \t\r\n") == std::string::npos; }

// Length in bytes of the character at the start of `text`; 0 if XML has no such character.
std::size_t XmlCharacterLength(std::string_view text) {
  if (text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF")) return 0;
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte >= 0x80) return Utf8Length(text);
  return byte >= 0x20 || byte == '\t' || byte == '\n' || byte == '\r' ? 1 : 0;
}

// The reference for a character that must not be written as itself; null for other characters.
const char* ReferenceFor(char c, char quote) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return quote == c ? "&quot;" : nullptr;
    case '\'':
      return quote == c ? "&apos;" : nullptr;
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return nullptr;
  }
}

// Whether the first character of the text deceives readers or services. Other control characters are not in XML, or have a
// reference.
bool MustNotBeShown(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte < 0x7F && byte != '#') return false;
  return IsHidden(FirstCharacter(text).code_point) || BeginsLogCommand(text);
}

std::optional<std::string> TextOf(XmlWriter& writer) {
  return writer.fault().empty() ? std::optional(writer.Take()) : std::nullopt;
}

}  // namespace

std::optional<std::string> EscapeForXml(std::string_view value, char quote) {
  std::string text;
  text.reserve(value.size());
  while (!value.empty()) {
    const std::size_t length = XmlCharacterLength(value);
    if (length == 0) return std::nullopt;
    if (const char* const reference = ReferenceFor(value.front(), quote)) {
      text.append(reference);
    } else if (MustNotBeShown(value)) {
      text.append("&#").append(std::to_string(FirstCharacter(value).code_point)).append(";");
    } else {
      text.append(value.substr(0, length));
    }
    value.remove_prefix(length);
  }
  return text;
}

std::vector<AttributeText> AttributesOf(const Model& library) {
  return {{"name", library.name}, {"version", std::to_string(library.version)}, {"protocol", ProtocolText(library.protocol)}};
}

std::vector<AttributeText> AttributesOf(const MetaModel& meta) {
  const bool is_union = meta.kind == QMX_TYPE_UNION;
  return {{"name", meta.name},
          {"kind", is_union ? std::optional<std::string>("union") : std::nullopt},
          {"customattr", meta.customattr}};
}

std::vector<AttributeText> AttributesOf(const EntryModel& entry) {
  return {{"name", entry.name},
          {"id", Unless(entry.id, -1)},
          {"type", entry.type},
          {"size", Unless(entry.size, std::uint64_t{0})},
          {"version", Unless(entry.version, 1)},
          {"count", Unless(entry.count, 1)},
          {"refer", UnlessEmpty(entry.refer)},
          {"customattr2", entry.customattr2}};
}

std::vector<AttributeText> AttributesOf(const IndexModel& index) { return {{"name", index.name}}; }

std::vector<AttributeText> AttributesOf(const ColumnModel& column) {
  return {{"entry", column.entry}, {"desc", column.descending ? std::optional<std::string>("true") : std::nullopt}};
}

std::optional<std::vector<AttributeText>> KeyAttributes(const std::vector<std::string>& members) {
  if (!std::ranges::all_of(members, IsListable)) return std::nullopt;
  return std::vector<AttributeText>{{"entries", Join(members, " ")}};
}

void XmlWriter::Fail(std::string fault) {
  if (fault_.empty()) fault_ = std::move(fault);
}

void XmlWriter::Begin(std::string_view element, const std::vector<AttributeText>& attributes) {
  if (!fault_.empty()) return;
  if (!text_.empty()) NewLine();
  text_.append("<").append(element);
  for (const AttributeText& attribute : attributes) {
    if (!attribute.value) continue;
    const std::optional<std::string> escaped = EscapeForXml(*attribute.value);
    if (!escaped) {
      return Fail(Quote(attribute.name) + " is " + Quote(*attribute.value) + "; allowed: characters of XML 1.0 in UTF-8");
    }
    text_.append(" ").append(attribute.name).append("=\"").append(*escaped).append("\"");
    // A few bytes of an image can refer to a long name.
    if (text_.size() > qmx::kMaxFileBytes) {
      return Fail("it is too large; allowed: at most " + std::to_string(qmx::kMaxFileBytes) + " bytes");
    }
  }
}

void XmlWriter::Open(std::string_view element, const std::vector<AttributeText>& attributes) {
  Begin(element, attributes);
  text_ += ">";
  layout_.indent += kStep;
}

void XmlWriter::Close(std::string_view element) {
  layout_.indent.resize(layout_.indent.size() - kStep.size());
  if (!fault_.empty()) return;
  NewLine();
  text_.append("</").append(element).append(">");
}

void XmlWriter::Empty(std::string_view element, const std::vector<AttributeText>& attributes) {
  Begin(element, attributes);
  text_ += "/>";
}

void XmlWriter::Key(std::string_view element, const std::vector<std::string>& members) {
  if (members.empty()) return;
  if (const auto attributes = KeyAttributes(members)) return Empty(element, *attributes);
  const auto odd = std::ranges::find_if_not(members, IsListable);
  Fail(Quote(element) + " names " + Quote(*odd) + "; allowed: names without blanks");
}

void XmlWriter::Index(const IndexModel& index) {
  Open("index", AttributesOf(index));
  for (const ColumnModel& column : index.columns) Empty("column", AttributesOf(column));
  Close("index");
}

std::optional<std::string> ElementOf(const EntryModel& entry) {
  XmlWriter writer({});
  writer.Empty("entry", AttributesOf(entry));
  return TextOf(writer);
}

std::optional<std::string> ElementOf(const IndexModel& index, const Layout& layout) {
  XmlWriter writer(layout);
  writer.Index(index);
  return TextOf(writer);
}

std::optional<std::string> ElementOf(const MetaModel& meta, const Layout& layout) {
  XmlWriter writer(layout);
  writer.Open("meta", AttributesOf(meta));
  for (const EntryModel& entry : meta.entries) writer.Empty("entry", AttributesOf(entry));
  writer.Key("primarykey", meta.primary_key);
  writer.Key("splittablekey", meta.splittable_key);
  for (const IndexModel& index : meta.indexes) writer.Index(index);
  writer.Close("meta");
  return TextOf(writer);
}

std::optional<std::string> KeyElement(std::string_view element, const std::vector<std::string>& members) {
  XmlWriter writer({});
  writer.Key(element, members);
  return TextOf(writer);
}

}  // namespace korvel
