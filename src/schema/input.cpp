// Loads schema files and images. src/qmx_xml and src/qmx decide what they may contain. Tested by tests/tool/input_test.cpp,
// image_test.cpp and git_test.cpp.
#include "schema/input.h"

#include <algorithm>
#include <utility>

#include "base/input_error.h"
#include "base/one_line.h"
#include "base/text.h"
#include "qmx/qmx_image.h"
#include "qmx/qmx_xml.h"
#include "schema/file_bytes.h"

namespace korvel {
namespace {

InputError SchemaErrors(const std::string& name, const std::vector<qmx::ReadError>& errors) {
  InputError faults;
  for (const qmx::ReadError& error : errors) {
    faults.lines.push_back(OneLine(FileLineColumn(name, error.location) + ": error: " + error.text));
  }
  return faults;
}

Input FromText(const std::string& name, std::shared_ptr<qmx::XmlBuffer> buffer, std::size_t size) {
  qmx::ReadResult result = buffer->Read(size);
  if (!result.schema) throw SchemaErrors(name, result.errors);
  const std::string_view bytes(buffer->data(), size);
  SchemaText schema{std::move(buffer), bytes, std::move(result.schema->source_map)};
  return {{name, std::move(result.schema->metalib), std::move(schema), {}}, std::nullopt};
}

Input FromImage(const std::string& name, qmx::ImageResult result) {
  if (!result.metalib) throw InputError{{OneLine(name + ": error: " + qmx::Describe(result.error))}};
  return {{name, std::move(*result.metalib), std::nullopt, {}}, std::nullopt};
}

Input FromBytes(const std::string& name, Bytes bytes) {
  if (qmx::IsImage(bytes.View())) return FromImage(name, qmx::LoadImage(std::move(bytes.data), bytes.size));
  auto buffer = std::make_shared<qmx::XmlBuffer>(std::max<std::size_t>(bytes.size, 1));
  std::ranges::copy(bytes.View(), buffer->data());
  bytes.data.reset();
  return FromText(name, std::move(buffer), bytes.size);
}

Input MapFile(const OpenFile& file) {
  Input input = FromImage(file.name, qmx::MapImage(file.descriptor.get()));
  input.mapped = file.state;
  return input;
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

Input ReadFileAt(const std::string& path) {
  const OpenFile file = OpenInput(path);
  return file.is_mappable_image ? MapFile(file) : file.size > 0 ? ReadRegular(file) : ReadStream(file);
}

}  // namespace

void RequireUnchanged(const Input& input) {
  if (input.mapped) RequireUnchanged(input.name, *input.mapped);
}

Input LoadBytes(const std::string& name, Bytes bytes) {
  Input input = FromBytes(name, std::move(bytes));
  ListTables(input);
  return input;
}

Input LoadFile(const std::string& path) {
  Input input = ReadFileAt(path);
  ListTables(input);
  return input;
}

}  // namespace korvel
