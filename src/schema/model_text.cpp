// Writes elements of schema files. What a file already says is edited by rewrite.cpp. Held by tests/report/rewrite_test.cpp.
#include "schema/model_text.h"

#include "base/xml_escape.h"

namespace korvel {
namespace {

constexpr std::string_view kStep = "  ";  // by which inner elements are indented

// A number that is not written where it says what its absence says.
template <class Number>
std::optional<std::string> Unless(Number value, Number absent) {
  return value == absent ? std::nullopt : std::optional(std::to_string(value));
}

std::optional<std::string> UnlessEmpty(const std::string& text) { return text.empty() ? std::nullopt : std::optional(text); }

std::optional<std::string> ProtocolText(qmx::Protocol protocol) {
  if (protocol == qmx::Protocol::kUnset) return std::nullopt;
  return protocol == qmx::Protocol::kTlv ? "TLV" : "QMX";
}

// Puts elements one below the other. Once XML cannot say one of them there is no text.
class ElementWriter {
 public:
  explicit ElementWriter(Layout layout) : layout_(std::move(layout)) {}

  void Open(std::string_view element, const std::vector<AttributeText>& attributes) {
    Begin(element, attributes);
    text_ += ">";
    layout_.indent += kStep;
  }

  void Empty(std::string_view element, const std::vector<AttributeText>& attributes) {
    Begin(element, attributes);
    text_ += "/>";
  }

  void Close(std::string_view element) {
    layout_.indent.resize(layout_.indent.size() - kStep.size());
    NewLine();
    text_.append("</").append(element).append(">");
  }

  void Key(std::string_view element, const std::vector<std::string>& members) {
    if (members.empty()) return;
    const auto attributes = KeyAttributes(members);
    attributes ? Empty(element, *attributes) : Fail();
  }

  void Index(const IndexModel& index) {
    Open("index", AttributesOf(index));
    for (const ColumnModel& column : index.columns) Empty("column", AttributesOf(column));
    Close("index");
  }

  std::optional<std::string> Take() { return failed_ ? std::nullopt : std::optional(std::move(text_)); }

 private:
  void Fail() { failed_ = true; }

  void NewLine() { text_.append(layout_.line_end).append(layout_.indent); }

  void Begin(std::string_view element, const std::vector<AttributeText>& attributes) {
    if (!text_.empty()) NewLine();
    text_.append("<").append(element);
    for (const AttributeText& attribute : attributes) {
      if (!attribute.value) continue;
      const auto escaped = XmlEscaped(*attribute.value);
      if (!escaped) return Fail();
      text_.append(" ").append(attribute.name).append("=\"").append(*escaped).append("\"");
    }
  }

  Layout layout_;
  std::string text_;
  bool failed_ = false;
};

}  // namespace

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
  std::string names;
  for (const std::string& member : members) {
    if (member.empty() || member.find_first_of(" \t\r\n") != std::string::npos) return std::nullopt;
    names.append(names.empty() ? "" : " ").append(member);
  }
  return std::vector<AttributeText>{{"entries", names}};
}

std::optional<std::string> ElementOf(const EntryModel& entry) {
  ElementWriter writer({});
  writer.Empty("entry", AttributesOf(entry));
  return writer.Take();
}

std::optional<std::string> ElementOf(const IndexModel& index, const Layout& layout) {
  ElementWriter writer(layout);
  writer.Index(index);
  return writer.Take();
}

std::optional<std::string> ElementOf(const MetaModel& meta, const Layout& layout) {
  ElementWriter writer(layout);
  writer.Open("meta", AttributesOf(meta));
  for (const EntryModel& entry : meta.entries) writer.Empty("entry", AttributesOf(entry));
  writer.Key("primarykey", meta.primary_key);
  writer.Key("splittablekey", meta.splittable_key);
  for (const IndexModel& index : meta.indexes) writer.Index(index);
  writer.Close("meta");
  return writer.Take();
}

std::optional<std::string> KeyElement(std::string_view element, const std::vector<std::string>& members) {
  ElementWriter writer({});
  writer.Key(element, members);
  return writer.Take();
}

}  // namespace korvel
