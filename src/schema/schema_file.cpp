// Writes schema files; src/qmx_xml reads them. Held by tests/tool/image_test.cpp.
#include "schema/schema_file.h"

#include <algorithm>
#include <cstring>

#include "base/input_error.h"
#include "base/one_line.h"
#include "base/quote.h"
#include "base/xml_escape.h"
#include "common/meta_view.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"
#include "schema/model.h"
#include "schema/model_text.h"

namespace korvel {
namespace {

class Writer {
 public:
  explicit Writer(const Input& input) : input_(input), library_(input.Library()) {}

  std::string Run() {
    text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
    Element("", "metalib", AttributesOf(HeadOf(library_)), ">");
    for (int i = 0; i < qmx_get_meta_num(library_); ++i) Meta(qmx_get_meta_by_index(library_, i));
    text_ += "\n</metalib>\n";
    RequireSame();
    return std::move(text_);
  }

 private:
  [[noreturn]] void Refuse(const std::string& what) const {
    throw InputError{{OneLine(input_.name + ": error: cannot be written as XML: " + what)}};
  }

  // The start tag of an element, on a line of its own.
  void Element(const char* indent, std::string_view element, const std::vector<AttributeText>& attributes, const char* end) {
    text_.append("\n").append(indent).append("<").append(element);
    for (const auto& [name, value] : attributes) {
      if (value) Attribute(name, *value);
    }
    text_ += end;
  }

  void Attribute(std::string_view name, const std::string& value) {
    const std::optional<std::string> escaped = XmlEscaped(value);
    if (!escaped) Refuse(Quote(name) + " is " + Quote(value) + "; allowed: characters of XML 1.0 in UTF-8");
    text_.append(" ").append(name).append("=\"").append(*escaped).append("\"");
    // A few bytes of an image may stand for a long name.
    if (text_.size() > qmx::kMaxFileBytes) {
      Refuse("it is too large; allowed: at most " + std::to_string(qmx::kMaxFileBytes) + " bytes");
    }
  }

  void Meta(LPQMXMETA meta) {
    const MetaModel model = MetaOf(library_, meta);
    Element("  ", "meta", AttributesOf(model), ">");
    // Texts lie in the order in which the file declares what they belong to: an index may stand between entries.
    int index = 0;
    const auto write_index = [&] { Index(model.indexes[static_cast<std::size_t>(index++)]); };
    for (const auto [position, entry] : Entries(meta)) {
      while (index < IndexCount(meta) && Indexes(meta)[index]->ptrName < entry->ptrName) write_index();
      Element("    ", "entry", AttributesOf(model.entries[static_cast<std::size_t>(position)]), "/>");
    }
    Key("primarykey", model.primary_key);
    Key("splittablekey", model.splittable_key);
    while (index < IndexCount(meta)) write_index();
    text_ += "\n  </meta>";
  }

  void Key(const char* element, const std::vector<std::string>& members) {
    if (members.empty()) return;
    if (const auto attributes = KeyAttributes(members)) return Element("    ", element, *attributes, "/>");
    const auto odd = std::ranges::find_if(members, [](const std::string& one) { return !KeyAttributes({one}); });
    Refuse(Quote(element) + " names " + Quote(*odd) + "; allowed: names without blanks");
  }

  void Index(const IndexModel& index) {
    Element("    ", "index", AttributesOf(index), ">");
    for (const ColumnModel& column : index.columns) Element("      ", "column", AttributesOf(column), "/>");
    text_ += "\n    </index>";
  }

  // Whatever else an image may hold and a schema file may not shows when the file is read again.
  void RequireSame() const {
    const qmx::ReadResult read = qmx::ReadXml(text_);
    if (!read.schema) Refuse(read.errors.front().text);
    const qmx::Metalib& again = read.schema->metalib;
    const bool same = again.size() == input_.metalib.size() && std::memcmp(again.get(), library_, again.size()) == 0;
    if (!same) Refuse("it would be read back as another library; allowed: images that 'compile' writes");
  }

  const Input& input_;
  LPQMXMETALIB library_;
  std::string text_;
};

}  // namespace

std::string SchemaFile(const Input& input) { return Writer(input).Run(); }

void AddDump(Input& input) {
  if (input.text) return;
  try {
    auto bytes = std::make_shared<std::string>(SchemaFile(input));
    qmx::ReadResult read = qmx::ReadXml(*bytes);
    const std::string_view view = *bytes;
    input.text = {std::move(bytes), view, std::move(read.schema->source_map), true};
  } catch (const InputError&) {
    // The report says that there is no text to show.
  }
}

}  // namespace korvel
