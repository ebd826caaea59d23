// Loads schemas. What a schema may hold is not decided here. Held by tests/tool/input_test.cpp and image_test.cpp.
#include "tool/input.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>

#include "common/meta_view.h"
#include "qmx/qmx_image.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_xml.h"
#include "tool/cannot_ask.h"
#include "tool/file_bytes.h"
#include "tool/one_line.h"
#include "tool/shrunk_file.h"

namespace korvel::tool {
namespace {

// From here on loading a file takes so much longer than starting a thread that the thread pays; less in an image than in text.
constexpr std::size_t kLargeFile = std::size_t{256} << 10;  // bytes

CannotAsk SchemaErrors(const std::string& name, const std::vector<qmx::ReadError>& errors) {
  CannotAsk faults;
  for (const qmx::ReadError& error : errors) {
    const std::string place = std::to_string(error.place.line) + ":" + std::to_string(error.place.column);
    faults.lines.push_back(OneLine(name + ":" + place + ": error: " + error.text));
  }
  return faults;
}

Input FromText(const std::string& name, Bytes bytes) {
  qmx::ReadResult result = qmx::ReadXml(bytes.View());
  if (!result.schema) throw SchemaErrors(name, result.errors);
  return {name, std::move(result.schema->metalib), SchemaText{std::move(bytes), std::move(result.schema->source_map)}, {}};
}

Input FromImage(const std::string& name, qmx::ImageResult result) {
  if (!result.metalib) throw CannotAsk{{OneLine(name + ": error: " + qmx::Describe(result.error))}};
  return {name, std::move(*result.metalib), std::nullopt, {}};
}

Input MapFile(const OpenFile& file) {
  EndOnShrunkFile();
  return FromImage(file.name, qmx::MapImage(file.descriptor.get()));
}

Input ReadFile(const OpenFile& file) {
  Bytes bytes = ReadAll(file);
  if (!qmx::IsImage(bytes.View())) return FromText(file.name, std::move(bytes));
  return FromImage(file.name, qmx::LoadImage(std::move(bytes.data), bytes.size));
}

void ListTables(Input& input) {
  const int number = qmx_get_meta_num(input.Library());
  for (int i = 0; i < number; ++i) {
    const LPQMXMETA meta = qmx_get_meta_by_index(input.Library(), i);
    if (HasPrimaryKey(meta)) input.tables.emplace_back(qmx_get_meta_name(meta));
  }
}

Input LoadInput(const std::string& path) {
  const OpenFile file = OpenInput(path);
  Input input = file.is_mappable_image ? MapFile(file) : ReadFile(file);
  ListTables(input);
  return input;
}

// What came of a file: an input, or why there is none.
struct Loaded {
  std::optional<Input> input;
  std::exception_ptr fault;
};

Loaded TryToLoad(const std::string& path) {
  try {
    return {LoadInput(path), nullptr};
  } catch (...) {
    return {std::nullopt, std::current_exception()};
  }
}

// How many threads are of use.
std::size_t UsefulThreads(const std::vector<std::string>& paths) {
  const auto is_large = [](const std::string& path) { return SizeOf(path) >= kLargeFile; };
  const auto large = static_cast<std::size_t>(std::ranges::count_if(paths, is_large));
  return large < 2 ? 1 : std::min<std::size_t>(large, std::thread::hardware_concurrency());
}

// Loads the files, each by the first thread that is free.
std::vector<Loaded> LoadAll(const std::vector<std::string>& paths) {
  std::vector<Loaded> loaded(paths.size());
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t i = next++; i < paths.size(); i = next++) loaded[i] = TryToLoad(paths[i]);
  };
  std::vector<std::jthread> helpers;
  const std::size_t wanted = UsefulThreads(paths);
  try {
    while (helpers.size() + 1 < wanted) helpers.emplace_back(work);
  } catch (const std::system_error&) {
    // As many as the system gives: this thread does what is left.
  }
  work();
  helpers.clear();
  return loaded;
}

}  // namespace

bool Input::HasMeta(const std::string& meta) const { return qmx_get_meta_by_name(Library(), meta.c_str()) != nullptr; }

std::vector<Input> LoadInputs(const std::vector<std::string>& paths) {
  std::vector<Input> inputs;
  CannotAsk faults;
  for (Loaded& loaded : LoadAll(paths)) {
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
