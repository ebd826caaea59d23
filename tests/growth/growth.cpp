// Makes a pair of libraries and checks each of its tables: korvel_growth SHAPE PROTOCOL SIZE. The script `growth` counts the
// instructions of the check.
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "common/modify_table.h"
#include "qmx/qmx_builder.h"
#include "qmx/qmx_metalib_kernel.h"

namespace {

struct Side {
  qmx::MetalibBuilder builder;
  bool is_new;

  void AddField(const std::string& name, const std::string& type, int id, int version = 1) {
    builder.AddEntry({.name = name, .type = type, .id = id, .version = version});
  }
  // Fields f0, f1 ... with ids 1, 2 ...; the first is the key.
  void AddTable(const std::string& name, int fields) {
    builder.AddMeta(name);
    for (int i = 0; i < fields; ++i) AddField("f" + std::to_string(i), "int32", i + 1);
    builder.SetPrimaryKey({"f0"});
  }
};

std::vector<std::string> Names(int count, bool reversed) {
  std::vector<std::string> names;
  for (int i = 0; i < count; ++i) names.push_back("f" + std::to_string(reversed ? count - 1 - i : i));
  return names;
}

void AddFields(Side& side, int n) { side.AddTable("t", n); }

// A field at the start moves all others.
void AddShifted(Side& side, int n) {
  side.builder.AddMeta("t");
  if (side.is_new) side.AddField("first", "int32", n + 1, 6);
  for (int i = 0; i < n; ++i) side.AddField("f" + std::to_string(i), "int32", i + 1);
  side.builder.SetPrimaryKey({"f0"});
}

void AddReversed(Side& side, int n) {
  side.builder.AddMeta("t");
  for (int i = 0; i < n; ++i) {
    const int number = side.is_new ? n - 1 - i : i;
    side.AddField("f" + std::to_string(number), "int32", number + 1);
  }
  side.builder.SetPrimaryKey({"f0"});
}

// All fields have the same name and id.
void AddAlike(Side& side, int n) {
  side.builder.AddMeta("t");
  for (int i = 0; i < n; ++i) side.AddField("f0", "int32", 1);
  side.builder.SetPrimaryKey({"f0"});
}

void AddTables(Side& side, int n) {
  for (int i = 0; i < n; ++i) side.AddTable("t" + std::to_string(i), 20);
}

// Each structure has two fields of the structure below; the lowest one grew, so that no structure is unchanged.
void AddDepth(Side& side, int n) {
  for (int i = 0; i < n; ++i) {
    side.builder.AddMeta("s" + std::to_string(i));
    const std::string below = i == 0 ? "int32" : "s" + std::to_string(i - 1);
    side.AddField("left", below, 1);
    side.AddField("right", below, 2);
    if (side.is_new && i == 0) side.AddField("more", "int32", 3, 6);
  }
  side.builder.AddMeta("t");
  side.AddField("f0", "int32", 1);
  side.AddField("root", "s" + std::to_string(n - 1), 2);
  side.builder.SetPrimaryKey({"f0"});
}

void AddColumns(Side& side, int n) {
  side.AddTable("t", n);
  std::vector<qmx::ColumnDecl> columns;
  const std::vector<std::string> names = Names(n, side.is_new);
  for (const std::string& name : names) columns.push_back({name});
  side.builder.AddIndex("by_all", columns);
}

void AddKeyMembers(Side& side, int n) {
  side.AddTable("t", n);
  const std::vector<std::string> names = Names(n, side.is_new);
  side.builder.SetPrimaryKey({names.begin(), names.end()});
}

struct Shape {
  std::string name;
  void (*add)(Side& side, int n);
};

const Shape kShapes[] = {{"fields", AddFields}, {"shifted", AddShifted}, {"reversed", AddReversed}, {"alike", AddAlike},
                         {"tables", AddTables}, {"depth", AddDepth},     {"columns", AddColumns},   {"key", AddKeyMembers}};

qmx::Metalib Make(const Shape& shape, bool is_tlv, bool is_new, int n) {
  Side side{{"growth", is_new ? 6 : 5, is_tlv ? qmx::Protocol::kTlv : qmx::Protocol::kQmx}, is_new};
  shape.add(side, n);
  const qmx::BuildResult result = side.builder.Finish();
  if (!result.metalib) std::exit(1);
  return *result.metalib;
}

}  // namespace

// The part that is counted. It has a name so that valgrind can start and stop counting there.
extern "C" [[gnu::noinline]] void KorvelGrowthCheck(const qmx::Metalib& old_lib, const qmx::Metalib& new_lib, bool is_tlv,
                                                    int index) {
  const LPQMXMETA meta = qmx_get_meta_by_index(old_lib.get(), index);
  ModifyTable checker;
  const int code =
      checker.KorvelModifyTable(old_lib.get(), new_lib.get(), qmx_get_meta_name(meta), 0, is_tlv ? 2 : 1, nullptr, "", "", 0);
  std::printf("%d %s\n", code, checker.GetErrType());
}

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string wanted = argv[1];
  const bool is_tlv = argv[2] == std::string("tlv");
  const int n = std::atoi(argv[3]);
  for (const Shape& shape : kShapes) {
    if (shape.name != wanted) continue;
    const qmx::Metalib old_lib = Make(shape, is_tlv, false, n);
    const qmx::Metalib new_lib = Make(shape, is_tlv, true, n);
    for (int i = 0; i < qmx_get_meta_num(old_lib.get()); ++i) {
      if (qmx_get_meta_by_index(old_lib.get(), i)->nPrimayKeyMemberNum > 0) KorvelGrowthCheck(old_lib, new_lib, is_tlv, i);
    }
    return 0;
  }
  return 2;
}
