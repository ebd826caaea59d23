// The plain model of the checker: the operations that run the rules in order. Tested by model_test.cpp.
#include "model/rules.h"

namespace model {
namespace {

constexpr int kError = 300, kInfo = 600;
constexpr int kRecordFormat = 1, kTlv = 2;

bool AreMissing(const PlainLibrary* old_library, const PlainLibrary* new_library, const Name& table) {
  return new_library == nullptr || !table || old_library == nullptr || table->empty();
}

const char* ProtocolName(const PlainLibrary& library) { return library.is_tlv ? "TLV" : "QMX"; }

// Steps of the main check; each returns 0 or the result code.

int CheckArguments(Checker& checker, const PlainLibrary* old_library, const PlainLibrary* new_library, const Name& table,
                   int table_type, int init_version) {
  static constexpr char kMethod[] = "KorvelModifyTable";
  const std::string name = Shown(table);
  if (AreMissing(old_library, new_library, table)) return Fail(checker, -1, kMethod, TextId::kBadArguments, {{"table", name}});
  Write(checker, Fill(TextId::kTrace, {{"file", checker.trace_file},
                                       {"line", std::to_string(checker.trace_line)},
                                       {"operation", kMethod},
                                       {"server", checker.state.server},
                                       {"table", name},
                                       {"type", std::to_string(table_type)}}));
  LogBuffer(checker, kInfo, kMethod);
  if (table_type != 0 && table_type != 1) {
    return Fail(checker, -1, kMethod, TextId::kBadTableType, {{"type", std::to_string(table_type)}, {"table", name}});
  }
  if (init_version != kRecordFormat && init_version != kTlv) {
    return Fail(checker, -1, kMethod, TextId::kBadInitVersion, {{"table", name}});
  }
  if (old_library->is_tlv && !new_library->is_tlv) return Fail(checker, -1, kMethod, TextId::kTlvToQmx, {{"table", name}});
  if (old_library->version > new_library->version) {
    return Fail(checker, -1, kMethod, TextId::kLibVersion,
                {{"new", std::to_string(new_library->version)}, {"old", std::to_string(old_library->version)}});
  }
  if (old_library->Find(table) == nullptr || new_library->Find(table) == nullptr) {
    return Fail(checker, -2, kMethod, TextId::kNoTable, {{"table", name}});
  }
  return 0;
}

int CheckRecordFields(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta, int old_version) {
  int result = CompareEntryValueField(checker, old_meta, new_meta);
  if (result == 0) result = CompareOrder(checker, old_meta, new_meta);
  if (result == 0 && old_version < 0) return -2;
  if (result == 0) result = CompareVersion(checker, old_meta, new_meta, old_version);
  return result;
}

int CheckFields(Checker& checker, const PlainLibrary& old_library, const PlainLibrary& new_library, const Name& table,
                int init_version) {
  static constexpr char kMethod[] = "KorvelModifyTable";
  const PlainMeta* old_meta = old_library.Find(table);
  const PlainMeta* new_meta = new_library.Find(table);
  const bool are_tlv = old_library.is_tlv && new_library.is_tlv;
  if (are_tlv) {
    const int result = CompareEntryValueFieldTLV(checker, old_meta, new_meta);
    if (result != 0) LogOnly(checker, kError, kMethod, TextId::kTlvFieldsFailed, {{"table", Shown(table)}});
    if (result != 0) return result;
  }
  if (init_version == kRecordFormat) return CheckRecordFields(checker, old_meta, new_meta, old_library.version);
  if (are_tlv) return 0;
  return Fail(checker, -2, kMethod, TextId::kProtocols,
              {{"old", ProtocolName(old_library)}, {"new", ProtocolName(new_library)}, {"init", "TLV"}, {"table", Shown(table)}});
}

}  // namespace

int KorvelModifyTable(Checker& checker, const PlainLibrary* old_library, const PlainLibrary* new_library, const Name& table,
                      int table_type, int init_version, const std::string& server, const std::string& whitelist,
                      int maybe_list_num) {
  static constexpr char kMethod[] = "KorvelModifyTable";
  checker.state.server = server;
  int result = CheckArguments(checker, old_library, new_library, table, table_type, init_version);
  if (result != 0) return result;
  const PlainMeta* old_meta = old_library->Find(table);
  const PlainMeta* new_meta = new_library->Find(table);
  result = ComparePrimaryKey(checker, old_meta, new_meta);
  if (result == 0) result = CompareSplittableKey(checker, old_meta, new_meta);
  if (result == 0) result = CompareIndex(checker, old_meta, new_meta, table_type);
  if (result != 0) return result;
  if (CheckListMetaInfo(checker, table, old_library, new_library, table_type, maybe_list_num) != 0) return -1;
  result = CheckFields(checker, *old_library, *new_library, table, init_version);
  if (result != 0) return result;
  result = CheckFieldNameValidate(checker, new_meta);
  if (result != 0) return Fail(checker, result, kMethod, TextId::kNameCheckFailed, {{"table", Shown(table)}});
  if (!server.empty()) result = CheckWhiteListFieldLen(checker, table, old_library, new_library, server, whitelist);
  if (result != 0) return result == -3 ? -35 : result;
  LogOnly(checker, kInfo, kMethod, TextId::kSucceeded, {{"table", Shown(table)}});
  return 0;
}

int CheckTableMetaCompatible(Checker& checker, const PlainLibrary* old_library, const PlainLibrary* new_library,
                             const Name& table) {
  const Values values = {{"table", Shown(table)}};
  const auto say = [&checker, &values](int result, TextId text_id) {
    if (result != 0) LogOnly(checker, kError, "CheckTableMetaCompatible", text_id, values);
    return result;
  };
  if (AreMissing(old_library, new_library, table)) return say(-1, TextId::kCompatArguments);
  const PlainMeta* old_meta = old_library->Find(table);
  const PlainMeta* new_meta = new_library->Find(table);
  if (old_meta == nullptr || new_meta == nullptr) return say(-2, TextId::kCompatNoTable);
  if (const int result = say(ComparePrimaryKey(checker, old_meta, new_meta), TextId::kCompatKey)) return result;
  if (const int result = say(CompareEntryValueField(checker, old_meta, new_meta), TextId::kCompatFields)) return result;
  if (const int result = say(CompareOrder(checker, old_meta, new_meta), TextId::kCompatOrder)) return result;
  if (old_library->version < 0) return say(-2, TextId::kCompatNoVersion);
  return say(CompareVersion(checker, old_meta, new_meta, old_library->version), TextId::kCompatVersion);
}

int CompareValue(Checker& checker, const PlainMeta* source, const PlainMeta* target, const PlainLibrary* source_library,
                 const PlainLibrary* target_library, int init_version) {
  const auto say = [&checker](int result, TextId text_id, const Values& values) {
    if (result != 0) LogOnly(checker, kError, "CompareValue", text_id, values);
    return result;
  };
  const auto say_result = [&say](int result, TextId text_id) {
    return say(result, text_id, {{"result", std::to_string(result)}});
  };
  if (source_library->is_tlv) {
    if (!target_library->is_tlv) return 0;
    if (const int result = say_result(CompareEntryValueFieldTLV(checker, source, target), TextId::kValuesTlv)) return result;
  }
  if (init_version != kRecordFormat) return 0;
  if (const int result = say_result(CompareEntryValueField(checker, source, target), TextId::kValuesFields)) return result;
  if (source_library->version < 0) return say(-2, TextId::kValuesNoVersion, {{"table", Shown(source->name)}});
  // Swapped: the destination is passed as the old side, with the source's version.
  return say_result(CompareVersion(checker, target, source, source_library->version), TextId::kValuesVersion);
}

}  // namespace model
