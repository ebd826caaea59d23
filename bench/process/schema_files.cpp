// Writes the schema files line by line: memory held by the runner would add to the peak of every program that it starts.
#include "process/schema_files.h"

#include <cstdio>

namespace bench {
namespace {

constexpr const char* kTypes[] = {"int32", "uint64", "double", "int64"};
constexpr const char* kRefusedType = "int8";  // smaller than any of them
constexpr int kNewVersion = 2;                // of the new library, and of what was added to it

void WriteEntry(std::FILE* file, int position, const char* type, int version) {
  std::fprintf(file, "    <entry name=\"field_%d\" id=\"%d\" type=\"%s\" version=\"%d\" desc=\"field %d of a table\"/>\n",
               position, position + 1, type, version, position);
}

const char* TypeOf(int position) { return kTypes[position % 4]; }

// `change` is the change of this table.
void WriteTable(std::FILE* file, int number, int fields, Kind change) {
  std::fprintf(file, "  <meta name=\"table_%d\" desc=\"table %d\">\n", number, number);
  const auto is_refused = [&](int i) { return change == Kind::kTenthRefused && i % 10 == 9; };  // the key is field 0
  for (int i = 0; i + 1 < fields; ++i) WriteEntry(file, i, is_refused(i) ? kRefusedType : TypeOf(i), 1);
  WriteEntry(file, fields - 1, change == Kind::kOneRefused || is_refused(fields - 1) ? kRefusedType : TypeOf(fields - 1), 1);
  if (change == Kind::kOneAdded) WriteEntry(file, fields, TypeOf(fields), kNewVersion);
  std::fputs("    <primarykey entries=\"field_0\"/>\n  </meta>\n", file);
}

void WriteTables(std::FILE* file, const Shape& shape, Kind change) {
  for (int i = 0; i < shape.metas; ++i) {
    const bool shows = change != Kind::kOneRefused || i + 1 == shape.metas;
    WriteTable(file, i, shape.fields, shows ? change : Kind::kIdentical);
  }
}

void WriteTower(std::FILE* file, int levels) {
  // Small, because every level doubles the total size.
  std::string below = "int8";
  for (int i = 1; i <= levels; ++i) {
    std::fprintf(file,
                 "  <meta name=\"level_%d\">\n    <entry name=\"left\" id=\"1\" type=\"%s\"/>\n"
                 "    <entry name=\"right\" id=\"2\" type=\"%s\"/>\n  </meta>\n",
                 i, below.c_str(), below.c_str());
    below = "level_" + std::to_string(i);
  }
  std::fprintf(file,
               "  <meta name=\"table_0\">\n    <entry name=\"field_0\" id=\"1\" type=\"int32\"/>\n"
               "    <entry name=\"top\" id=\"2\" type=\"%s\"/>\n    <primarykey entries=\"field_0\"/>\n  </meta>\n",
               below.c_str());
}

}  // namespace

bool WriteSchema(const std::string& path, const Shape& shape, Kind kind, qmx::Protocol protocol, bool is_new) {
  std::FILE* const file = std::fopen(path.c_str(), "w");
  if (file == nullptr) return false;
  const Kind change = is_new ? kind : Kind::kIdentical;
  std::fprintf(file, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<metalib name=\"bench\" version=\"%d\" protocol=\"%s\">\n",
               change == Kind::kIdentical ? 1 : kNewVersion, protocol == qmx::Protocol::kTlv ? "TLV" : "QMX");
  if (shape.levels > 0) {
    WriteTower(file, shape.levels);
  } else {
    WriteTables(file, shape, change);
  }
  std::fputs("</metalib>\n", file);
  const bool written = std::ferror(file) == 0;
  return std::fclose(file) == 0 && written;
}

}  // namespace bench
