// Writes a library as a schema file, and reads it back to compare. Elements are written by xml_writer.cpp.
// Tested by tests/tool/image_test.cpp.
#include "schema/schema_file.h"

#include <cstring>
#include <utility>

#include "base/input_error.h"
#include "base/one_line.h"
#include "common/meta_view.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"
#include "schema/model.h"
#include "schema/xml_writer.h"

namespace korvel {
namespace {

constexpr char kHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

[[noreturn]] void Refuse(const Input& input, const std::string& fault) {
  throw InputError{{OneLine(input.name + ": error: cannot be written as XML: " + fault)}};
}

// The order of texts in the library is the order of declarations in the file: an index may come between entries.
void WriteMeta(XmlWriter& writer, LPQMXMETALIB library, LPQMXMETA meta) {
  const MetaModel model = MetaOf(library, meta);
  writer.Open("meta", AttributesOf(model));
  int index = 0;
  const auto write_index = [&] { writer.Index(model.indexes[static_cast<std::size_t>(index++)]); };
  for (const auto [position, entry] : Entries(meta)) {
    while (index < IndexCount(meta) && Indexes(meta)[index]->ptrName < entry->ptrName) write_index();
    writer.Empty("entry", AttributesOf(model.entries[static_cast<std::size_t>(position)]));
  }
  writer.Key("primarykey", model.primary_key);
  writer.Key("splittablekey", model.splittable_key);
  while (index < IndexCount(meta)) write_index();
  writer.Close("meta");
}

// Reading the text again finds everything else that an image may contain and a schema file may not.
void RequireSame(const Input& input, const std::string& text) {
  const qmx::ReadResult read = qmx::ReadXml(text);
  if (!read.schema) Refuse(input, read.errors.front().text);
  const qmx::Metalib& again = read.schema->metalib;
  const bool same = again.size() == input.metalib.size() && std::memcmp(again.get(), input.Library(), again.size()) == 0;
  if (!same) Refuse(input, "reading it back gives a different library; allowed: images made by 'compile'");
}

}  // namespace

std::string SchemaFile(const Input& input) {
  const LPQMXMETALIB library = input.Library();
  XmlWriter writer({}, kHead);
  writer.Open("metalib", AttributesOf(HeadOf(library)));
  for (int i = 0; i < qmx_get_meta_num(library) && writer.fault().empty(); ++i) {
    WriteMeta(writer, library, qmx_get_meta_by_index(library, i));
  }
  writer.Close("metalib");
  if (!writer.fault().empty()) Refuse(input, writer.fault());
  std::string text = writer.Take() + "\n";
  RequireSame(input, text);
  return text;
}

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
