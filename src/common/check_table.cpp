// Parses a table's attributes and finds its sort fields. What a change of them means is not decided here.
// Tested by tests/rules/check_table_test.cpp.
#include "common/check_table.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <span>
#include <string_view>

#include "common/error_text.h"
#include "common/meta_view.h"
#include "common/refusals.h"

using namespace korvel;

namespace {

// A word and the code it stands for.
struct Word {
  std::string_view text;
  int code;
};

constexpr Word kTableTypes[] = {{"GENERIC", TABLE_TYPE_GENERIC}, {"LIST", TABLE_TYPE_LIST}, {"SORTLIST", TABLE_TYPE_SORTLIST}};
constexpr Word kSortRules[] = {{"INSC", SORT_RULE_INSC}, {"DESC", SORT_RULE_DESC}};
constexpr Word kDataProtocols[] = {{"QMX", 0}, {"TLV", 1}};

// The attributes of a table, those given.
struct Attributes {
  std::optional<int> table_type;
  std::optional<int> list_num;
  std::optional<int> sort_rule;
  std::optional<int> data_protocol;
};

// An attribute: its key, where its value goes, and the words allowed; without words, a positive number.
struct AttributeRule {
  std::string_view key;
  std::optional<int> Attributes::*value;
  std::span<const Word> words;
};

constexpr AttributeRule kAttributeRules[] = {
    {"TableType", &Attributes::table_type, kTableTypes},
    {"ListNum", &Attributes::list_num, {}},
    {"SortRule", &Attributes::sort_rule, kSortRules},
    {"DataProtocol", &Attributes::data_protocol, kDataProtocols},
};

// What is wrong; empty = nothing.
using Fault = std::string;

std::string Quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

// The names of words or rules, for a text: "GENERIC, LIST, SORTLIST".
template <class Items, class Name>
std::string Joined(const Items& items, Name name) {
  std::string text;
  for (const auto& item : items) text += (text.empty() ? "" : ", ") + std::string(name(item));
  return text;
}

std::optional<int> ParsePositive(std::string_view text) {
  int value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < 1) return std::nullopt;
  return value;
}

std::optional<int> ParseWord(std::span<const Word> words, std::string_view text) {
  for (const Word& word : words) {
    if (word.text == text) return word.code;
  }
  return std::nullopt;
}

Fault ParseAttribute(std::string_view pair, Attributes& attributes) {
  const std::string_view key = pair.substr(0, pair.find('='));
  const std::string_view text = pair.substr(std::min(key.size() + 1, pair.size()));
  for (const AttributeRule& rule : kAttributeRules) {
    if (rule.key != key) continue;
    std::optional<int>& value = attributes.*rule.value;
    if (value.has_value()) return std::string(key) + " is given twice; allowed: once";
    value = rule.words.empty() ? ParsePositive(text) : ParseWord(rule.words, text);
    if (value.has_value()) return {};
    const std::string allowed =
        rule.words.empty() ? "1 to 2147483647" : Joined(rule.words, [](const Word& word) { return word.text; });
    return std::string(key) + " is " + Quoted(text) + "; allowed: " + allowed;
  }
  return "attribute " + Quoted(pair) +
         " is unknown; allowed: " + Joined(kAttributeRules, [](const AttributeRule& rule) { return rule.key; }) +
         ", each as key=value, joined by ';'";
}

Fault ParseAttributes(std::string_view text, Attributes& attributes) {
  while (!text.empty()) {
    const std::size_t length = std::min(text.find(';'), text.size());
    if (Fault fault = ParseAttribute(text.substr(0, length), attributes); !fault.empty()) return fault;
    text.remove_prefix(length);
    if (text == ";") return "attribute '' is unknown; allowed: no ';' behind the last one";
    if (!text.empty()) text.remove_prefix(1);
  }
  if (attributes.table_type.value_or(TABLE_TYPE_GENERIC) != TABLE_TYPE_GENERIC && !attributes.list_num.has_value()) {
    return "ListNum is missing; a list table needs it";
  }
  return {};
}

bool IsInteger(int type_code) { return type_code >= QMX_TYPE_INT8 && type_code <= QMX_TYPE_UINT64; }

