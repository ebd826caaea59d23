// Loads schemas. What a schema may hold is not decided here. Held by tests/tool/input_test.cpp,
// image_test.cpp and git_test.cpp.
#include "tool/input.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "qmx/qmx_image.h"
#include "qmx/qmx_xml.h"
#include "report/finding/parallel.h"
#include "report/text/one_line.h"
#include "tool/cannot_ask.h"
#include "tool/file_bytes.h"
#include "tool/git.h"
#include "tool/shrunk_file.h"

namespace korvel::tool {
namespace {

CannotAsk SchemaErrors(const std::string& name, const std::vector<qmx::ReadError>& errors) {
  CannotAsk faults;
  for (const qmx::ReadError& error : errors) {
    const std::string place = std::to_string(error.place.line) + ":" + std::to_string(error.place.column);
    faults.lines.push_back(OneLine(name + ":" + place + ": error: " + error.text));
  }
  return faults;
}

Input FromText(const std::string& name, std::shared_ptr<qmx::XmlBuffer> buffer, std::size_t size) {
  qmx::ReadResult result = buffer->Read(size);
  if (!result.schema) throw SchemaErrors(name, result.errors);
  const std::string_view bytes(buffer->data(), size);
  report::SchemaText schema{std::move(buffer), bytes, std::move(result.schema->source_map)};
  return {{name, std::move(result.schema->metalib), std::move(schema), {}}, std::nullopt};
}

Input FromImage(const std::string& name, qmx::ImageResult result) {
  if (!result.metalib) throw CannotAsk{{OneLine(name + ": error: " + qmx::Describe(result.error))}};
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
  EndOnShrunkFile();
  Input input = FromImage(file.name, qmx::MapImage(file.descriptor.get()));
  input.mapped = file.state;
  return input;
}

Input FromImageBytes(const OpenFile& file, std::string_view bytes) {
  auto copy = std::make_unique_for_overwrite<char[]>(bytes.size());
  std::ranges::copy(bytes, copy.get());
  return FromImage(file.name, qmx::LoadImage(std::move(copy), bytes.size()));
}

// Puts the bytes where the parser reads them.
Input ReadRegular(const OpenFile& file) {
  auto buffer = std::make_shared<qmx::XmlBuffer>(file.size);
  const std::size_t size = ReadUpTo(file, buffer->data(), file.size);
  RequireUnchanged(file.name, file.state);
  if (const std::string_view bytes(buffer->data(), size); qmx::IsImage(bytes)) return FromImageBytes(file, bytes);
  return FromText(file.name, std::move(buffer), size);
}

// A pipe or device: its size shows at its end, which may never come. What begins as no schema is none, whatever follows.
Input ReadStream(const OpenFile& file) {
  return FromBytes(file.name,
                   ReadAll(file, [](std::string_view bytes) { return !qmx::IsImage(bytes) && !qmx::MayBeXml(bytes); }));
}

Input LoadFile(const std::string& path) {
  const OpenFile file = OpenInput(path);
  return file.is_mappable_image ? MapFile(file) : file.size > 0 ? ReadRegular(file) : ReadStream(file);
}

Input Load(const std::string& path, Git& git) {
  const std::optional<GitPath> in_git = ParseGitPath(path);
  Input input = in_git ? FromBytes(path, git.Read(*in_git)) : LoadFile(path);
  ListTables(input);
  return input;
}

// What came of a file: an input, or why there is none.
struct Loaded {
  std::optional<Input> input;
  std::exception_ptr fault;
};

Loaded TryToLoad(const std::string& path, Git& git) {
  try {
    return {Load(path, git), nullptr};
  } catch (...) {
    return {std::nullopt, std::current_exception()};
  }
}

// How many threads are of use. A large image would pay less than a large text; both do.
std::size_t UsefulThreads(const std::vector<std::string>& paths) {
  const auto is_large = [](const std::string& path) { return SizeOf(path) >= kWorthAThread; };
  return static_cast<std::size_t>(std::ranges::count_if(paths, is_large));
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

std::vector<Input> LoadInputs(const std::vector<std::string>& paths) {
  std::vector<Input> inputs;
  CannotAsk faults;
  std::vector<Loaded> files(paths.size());
  Git git;
  ForEach(paths.size(), UsefulThreads(paths), [&](std::size_t i) { files[i] = TryToLoad(paths[i], git); });
  for (Loaded& loaded : files) {
    try {
      if (loaded.fault != nullptr) std::rethrow_exception(loaded.fault);
      inputs.push_back(std::move(*loaded.input));
    } catch (const CannotAsk& fault) {
      faults.lines.insert(faults.lines.end(), fault.lines.begin(), fault.lines.end());
    }
  }
  if (!faults.lines.empty()) throw faults;
  return inputs;
}

}  // namespace korvel::tool
