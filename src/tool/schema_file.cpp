// Writes schema files; src/qmx_xml reads them. Held by tests/tool/image_test.cpp.
#include "tool/schema_file.h"

#include <cstring>

#include "common/meta_view.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"
#include "qmx/quote.h"
#include "report/text/one_line.h"
#include "report/text/xml_escape.h"
#include "tool/cannot_ask.h"

namespace korvel::tool {
namespace {

class Writer {
 public:
  explicit Writer(const Input& input) : input_(input), library_(input.Library()) {}

  std::string Run() {
    text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<metalib";
    Attribute("name", library_->data + library_->ptrName);
    Number("version", library_->iVersion);
    if (library_->iFlag != QMX_FLAG_UNSET) Attribute("protocol", IsTlv(library_) ? "TLV" : "QMX");
    text_ += ">\n";
    for (int i = 0; i < qmx_get_meta_num(library_); ++i) Meta(qmx_get_meta_by_index(library_, i));
    text_ += "</metalib>\n";
    RequireSame();
    return std::move(text_);
  }

 private:
  [[noreturn]] void Refuse(const std::string& what) const {
    throw CannotAsk{{OneLine(input_.name + ": error: no schema file can say this: " + what)}};
  }

  void Attribute(const char* name, std::string_view value) {
    text_.append(" ").append(name).append("=\"");
    const std::optional<std::string> escaped = XmlEscaped(value);
    if (!escaped) Refuse("'" + std::string(name) + "' is " + qmx::Quote(value) + "; allowed: characters of XML 1.0 in UTF-8");
    text_ += *escaped;
    text_ += '"';
    // A few bytes of an image may stand for a long name.
    if (text_.size() > qmx::kMaxFileBytes) {
      Refuse("it has more than " + std::to_string(qmx::kMaxFileBytes) + " bytes; allowed: up to that");
    }
  }

  template <class Value>
  void Number(const char* name, Value value) {
    Attribute(name, std::to_string(value));
  }

  void OptionalAttribute(const char* name, const char* value) {
    if (value != nullptr) Attribute(name, value);
  }

  void Meta(LPQMXMETA meta) {
    text_ += "  <meta";
    Attribute("name", qmx_get_meta_name(meta));
    if (meta->iType == QMX_TYPE_UNION) Attribute("kind", "union");
    OptionalAttribute("customattr", qmx_get_meta_customattr(meta));
    text_ += ">\n";
    // Texts lie in the order in which the file declares what they belong to: an index may stand between entries.
    int index = 0;
    for (const auto [position, entry] : Entries(meta)) {
      while (index < IndexCount(meta) && Indexes(meta)[index]->ptrName < entry->ptrName) Index(meta, Indexes(meta)[index++]);
      Entry(entry);
    }
    Key("primarykey", meta, PrimaryKeyMembers(meta));
    Key("splittablekey", meta, {meta, meta->ptrSplitTableKeyBase, meta->iSplitTableKeyMemberNum});
    while (index < IndexCount(meta)) Index(meta, Indexes(meta)[index++]);
    text_ += "  </meta>\n";
  }

  void Entry(LPQMXMETAENTRY entry) {
    text_ += "    <entry";
    Attribute("name", qmx_get_entry_name(entry));
    if (entry->iID != -1) Number("id", entry->iID);
    if (const LPQMXMETA meta = qmx_get_entry_type_meta(library_, entry)) {
      Attribute("type", qmx_get_meta_name(meta));
    } else {
      const qmx::SimpleType& type = *qmx::FindSimpleType(entry->iType);
      Attribute("type", type.name);
      if (type.unit_size == 0) Number("size", entry->iUnitSize);
    }
    if (entry->iVersion != 1) Number("version", entry->iVersion);
    if (entry->iCount != 1) Number("count", entry->iCount);
    OptionalAttribute("refer", qmx_get_entry_name(qmx_get_entry_refer(entry)));
    OptionalAttribute("customattr2", qmx_get_entry_customattr2(library_, entry));
    text_ += "/>\n";
  }

  void Key(const char* element, LPQMXMETA meta, const RecordList<tagQMXDBKeyInfo>& members) {
    if (members.size() == 0) return;
    std::string names;
    for (const auto* member : members) {
      const std::string name = MemberName(meta, member);
      if (name.empty() || name.find_first_of(" \t\r\n") != std::string::npos) {
        Refuse("'" + std::string(element) + "' names " + qmx::Quote(name) + "; allowed: names without blanks");
      }
      names += (names.empty() ? "" : " ") + name;
    }
    text_.append("    <").append(element);
    Attribute("entries", names);
    text_ += "/>\n";
  }

  void Index(LPQMXMETA meta, LPQMXMETAINDEX index) {
    text_ += "    <index";
    Attribute("name", IndexName(meta, index));
    text_ += ">\n";
    for (const auto* column : Columns(meta, index)) {
      text_ += "      <column";
      Attribute("entry", MemberName(meta, column));
      if (column->iIsDesc != 0) Attribute("desc", "true");
      text_ += "/>\n";
    }
    text_ += "    </index>\n";
  }

  // Whatever else an image may hold and a schema file may not shows when the file is read again.
  void RequireSame() const {
    const qmx::ReadResult read = qmx::ReadXml(text_);
    if (!read.schema) Refuse(read.errors.front().text);
    const qmx::Metalib& again = read.schema->metalib;
    const bool same = again.size() == input_.metalib.size() && std::memcmp(again.get(), library_, again.size()) == 0;
    if (!same) Refuse("read again it gives another library; allowed: what 'compile' makes of a schema file");
  }

  const Input& input_;
  LPQMXMETALIB library_;
  std::string text_;
};

}  // namespace

std::string SchemaFile(const Input& input) { return Writer(input).Run(); }

}  // namespace korvel::tool
