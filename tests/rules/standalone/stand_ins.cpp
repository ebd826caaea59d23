#include "rules/standalone/stand_ins.h"

#include <algorithm>
#include <cstring>

#include "common/check_table.h"
#include "common/text_helpers.h"
#include "qmx/qmx_metalib_kernel.h"

namespace stand_ins {
namespace {

constexpr std::size_t kWords = 8192;
constexpr std::uint64_t kPoison = 0x5A5A5A5A5A5A5A5A;

std::string Text(const std::optional<std::string>& text) { return text.value_or("(null)"); }

void WriteDown(const std::string& question) { TheWorld().calls.push_back(question); }

std::string Label(LPQMXMETALIB library) { return library == nullptr ? "(null)" : TheWorld().libraries.at(library)->label; }

// Handles must be of records that a test made: any other handle is invalid and ends the test.
const MetaFacts& Facts(LPQMXMETA meta) { return TheWorld().metas.at(meta); }
const EntryFacts& Facts(LPQMXMETAENTRY entry) { return TheWorld().entries.at(entry); }

const char* CText(const std::optional<std::string>& text) { return text ? text->c_str() : nullptr; }

}  // namespace

World& TheWorld() {
  static World world;
  return world;
}

std::vector<std::string> World::CallsOf(const std::string& words) const {
  std::vector<std::string> call;
  std::ranges::copy_if(calls, std::back_inserter(call), [&](const std::string& question) { return question.starts_with(words); });
  return call;
}

FakeLibrary::FakeLibrary(std::string library_label, std::vector<int> library_versions, std::int64_t flag)
    : label(std::move(library_label)),
      versions(std::move(library_versions)),
      memory_(kWords, kPoison),
      used_(sizeof(tagQMXMetaLib)) {
  Lib()->iFlag = flag;
  TheWorld().libraries[Lib()] = this;
}

FakeLibrary::~FakeLibrary() {
  for (LPQMXMETA meta : metas_) TheWorld().metas.erase(meta);
  for (LPQMXMETAENTRY entry : entries_) TheWorld().entries.erase(entry);
  TheWorld().libraries.erase(Lib());
}

std::int64_t FakeLibrary::Offset(const void* place) const {
  const auto* data = reinterpret_cast<const char*>(memory_.data()) + offsetof(tagQMXMetaLib, data);
  return static_cast<const char*>(place) - data;
}

template <typename Record>
Record* FakeLibrary::Allocate(std::size_t count) {
  auto* place = reinterpret_cast<char*>(memory_.data()) + used_;
  used_ += (sizeof(Record) * count + 7) / 8 * 8;
  return reinterpret_cast<Record*>(place);
}

LPQMXMETA FakeLibrary::AddMeta(std::optional<std::string> name, const std::vector<std::optional<EntryFacts>>& entries) {
  auto* meta = Allocate<tagQMXMeta>();
  meta->ptrMeta = Offset(meta);
  meta->nPrimayKeyMemberNum = 0;
  meta->ptrPrimayKeyBase = QMX_NO_REF;
  meta->iIndexesNum = 0;
  meta->ptrIndexes = QMX_NO_REF;
  meta->stSplitTableKey.ptrEntry = QMX_NO_REF;
  MetaFacts& facts = TheWorld().metas[meta];
  facts.name = std::move(name);
  for (const std::optional<EntryFacts>& one : entries) {
    LPQMXMETAENTRY entry = one ? Allocate<tagQMXMetaEntry>() : nullptr;
    facts.entries.push_back(entry);
    if (!one) continue;
    entry->chDBFlag = one->db_flag;
    TheWorld().entries[entry] = *one;
    entries_.push_back(entry);
  }
  metas_.push_back(meta);
  return meta;
}

void FakeLibrary::SetKey(LPQMXMETA meta, const std::vector<int>& entries) {
  auto* members = Allocate<tagQMXDBKeyInfo>(entries.size());
  meta->nPrimayKeyMemberNum = static_cast<std::int16_t>(entries.size());
  meta->ptrPrimayKeyBase = Offset(members) - meta->ptrMeta;
  for (const int index : entries) members++->ptrEntry = Offset(Facts(meta).entries.at(static_cast<std::size_t>(index)));
}

void FakeLibrary::SetSplittableKey(LPQMXMETA meta, std::string text, int result) {
  meta->stSplitTableKey.ptrEntry = Offset(Facts(meta).entries.at(0));
  TheWorld().metas.at(meta).splittable_text = std::move(text);
  TheWorld().metas.at(meta).splittable_result = result;
}

// Called once for each meta: its list has one index.
void FakeLibrary::AddIndex(LPQMXMETA meta, const std::string& name, const std::vector<int>& entries) {
  auto* index = Allocate<tagQMXMetaIndex>();
  auto* columns = Allocate<tagQMXColumnInfo>(entries.size());
  auto* text = Allocate<char>(name.size() + 1);
  std::memcpy(text, name.c_str(), name.size() + 1);
  meta->iIndexesNum = 1;
  meta->ptrIndexes = Offset(index) - meta->ptrMeta;
  index->ptrName = Offset(text);
  index->iColumnNum = static_cast<std::int32_t>(entries.size());
  index->ptrColumnBase = Offset(columns) - meta->ptrMeta;
  for (const int entry : entries) columns++->ptrEntry = Offset(Facts(meta).entries.at(static_cast<std::size_t>(entry)));
}

}  // namespace stand_ins

using stand_ins::Facts;
using stand_ins::TheWorld;
using stand_ins::WriteDown;

