// Makes pairs of libraries with the builder. This time is not measured.
#include "library/shapes.h"

#include <cstdio>
#include <cstdlib>

namespace bench {
namespace {

constexpr int kOldVersion = 5;
constexpr const char* kTypes[] = {"uint64", "int32", "string", "uint32"};

// One side of a pair.
class Side {
 public:
  Side(qmx::Protocol protocol, Kind kind, bool is_new)
      : builder_("bench", is_new ? kOldVersion + 1 : kOldVersion, protocol),
        adds_(is_new && kind == Kind::kOneAdded),
        shrinks_(is_new && kind == Kind::kOneRefused) {}

  // A table of simple fields, the first of which is its key.
  void AddTable(const std::string& name, int fields, bool is_last) {
    builder_.AddMeta(name);
    for (int i = 0; i < fields; ++i) {
      const bool shrinks = shrinks_ && is_last && i == fields / 2;
      AddField("field_" + std::to_string(i), shrinks ? "uint8" : kTypes[i % 4], i + 1);
    }
    Finish(fields + 1);
    builder_.SetPrimaryKey({"field_0"});
  }

  // Structures s0, s1 ... and the table "top", which uses the last of them.
  void AddTower(int levels) {
    for (int i = 0; i < levels; ++i) {
      builder_.AddMeta("s" + std::to_string(i));
      const std::string below = i == 0 ? (shrinks_ ? "uint8" : "uint32") : "s" + std::to_string(i - 1);
      AddField("left", below, 1);
      AddField("right", below, 2);
      Finish(3);
    }
    builder_.AddMeta("top");
    AddField("key", "uint32", 1);
    AddField("root", "s" + std::to_string(levels - 1), 2);
    builder_.SetPrimaryKey({"key"});
  }

  qmx::Metalib Make() {
    qmx::BuildResult result = builder_.Finish();
    for (const qmx::BuildError& error : result.errors) std::fprintf(stderr, "bench: %s\n", error.text.c_str());
    if (!result.metalib) std::exit(1);
    return *result.metalib;
  }

 private:
  void AddField(const std::string& name, const std::string& type, int id, int version = 1) {
    builder_.AddEntry({.name = name, .type = type, .size = 32, .id = id, .version = version});
  }

  void Finish(int next_id) {
    if (adds_) AddField("added", "uint32", next_id, kOldVersion + 1);
  }

  qmx::MetalibBuilder builder_;
  bool adds_;
  bool shrinks_;
};

qmx::Metalib MakeSide(const Shape& shape, const std::vector<std::string>& tables, Side side) {
  if (shape.levels > 0) {
    side.AddTower(shape.levels);
  } else {
    for (const std::string& table : tables) side.AddTable(table, shape.fields, table == tables.back());
  }
  return side.Make();
}

}  // namespace

Pair MakePair(const Shape& shape, Kind kind, qmx::Protocol protocol) {
  std::vector<std::string> tables;
  if (shape.levels > 0) {
    tables.emplace_back("top");
  } else {
    for (int i = 0; i < shape.metas; ++i) tables.push_back("table_" + std::to_string(i));
  }
  const double entry_pairs = shape.levels > 0 ? 2.0 * (shape.levels + 1) : static_cast<double>(shape.metas) * shape.fields;
  return {MakeSide(shape, tables, Side(protocol, kind, false)), MakeSide(shape, tables, Side(protocol, kind, true)), tables,
          entry_pairs};
}

}  // namespace bench
