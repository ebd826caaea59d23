// Loads schemas. Tested by tests/capi/schema_test.cpp and hostile_test.cpp.
#include "capi/schema.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <utility>

#include "base/input_error.h"
#include "base/paths.h"
#include "capi/call.h"
#include "project/project_path.h"
#include "qmx/qmx_metalib_kernel.h"

namespace korvel::capi {
namespace {

// Like the path of a file below the working directory, without looking for the file.
std::string PathOfName(const std::string& name) {
  const std::filesystem::path path = std::filesystem::path(name).lexically_normal();
  return path.is_absolute() || LeadsOut(path) ? path.filename().string() : path.string();
}

kc_schema* NewSchema(const std::string& name, Bytes bytes, std::string path_in_project) {
  Input input = LoadBytes(name, std::move(bytes));
  input.path_in_project = std::move(path_in_project);
  return new kc_schema{std::make_shared<const LoadedSchema>(std::move(input))};
}

Bytes CopyOf(const std::string& name, const void* data, std::size_t size) {
  if (size > qmx::kMaxFileBytes) RefuseTooLarge(name);
  Bytes bytes{std::make_unique_for_overwrite<char[]>(size), size};
  if (size > 0) std::memcpy(bytes.data.get(), data, size);
  return bytes;
}

// Reads a regular file. "-" is a file of that name, not standard input.
kc_schema* LoadRegular(const std::string& path) {
  const OpenFile file = OpenRegular(path == "-" ? "./-" : path);
  Bytes bytes = ReadAll(file);
  RequireUnchanged(file.name, file.state);
  return NewSchema(file.name, std::move(bytes), PathInProject(nullptr, file.state.path));
}

}  // namespace
}  // namespace korvel::capi

using korvel::capi::Call;
using korvel::capi::Require;

int kc_schema_load(const char* name, const void* data, size_t size, kc_schema** schema, kc_error** error) {
  if (schema != nullptr) *schema = nullptr;
  return Call(error, [&] {
    Require(schema, "kc_schema_load", "schema");
    Require(name, "kc_schema_load", "name");
    if (size > 0) Require(data, "kc_schema_load", "data");
    *schema = korvel::capi::NewSchema(name, korvel::capi::CopyOf(name, data, size), korvel::capi::PathOfName(name));
  });
}

int kc_schema_load_file(const char* path, kc_schema** schema, kc_error** error) {
  if (schema != nullptr) *schema = nullptr;
  return Call(error, [&] {
    Require(schema, "kc_schema_load_file", "schema");
    Require(path, "kc_schema_load_file", "path");
    *schema = korvel::capi::LoadRegular(path);
  });
}

int kc_schema_get(const kc_schema* schema, kc_schema_info* info, size_t size) {
  if (schema == nullptr) return korvel::capi::Clear(info, size, KC_ERROR_ARGUMENT);
  const korvel::Input& input = schema->loaded->input;
  const kc_schema_info value{.name = input.name.c_str(),
                             .library = input.LibraryName(),
                             .version = qmx_get_metalib_version(input.Library()),
                             .is_image = schema->loaded->is_image ? 1 : 0,
                             .table_count = input.tables.size()};
  return korvel::capi::Fill(value, info, size);
}

const char* kc_schema_table(const kc_schema* schema, size_t index) {
  if (schema == nullptr || index >= schema->loaded->input.tables.size()) return nullptr;
  return schema->loaded->input.tables[index].data();  // in the library, where texts end with a zero byte
}

int kc_schema_image(const kc_schema* schema, const void** data, size_t* size, kc_error** error) {
  if (data != nullptr) *data = nullptr;
  if (size != nullptr) *size = 0;
  return Call(error, [&] {
    Require(schema, "kc_schema_image", "schema");
    Require(data, "kc_schema_image", "data");
    Require(size, "kc_schema_image", "size");
    const korvel::capi::LoadedSchema& loaded = *schema->loaded;
    const std::scoped_lock lock(loaded.mutex);
    if (!loaded.image) loaded.image = ImageOf(loaded.input);
    *data = loaded.image->data();
    *size = loaded.image->size();
  });
}

void kc_schema_free(kc_schema* schema) { delete schema; }
