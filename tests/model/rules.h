// A second implementation of the checker, for tests only: as simple as possible, written from the required behavior and not from
// src/common, with which it shares nothing. Slow on purpose: every call iterates over all fields.
//
// Each rule is a function with the checker's name for it; its steps are in the checker's order.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/plain_library.h"
#include "model/texts.h"

namespace model {

// The conditions under which the checker writes to the log.
struct LogGate {
  bool absent = false;      // a null category
  std::optional<int> high;  // bounds; absent: a null pointer
  std::optional<int> low;
  bool can_write = true;  // the result of vesk_category_can_write
  bool operator==(const LogGate&) const = default;
};

struct Record {
  int priority = 0;
  std::string method;
  bool from_buffer = false;  // false: the text was only logged
  std::string text;
  bool operator==(const Record&) const = default;
};

struct Grown {
  std::string name;
  std::size_t before = 0;
  std::size_t after = 0;
  bool operator==(const Grown&) const = default;
};

// The members of a checker, and its output.
struct State {
  std::string buffer;
  std::vector<Grown> grown;
  std::set<std::string> white;
  std::string server;
  std::vector<Record> log;
  std::vector<int> can_write_calls;  // priorities of the calls of vesk_category_can_write
  bool operator==(const State&) const = default;
};

struct Checker {
  std::optional<TextId> last_failure;
  State state;
  LogGate gate;
  // The location of the trace record, which is in the checker's own source file.
  std::string trace_file;
  int trace_line = 0;
  // The text for invalid table attributes comes from the class that parses them, not from a rule.
  std::function<std::string(const PlainLibrary*, const Name& table)> wording;
};

int ComparePrimaryKey(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta);
int CompareSplittableKey(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta);
int CompareIndex(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta, int table_type);
int CompareTableField(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta);
int CompareEntryValueField(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta);
int CompareEntryValueFieldTLV(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta);
int CompareVersion(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta, int old_metalib_version);
int CompareOrder(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta);
int CheckFieldNameValidate(Checker& checker, const PlainMeta* meta);
int CheckListMetaInfo(Checker& checker, const Name& table, const PlainLibrary* old_library, const PlainLibrary* new_library,
                      int maybe_table_type, int maybe_list_num);
int CompareSortListInfo(Checker& checker, const Name& source_table, const Name& target_table, const PlainLibrary* source,
                        const PlainLibrary* target);
int CheckWhiteListFieldLen(Checker& checker, const Name& table, const PlainLibrary* old_library, const PlainLibrary* new_library,
                           const std::string& server, const std::string& whitelist);
int KorvelModifyTable(Checker& checker, const PlainLibrary* old_library, const PlainLibrary* new_library, const Name& table,
                      int table_type, int init_version, const std::string& server, const std::string& whitelist,
                      int maybe_list_num);
int CheckTableMetaCompatible(Checker& checker, const PlainLibrary* old_library, const PlainLibrary* new_library,
                             const Name& table);
int CompareValue(Checker& checker, const PlainMeta* source, const PlainMeta* target, const PlainLibrary* source_library,
                 const PlainLibrary* target_library, int init_version);

// The attributes of a table. Absent: they are malformed, or the table does not exist.
struct TableKind {
  bool old_way = false;  // no table type (a definition in the old style); the other members are unset then
  int type = 0;
  int list_num = 0;
  int sort_fields = 0;
  int sort_rule = 0;
  std::string protocol = {};
};
std::optional<TableKind> KindOf(const PlainLibrary* library, const Name& table);

// --- Output of a rule ---

// The printed form of a text that may be null.
std::string Shown(const Name& name);

void Write(Checker& checker, const std::string& text);  // to the buffer only
void LogBuffer(Checker& checker, int priority, const char* method);
void LogOnly(Checker& checker, int priority, const char* method, TextId text_id, const Values& values);

// Writes the text, logs it as an error, and returns the code.
int Fail(Checker& checker, int code, const char* method, TextId text_id, const Values& values);

}  // namespace model
