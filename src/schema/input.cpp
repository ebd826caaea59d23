// Loads schema files and images; src/qmx_xml and src/qmx decide what they may contain. A schema file that is written is read back
// to compare; xml_writer.cpp writes its elements. Tested by tests/tool/input_test.cpp, image_test.cpp and git_test.cpp.
#include "schema/input.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "common/meta_view.h"
#include "qmx/checksum.h"
#include "qmx/qmx_image.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"
#include "schema/file_bytes.h"
#include "schema/model.h"
#include "schema/xml_writer.h"

namespace korvel {
namespace {

InputError SchemaErrors(const std::string& name, const std::vector<qmx::ReadError>& errors) {
  std::vector<InputFault> faults;
  for (const auto& [location, text, is_syntax] : errors) {
    const FaultKind kind = is_syntax ? FaultKind::kSyntax : FaultKind::kInvalid;
    faults.push_back(FaultAt(kind, name, location.line, location.column, text));
  }
  return ErrorOf(std::move(faults));
}

Input FromText(const std::string& name, std::shared_ptr<qmx::XmlBuffer> buffer, std::size_t size) {
  qmx::ReadResult result = buffer->Read(size);
  if (!result.schema) throw SchemaErrors(name, result.errors);
  const std::string_view bytes(buffer->data(), size);
  SchemaText schema = KeptText(std::move(buffer), bytes, std::move(result.schema->source_map));
  return {name, std::move(result.schema->metalib), std::move(schema), {}};
}

Input FromImage(const std::string& name, qmx::ImageResult result) {
  if (!result.metalib) throw ErrorOf({FaultIn(FaultKind::kImage, name, qmx::Describe(result.error))});
  return {name, std::move(*result.metalib), std::nullopt, {}};
}

Input FromBytes(const std::string& name, Bytes bytes) {
  if (qmx::IsImage(bytes.View())) return FromImage(name, qmx::LoadImage(std::move(bytes.data), bytes.size));
  auto buffer = std::make_shared<qmx::XmlBuffer>(std::max<std::size_t>(bytes.size, 1));
  std::ranges::copy(bytes.View(), buffer->data());
  bytes.data.reset();
  return FromText(name, std::move(buffer), bytes.size);
}

Input ReadImageFile(const OpenFile& file) {
  qmx::ImageResult result = qmx::ReadImage(file.descriptor.get());
  RequireUnchanged(file.name, file.state);
  return FromImage(file.name, std::move(result));
}

Input FromImageBytes(const OpenFile& file, std::string_view bytes) {
  auto copy = std::make_unique_for_overwrite<char[]>(bytes.size());
  std::ranges::copy(bytes, copy.get());
  return FromImage(file.name, qmx::LoadImage(std::move(copy), bytes.size()));
}

// Reads the bytes directly into the buffer of the parser.
Input ReadRegular(const OpenFile& file) {
  auto buffer = std::make_shared<qmx::XmlBuffer>(file.size);
  const std::size_t size = ReadUpTo(file, buffer->data(), file.size);
  RequireUnchanged(file.name, file.state);
  if (const std::string_view bytes(buffer->data(), size); qmx::IsImage(bytes)) return FromImageBytes(file, bytes);
  return FromText(file.name, std::move(buffer), size);
}

// A pipe or device, which may never end: stops early if the first bytes cannot begin a schema.
Input ReadStream(const OpenFile& file) {
  return FromBytes(file.name,
                   ReadAll(file, [](std::string_view bytes) { return !qmx::IsImage(bytes) && !qmx::MayBeXml(bytes); }));
}

// Does not keep the text. Nullopt if the file has an error: errors are located in the text.
std::optional<Input> ReadWithoutText(const OpenFile& file) {
  qmx::XmlBuffer buffer(file.size);
  const std::size_t size = ReadUpTo(file, buffer.data(), file.size);
  RequireUnchanged(file.name, file.state);
  const std::uint64_t checksum = qmx::Checksum(buffer.data(), size);
  std::optional<qmx::SchemaWithoutText> schema = buffer.ReadAndRelease(size);
  if (!schema) return std::nullopt;
  auto text = std::make_shared<FileText>(file.name, file.state.path, size, checksum, std::move(schema->metas));
  return Input{file.name, std::move(schema->metalib), SchemaText{std::move(text), std::move(schema->source_map)}, {}};
}

Input ReadFileAt(const std::string& path, Texts texts) {
  const OpenFile file = OpenInput(path);
  if (file.is_whole_image) return ReadImageFile(file);
  if (texts == Texts::kWhenNeeded && file.size >= kLargeText && CanBeReadAgain(file)) {
    if (std::optional<Input> input = ReadWithoutText(file)) return std::move(*input);
    Rewind(file);
  }
  return file.size > 0 ? ReadRegular(file) : ReadStream(file);
}

// --- Schema files ---

constexpr char kHead[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

[[noreturn]] void Refuse(const Input& input, const std::string& fault) {
  throw InputError{{OneLine(PathText(input.name) + ": error: cannot be written as XML: " + fault)}};
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

Input LoadBytes(const std::string& name, Bytes bytes, Texts texts) {
  Input input = FromBytes(name, std::move(bytes));
  if (texts == Texts::kShown) AddDump(input);
  ListTables(input);
  return input;
}

Input LoadFile(const std::string& path, Texts texts) {
  Input input = ReadFileAt(path, texts);
  if (texts == Texts::kShown) AddDump(input);
  ListTables(input);
  return input;
}

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

std::string ImageOf(const Input& input) {
  const qmx::Limits limits;
  std::string image = qmx::WriteImage(input.metalib);
  std::string fault;
  if (image.size() > limits.max_bytes) {
    fault =
        "the image would have " + std::to_string(image.size()) + " bytes; allowed: at most " + std::to_string(limits.max_bytes);
  } else if (const auto error = qmx::Verify(input.Library(), input.metalib.size(), limits)) {
    fault = "cannot be written as an image: " + qmx::Describe(*error);
  }
  if (!fault.empty()) throw InputError{{ToolMessage(OneLine(input.name) + ": " + fault)}};
  return image;
}

void AddDump(Input& input) {
  if (input.text) return;
  try {
    std::string bytes = SchemaFile(input);
    qmx::ReadResult read = qmx::ReadXml(bytes);
    input.text = KeptText(std::move(bytes), std::move(read.schema->source_map));
    input.text->is_dump = true;
  } catch (const InputError&) {
    // The report says that there is no text to show.
  }
}

}  // namespace korvel
