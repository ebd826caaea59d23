// Checks a change, writes records and reads them. Tested by answer_test.cpp and exceptions_test.cpp.
#include "codec/promise.h"

#include "codec/compare.h"
#include "codec/key.h"
#include "codec/packed.h"
#include "codec/tlv.h"
#include "common/modify_table.h"
#include "common/refusals.h"
#include "qmx/qmx_metalib_kernel.h"

namespace codec {
namespace {

std::optional<Value> Read(Form form, const std::string& bytes, LPQMXMETA meta) {
  return form == Form::kPacked ? ReadPacked(bytes, meta) : ReadTlv(bytes, meta);
}

// Compares what the new schema reads with what the old one reads, since a packed record lacks fields above its version.
std::optional<Broken> ReadOne(Form form, const std::string& bytes, LPQMXMETA old_meta, LPQMXMETA new_meta) {
  const std::optional<Value> before = Read(form, bytes, old_meta);
  if (!before) return Broken{form, false, "not even the old schema reads it"};
  const std::optional<Value> after = Read(form, bytes, new_meta);
  if (!after) return Broken{form, false, "cannot be read"};
  const std::string where = Difference(*before, *after, form == Form::kPacked ? Match::kName : Match::kId);
  if (!where.empty()) return Broken{form, false, where};
  if (KeysOf(*before, old_meta) != KeysOf(*after, new_meta)) return Broken{form, true, "a key has other bytes"};
  return std::nullopt;
}

std::string Line(const support::Field& field) {
  std::string line = "    " + field.name + " " + field.type;
  if (field.size != 0) line += "(" + std::to_string(field.size) + ")";
  if (field.count != 1) line += "[" + std::to_string(field.count) + "]";
  if (!field.refer.empty()) line += " refer " + field.refer;
  return line + " id " + std::to_string(field.id) + " version " + std::to_string(field.version) + "\n";
}

void Describe(std::string& text, const char* side, const support::Library& library) {
  text += side;
  text += library.protocol == qmx::Protocol::kTlv ? " TLV" : " QMX";
  text += " version " + std::to_string(library.version) + "\n";
  for (const support::Table& table : library.tables) {
    text += table.kind == QMX_TYPE_UNION ? "  union " : "  structure ";
    text += table.name + " key";
    for (const std::string& member : table.key) text += " " + member;
    text += '\n';
    for (const support::Field& field : table.fields) text += Line(field);
  }
}

}  // namespace

std::string Refused(const Change& change) {
  const support::Schema old_schema = change.old_lib.Build();
  const support::Schema new_schema = change.new_lib.Build();
  ModifyTable checker;
  const int code = checker.KorvelModifyTable(old_schema.Lib(), new_schema.Lib(), "t", change.table_type, change.created_in,
                                             nullptr, "", "", change.list_num);
  if (code == 0) return "";
  const korvel::RefusalRow* row = korvel::Identify(checker.GetErrType());
  return row == nullptr ? "unknown" : row->id;
}

std::vector<Form> FormsOf(const Change& change) {
  std::vector<Form> forms;
  if (change.created_in == 1) forms.push_back(Form::kPacked);
  const bool both_tlv = change.old_lib.protocol == qmx::Protocol::kTlv && change.new_lib.protocol == qmx::Protocol::kTlv;
  if (both_tlv) forms.push_back(Form::kTlv);
  return forms;
}

std::optional<Broken> ReadBack(const Change& change, int records, std::mt19937_64& random, std::uint64_t& read_back) {
  const support::Schema old_schema = change.old_lib.Build();
  const support::Schema new_schema = change.new_lib.Build();
  const LPQMXMETA old_meta = old_schema.Meta("t");
  const LPQMXMETA new_meta = new_schema.Meta("t");
  for (int i = 0; i < records; ++i) {
    const Value record = RandomRecord(old_meta, random);
    for (const Form form : FormsOf(change)) {
      const std::string bytes = form == Form::kPacked ? WritePacked(record, change.old_lib.version) : WriteTlv(record);
      if (std::optional<Broken> broken = ReadOne(form, bytes, old_meta, new_meta)) return broken;
      ++read_back;
    }
  }
  return std::nullopt;
}

std::string Describe(const Change& change) {
  std::string text = "created in " + std::to_string(change.created_in) + "\n";
  Describe(text, "old", change.old_lib);
  Describe(text, "new", change.new_lib);
  return text;
}

}  // namespace codec