// Adds up the sort fields of a sorted list: those marked sort=1, sort=2 ... by their second custom attribute.
Fault CountSortFields(LPQMXMETALIB metalib, LPQMXMETA meta, int& sort_field_num) {
  constexpr std::string_view kMark = "sort=";
  std::array<const char*, KORVEL_MAX_LIST_SORT_NUM> fields{};
  for (const auto [index, entry] : Entries(meta)) {
    const char* customattr2 = qmx_get_entry_customattr2(metalib, entry);
    if (customattr2 == nullptr || !std::string_view(customattr2).starts_with(kMark)) continue;
    const char* given = qmx_get_entry_name(entry);
    const char* name = given == nullptr ? "" : given;
    const std::string_view digits = std::string_view(customattr2).substr(kMark.size());
    const int position = digits.size() == 1 ? digits.front() - '0' : 0;
    if (position < 1 || position > KORVEL_MAX_LIST_SORT_NUM) {
      return "field " + Quoted(name) + " is marked " + Quoted(customattr2) +
             "; allowed: sort=1 to sort=" + std::to_string(KORVEL_MAX_LIST_SORT_NUM);
    }
    const char*& field = fields[static_cast<std::size_t>(position - 1)];
    if (field != nullptr) return "fields " + Quoted(field) + " and " + Quoted(name) + " both are marked " + Quoted(customattr2);
    if (!IsInteger(qmx_get_entry_type(entry))) return "sort field " + Quoted(name) + " is no integer; allowed: int8 to uint64";
    field = name;
    ++sort_field_num;
  }
  if (sort_field_num == 0) return "a sorted list has no sort field; one is marked by customattr2 'sort=1'";
  for (int i = 0; i < sort_field_num; ++i) {
    if (fields[static_cast<std::size_t>(i)] == nullptr) {
      return "no field is marked 'sort=" + std::to_string(i + 1) + "'; sort fields are numbered from 1 without gaps";
    }
  }
  return {};
}

// Doubles every '%': the checker uses CheckTable's text as a format.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) escaped.append(c == '%' ? 2 : 1, c);
  return escaped;
}

// Writes a text and returns the code. A cut does not leave half of an escaped '%'.
template <class... Args>
int Fail(CheckTable& check, int code, const TextFormat<Args...>& message, Exactly<Args>... args) {
  FormatText(check.m_szErrorType, message.text, args...);
  const std::string_view text(check.m_szErrorType);
  const std::size_t last_other = text.find_last_not_of('%') + 1;
  if ((text.size() - last_other) % 2 != 0) check.m_szErrorType[text.size() - 1] = '\0';
  return code;
}

constexpr TextFormat<> kNoTable("CheckTable: the library, the table's name or the place for its protocol is missing");
constexpr TextFormat<CString> kUnknownTable("CheckTable: the library has no table:'%s'");

}  // namespace

CheckTable::CheckTable() : CheckTable(std::string()) {}

CheckTable::CheckTable(const std::string& svr_ver) : m_szErrorType{}, m_svr_ver(svr_ver) {}

CheckTable::~CheckTable() = default;

int CheckTable::CheckTableTypeByCustomAttr(LPQMXMETALIB metalib, const char* metaname, int& table_type, int& list_num,
                                           int& sort_field_num, int& sort_rule, char* data_protocol, bool /*flag*/,
                                           LPVESKCATEGORYINST /*log_handle*/) {
  if (metalib == nullptr || metaname == nullptr || *metaname == '\0' || data_protocol == nullptr) {
    return Fail(*this, CHECK_TABLE_ERROR_INVALID_PARAMETER, kNoTable);
  }
  const LPQMXMETA meta = qmx_get_meta_by_name(metalib, metaname);
  if (meta == nullptr) return Fail(*this, CHECK_TABLE_ERROR_SYSTEM_ERROR, kUnknownTable, Escaped(metaname).c_str());
  const char* customattr = qmx_get_meta_customattr(meta);

  Attributes attributes;
  Fault fault = ParseAttributes(customattr == nullptr ? "" : customattr, attributes);
  if (fault.empty() && !attributes.table_type.has_value()) return ERROR_OLD_TABLE_DEFINE;
  int sort_fields = 0;
  if (fault.empty() && attributes.table_type == TABLE_TYPE_SORTLIST) fault = CountSortFields(metalib, meta, sort_fields);
  if (!fault.empty()) {
    return Fail(*this, kTableAttributes.code, kTableAttributes, Escaped(metaname).c_str(), Escaped(fault).c_str());
  }

  table_type = *attributes.table_type;
  list_num = attributes.list_num.value_or(0);
  sort_field_num = sort_fields;
  sort_rule = attributes.sort_rule.value_or(SORT_RULE_INSC);
  const std::string_view protocol = attributes.data_protocol ? kDataProtocols[*attributes.data_protocol].text : "";
  data_protocol[protocol.copy(data_protocol, protocol.size())] = '\0';
  return CHECK_TABLE_SUCCESS;
}
