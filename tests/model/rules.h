// The checker once more, for tests only: as plain as it can be said, written from what the checker shall do and never from what
// src/common does, and sharing nothing with it. Slow on purpose: every question walks all of the fields.
//
// A rule is a function of its own under the checker's name, its steps in the order in which the checker shall take them.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "model/plain_library.h"
#include "model/texts.h"

namespace model {

// What stands between the checker and the log.
struct LogGate {
  bool absent = false;      // a null category
  std::optional<int> high;  // bounds; none: a null pointer
  std::optional<int> low;
  bool answer = true;  // what the category answers when it is asked
  bool operator==(const LogGate&) const = default;
};

struct Record {
  int priority = 0;
  std::string method;
  bool from_buffer = false;  // else the text only went to the log
  std::string text;
  bool operator==(const Record&) const = default;
};

struct Grown {
  std::string name;
  std::size_t before = 0;
  std::size_t after = 0;
  bool operator==(const Grown&) const = default;
};

// What a checker holds, and what it said.
struct State {
  std::string buffer;
  std::vector<Grown> grown;
  std::set<std::string> white;
  std::string server;
  std::vector<Record> log;
  std::vector<int> asked;  // priorities that the category was asked about
  bool operator==(const State&) const = default;
};

struct Checker {
  std::optional<Said> last_failure;
  State state;
  LogGate gate;
  // Where the checker's trace is written: a file of its own and a line in it.
  std::string trace_file;
  int trace_line = 0;
  // The wording of what is wrong with a table's attributes is the business of whoever reads them, not of the rules.
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

// What a table's attributes say. Absent: they are malformed, or there is no such table.
struct TableKind {
  bool old_way = false;  // no table type; the rest is unset then
  int type = 0;
  int list_num = 0;
  int sort_fields = 0;
  int sort_rule = 0;
  std::string protocol = {};
};
std::optional<TableKind> KindOf(const PlainLibrary* library, const Name& table);

// --- How a rule speaks ---

// A null text as it is printed.
std::string Shown(const Name& name);

void Write(Checker& checker, const std::string& text);  // into the buffer alone
void LogBuffer(Checker& checker, int priority, const char* method);
void LogOnly(Checker& checker, int priority, const char* method, Said said, const Values& values);

// Writes the text, logs it as an error, and gives the code back.
int Fail(Checker& checker, int code, const char* method, Said said, const Values& values);

}  // namespace model
