// Builds and prints libraries declared as values. Random libraries are made by random_scenario.cpp. Tested by model_test.cpp.
#include "model/schema_values.h"

#include <algorithm>
#include <string_view>

#include "qmx/qmx_metalib_kernel.h"

namespace model {
namespace {

std::vector<std::string_view> Views(const std::vector<std::string>& texts) { return {texts.begin(), texts.end()}; }

void AddField(const FieldDecl& field, qmx::MetalibBuilder& builder) {
  qmx::EntryDecl entry;
  entry.name = field.name;
  entry.type = field.type;
  entry.size = field.size;
  entry.id = field.id;
  entry.version = field.version;
  entry.count = field.count;
  entry.refer = field.refer;
  if (field.attr2) entry.customattr2 = *field.attr2;
  builder.AddEntry(entry);
}

void AddMeta(const MetaDecl& meta, qmx::MetalibBuilder& builder) {
  builder.AddMeta(meta.name, meta.is_union ? QMX_TYPE_UNION : QMX_TYPE_STRUCT,
                  meta.attr ? std::optional<std::string_view>(*meta.attr) : std::nullopt);
  for (const FieldDecl& field : meta.fields) AddField(field, builder);
  if (!meta.key.empty()) builder.SetPrimaryKey(Views(meta.key));
  if (!meta.split.empty()) builder.SetSplittableKey(Views(meta.split));
  for (const IndexDecl& index : meta.indexes) {
    std::vector<qmx::ColumnDecl> columns;
    for (const std::string& column : index.columns) columns.push_back({column});
    builder.AddIndex(index.name, columns);
  }
}

void SetOddStates(const FieldDecl& field, LPQMXMETAENTRY entry) {
  if (field.nameless) entry->ptrName = QMX_NO_REF;
  if (field.without_structure) entry->ptrTypeMeta = QMX_NO_REF;
  if (field.odd_unit_size) entry->iUnitSize = *field.odd_unit_size;
  if (field.odd_count) entry->iCount = *field.odd_count;
  if (field.odd_flags) entry->chDBFlag = *field.odd_flags;
}

void SetOddStates(const MetaDecl& meta, LPQMXMETA record) {
  if (meta.without_key_list) record->ptrPrimayKeyBase = QMX_NO_REF;
  const bool has_list = !meta.without_key_list && !meta.key.empty();
  const auto members = static_cast<std::int16_t>(meta.key.size());
  if (meta.odd_key_count) record->nPrimayKeyMemberNum = has_list ? std::min(members, *meta.odd_key_count) : *meta.odd_key_count;
  for (std::size_t i = 0; i < meta.fields.size(); ++i) {
    SetOddStates(meta.fields[i], qmx_get_entry_by_index(record, static_cast<int>(i)));
  }
}

void PrintAttribute(std::string_view name, std::string_view value, std::string& text) {
  text.append(" ").append(name).append("=\"");
  for (const char byte : value) {
    if (byte == '&') text += "&amp;";
    if (byte == '<') text += "&lt;";
    if (byte == '"') text += "&quot;";
    if (byte != '&' && byte != '<' && byte != '"') text += byte;
  }
  text += '"';
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

void PrintField(const FieldDecl& field, std::string& text) {
  text += "    <entry";
  PrintAttribute("name", field.name, text);
  PrintAttribute("type", field.type, text);
  if (field.size != 0) PrintAttribute("size", std::to_string(field.size), text);
  if (field.id != -1) PrintAttribute("id", std::to_string(field.id), text);
  if (field.version != 1) PrintAttribute("version", std::to_string(field.version), text);
  if (field.count != 1) PrintAttribute("count", std::to_string(field.count), text);
  if (!field.refer.empty()) PrintAttribute("refer", field.refer, text);
  if (field.attr2) PrintAttribute("customattr2", *field.attr2, text);
  text += "/>";
  if (field.nameless) text += " <!-- without a name -->";
  if (field.without_structure) text += " <!-- without its structure -->";
  if (field.odd_unit_size) text += " <!-- unit size " + std::to_string(*field.odd_unit_size) + " -->";
  if (field.odd_count) text += " <!-- count " + std::to_string(*field.odd_count) + " -->";
  if (field.odd_flags) text += " <!-- flags " + std::to_string(*field.odd_flags) + " -->";
  text += "\n";
}

void PrintMeta(const MetaDecl& meta, std::string& text) {
  text += "  <meta";
  PrintAttribute("name", meta.name, text);
  if (meta.is_union) PrintAttribute("kind", "union", text);
  if (meta.attr) PrintAttribute("customattr", *meta.attr, text);
  text += ">\n";
  for (const FieldDecl& field : meta.fields) PrintField(field, text);
  if (!meta.key.empty()) text += "    <primarykey entries=\"" + Joined(meta.key) + "\"/>\n";
  if (meta.without_key_list) text += "    <!-- without a list of key fields -->\n";
  if (meta.odd_key_count) text += "    <!-- key fields: " + std::to_string(*meta.odd_key_count) + " -->\n";
  if (!meta.split.empty()) text += "    <splittablekey entries=\"" + Joined(meta.split) + "\"/>\n";
  for (const IndexDecl& index : meta.indexes) {
    text += "    <index name=\"" + index.name + "\">";
    for (const std::string& column : index.columns) text += "<column entry=\"" + column + "\"/>";
    text += "</index>\n";
  }
  text += "  </meta>\n";
}

}  // namespace

std::optional<qmx::Metalib> Build(const LibraryDecl& library) {
  qmx::MetalibBuilder builder("lib", library.version, qmx::Protocol::kUnset);
  for (const MetaDecl& meta : library.metas) AddMeta(meta, builder);
  qmx::BuildResult result = builder.Finish();
  if (!result.metalib) return std::nullopt;
  const LPQMXMETALIB block = result.metalib->get();
  block->iFlag = library.flag;
  for (std::size_t i = 0; i < library.metas.size(); ++i) {
    SetOddStates(library.metas[i], qmx_get_meta_by_index(block, static_cast<int>(i)));
  }
  return result.metalib;
}

std::string Print(const LibraryDecl& library) {
  std::string text = "<metalib name=\"lib\" version=\"" + std::to_string(library.version) + "\"";
  if (library.flag == 0) text += " protocol=\"QMX\"";
  if (library.flag == 1) text += " protocol=\"TLV\"";
  text += ">";
  if (library.flag < -1 || library.flag > 1) text += " <!-- flag word " + std::to_string(library.flag) + " -->";
  text += "\n";
  for (const MetaDecl& meta : library.metas) PrintMeta(meta, text);
  return text + "</metalib>\n";
}

}  // namespace model