extern "C" {

int qmx_get_metalib_version(LPQMXMETALIB metalib) {
  WriteDown("version of " + stand_ins::Label(metalib));
  std::vector<int>& versions = TheWorld().libraries.at(metalib)->versions;
  const int version = versions.front();
  if (versions.size() > 1) versions.erase(versions.begin());
  return version;
}

LPQMXMETA qmx_get_meta_by_name(LPQMXMETALIB metalib, const char* name) {
  WriteDown("meta of " + stand_ins::Label(metalib) + " " + name);
  const auto* first = reinterpret_cast<const char*>(metalib);
  for (const auto& [meta, facts] : TheWorld().metas) {
    const auto* place = reinterpret_cast<const char*>(meta);
    const bool is_inside = place > first && place < first + stand_ins::kWords * sizeof(std::uint64_t);
    if (is_inside && facts.name && *facts.name == name) return meta;
  }
  return nullptr;
}

const char* qmx_get_meta_name(LPQMXMETA meta) { return meta == nullptr ? nullptr : stand_ins::CText(Facts(meta).name); }

int qmx_get_meta_splittablekey(LPQMXMETA meta, char* buffer, std::size_t size, char** error) {
  const bool is_zero = std::all_of(buffer, buffer + size, [](char byte) { return byte == 0; });
  WriteDown("splittable key of " + stand_ins::Text(Facts(meta).name) + " size " + std::to_string(size) +
            (is_zero ? " zeros" : " dirty") + (*error == nullptr ? " no error" : " an error"));
  std::strncpy(buffer, Facts(meta).splittable_text.c_str(), size - 1);
  return Facts(meta).splittable_result;
}

int qmx_get_entry_num(LPQMXMETA meta) { return meta == nullptr ? 0 : static_cast<int>(Facts(meta).entries.size()); }

LPQMXMETAENTRY qmx_get_entry_by_index(LPQMXMETA meta, int index) {
  WriteDown("entry " + std::to_string(index) + " of " + stand_ins::Text(Facts(meta).name));
  return Facts(meta).entries.at(static_cast<std::size_t>(index));
}

const char* qmx_get_entry_name(LPQMXMETAENTRY entry) {
  if (entry == nullptr) return nullptr;
  WriteDown("name of " + stand_ins::Text(Facts(entry).name));
  return stand_ins::CText(Facts(entry).name);
}

int qmx_get_entry_id(LPQMXMETAENTRY entry) { return Facts(entry).id; }
int qmx_get_entry_version(LPQMXMETAENTRY entry) { return Facts(entry).version; }

int qmx_get_entry_type(LPQMXMETAENTRY entry) {
  if (entry != nullptr) return Facts(entry).type;
  WriteDown("type of null");
  return TheWorld().type_of_null;
}

LPQMXMETA qmx_get_entry_type_meta(LPQMXMETALIB metalib, LPQMXMETAENTRY entry) {
  WriteDown("structure in " + stand_ins::Label(metalib));
  return entry == nullptr ? nullptr : Facts(entry).type_meta;
}

std::size_t qmx_get_entry_unitsize(LPQMXMETAENTRY entry) { return Facts(entry).unit_size; }
int qmx_get_entry_count(LPQMXMETAENTRY entry) { return Facts(entry).count; }
LPQMXMETAENTRY qmx_get_entry_refer(LPQMXMETAENTRY entry) { return Facts(entry).refer ? entry : nullptr; }

const char* qmx_get_entry_customattr2(LPQMXMETALIB metalib, LPQMXMETAENTRY entry) {
  WriteDown("attribute in " + stand_ins::Label(metalib));
  return stand_ins::CText(Facts(entry).attr2);
}

}  // extern "C"

CheckTable::CheckTable() : CheckTable(std::string()) {}

CheckTable::CheckTable(const std::string& svr_ver) : m_szErrorType{}, m_svr_ver(svr_ver) {}

CheckTable::~CheckTable() = default;

int CheckTable::CheckTableTypeByCustomAttr(LPQMXMETALIB metalib, const char* metaname, int& table_type, int& list_num,
                                           int& sort_field_num, int& sort_rule, char* data_protocol, bool flag,
                                           LPVESKCATEGORYINST log_handle) {
  const bool are_zero = table_type == 0 && list_num == 0 && sort_field_num == 0 && sort_rule == 0 &&
                        std::all_of(data_protocol, data_protocol + 8, [](char byte) { return byte == 0; });
  WriteDown("table " + std::string(metaname) + " of " + stand_ins::Label(metalib) + " server [" + m_svr_ver + "]" +
            (are_zero ? " zeros" : " dirty") + (flag ? " flag" : " no flag") + (log_handle == nullptr ? " quiet" : " loud"));
  const stand_ins::TableFacts& facts = TheWorld().libraries.at(metalib)->table;
  table_type = facts.type;
  list_num = facts.number;
  sort_field_num = facts.sort_fields;
  sort_rule = facts.sort_rule;
  std::strncpy(data_protocol, facts.protocol.c_str(), 7);
  std::strncpy(m_szErrorType, facts.text.c_str(), sizeof m_szErrorType - 1);
  return facts.result;
}

void SplitString(const char* str, const char* separators, std::set<std::string>& out) {
  WriteDown("split [" + std::string(str) + "] at [" + separators + "]");
  out.insert(TheWorld().whitelist.begin(), TheWorld().whitelist.end());
}

int RealCmpVersion(const char* a, const char* b, bool flag) {
  WriteDown("compare " + std::string(a) + " with " + b + (flag ? " flag" : " no flag"));
  return TheWorld().comparisons.at(b);
}
