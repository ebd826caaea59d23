// Reads schema files. What a schema may hold is not decided here. Held by tests/tool/input_test.cpp.
#include "tool/input.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>

#include "common/meta_view.h"
#include "qmx/qmx_metalib_kernel.h"
#include "tool/cannot_ask.h"
#include "tool/file_descriptor.h"
#include "tool/one_line.h"

namespace korvel::tool {
namespace {

constexpr char kStandardInput[] = "-";
constexpr std::size_t kFirstPiece = std::size_t{64} << 10;  // bytes; for pipes, whose size is not known

std::string ShownName(const std::string& path) { return path == kStandardInput ? "<stdin>" : path; }

[[noreturn]] void RefuseFile(const std::string& name, const std::string& reason) {
  throw CannotAsk{{Said(OneLine(name) + ": " + reason)}};
}

[[noreturn]] void RefuseTooLarge(const std::string& name) {
  RefuseFile(name, "is too large; allowed: up to " + std::to_string(qmx::kMaxFileBytes) + " bytes");
}

FileDescriptor Open(const std::string& path) {
  // A pipe without a writer waits for one here, like any reader.
  const int fd = path == kStandardInput ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) RefuseFile(ShownName(path), std::strerror(errno));
  return FileDescriptor(fd);
}

// The size by which reading begins: one byte more than a file holds, so that its end is seen without growing.
std::size_t FirstSize(int fd, const std::string& name) {
  struct stat status {};
  if (::fstat(fd, &status) != 0) RefuseFile(name, std::strerror(errno));
  if (S_ISDIR(status.st_mode)) RefuseFile(name, "is a directory; allowed: a schema file, or '-' for standard input");
  if (!S_ISREG(status.st_mode)) return kFirstPiece;
  if (static_cast<std::uintmax_t>(status.st_size) > qmx::kMaxFileBytes) RefuseTooLarge(name);
  return std::max(static_cast<std::size_t>(status.st_size) + 1, kFirstPiece);
}

std::string ReadBytes(const std::string& path) {
  const FileDescriptor file = Open(path);
  const std::string name = ShownName(path);
  std::string text(FirstSize(file.get(), name), '\0');
  std::size_t size = 0;
  while (true) {
    const ssize_t got = ::read(file.get(), text.data() + size, text.size() - size);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) RefuseFile(name, std::string("cannot be read: ") + std::strerror(errno));
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
    if (size > qmx::kMaxFileBytes) RefuseTooLarge(name);
    if (size == text.size()) text.resize(std::min(size * 2, qmx::kMaxFileBytes + 1));
  }
  text.resize(size);
  return text;
}

CannotAsk SchemaErrors(const std::string& name, const std::vector<qmx::ReadError>& errors) {
  CannotAsk faults;
  for (const qmx::ReadError& error : errors) {
    const std::string place = std::to_string(error.place.line) + ":" + std::to_string(error.place.column);
    faults.lines.push_back(OneLine(name + ":" + place + ": error: " + error.text));
  }
  return faults;
}

// Fills in what is known of each meta. Metas stand in the order of the file.
void ListMetas(std::string_view text, Input& input) {
  qmx::PlaceCounter places(text);
  const int number = qmx_get_meta_num(input.Library());
  for (int i = 0; i < number; ++i) {
    const qmx::ElementId id{qmx::ElementId::Kind::kMeta, static_cast<std::uint32_t>(i), 0, 0};
    const LPQMXMETA meta = qmx_get_meta_by_index(input.Library(), i);
    const std::string_view name = qmx_get_meta_name(meta);
    input.meta_places.emplace(name, places.At(input.schema.source_map.Find(id).value_or(0)));
    if (HasPrimaryKey(meta)) input.tables.push_back(name);
  }
}

Input LoadInput(const std::string& path) {
  const std::string text = ReadBytes(path);
  qmx::ReadResult result = qmx::ReadXml(text);
  if (!result.schema) throw SchemaErrors(ShownName(path), result.errors);
  Input input{ShownName(path), std::move(*result.schema), {}, {}};
  ListMetas(text, input);
  return input;
}

}  // namespace

std::vector<Input> LoadInputs(const std::vector<std::string>& paths) {
  std::vector<Input> inputs;
  CannotAsk faults;
  for (const std::string& path : paths) {
    try {
      inputs.push_back(LoadInput(path));
    } catch (const CannotAsk& fault) {
      faults.lines.insert(faults.lines.end(), fault.lines.begin(), fault.lines.end());
    }
  }
  if (!faults.lines.empty()) throw faults;
  return inputs;
}

}  // namespace korvel::tool
