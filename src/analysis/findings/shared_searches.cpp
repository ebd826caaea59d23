// Compares tables and differences. Tested by tests/report/shared_searches_test.cpp.
#include "analysis/findings/shared_searches.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include "qmx/qmx_metalib_kernel.h"
#include "schema/declaration.h"

namespace korvel {
namespace {

// A list of texts as one: no two lists give the same.
class KeyText {
 public:
  KeyText& Add(std::string_view part) {
    text_.append(std::to_string(part.size())).append(":").append(part);
    return *this;
  }
  KeyText& AddOptional(const std::optional<std::string>& part) { return Add(std::string_view(part ? "=" + *part : "")); }
  KeyText& Add(std::int64_t number) { return Add(std::string_view(std::to_string(number))); }

  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
};

MetaModel TableOf(const TableContext& context, const Source& source) {
  const LPQMXMETALIB library = source.Library();
  return MetaOf(library, qmx_get_meta_by_name(library, context.table.c_str()));
}

bool HasSameValues(const Edit& a, const Edit& b) {
  return a.kind == b.kind && a.meta == b.meta && a.item == b.item && a.before == b.before && a.after == b.after;
}

std::vector<std::string_view> StructuresOf(const Model& model) {
  std::vector<std::string_view> names;
  for (const MetaModel& meta : model.metas) names.push_back(meta.name);
  names.erase(names.begin());  // the table
  std::ranges::sort(names);
  return names;
}

bool IsFile(const Source& source) { return source.text && !source.text->is_dump; }

// Whether an entry with a structure has the name or id of another entry.
bool IsAmbiguous(const MetaModel& table) {
  std::map<std::string_view, int> names;
  std::map<std::int32_t, int> ids;
  for (const EntryModel& entry : table.entries) {
    ++names[entry.name];
    if (entry.id >= 0) ++ids[entry.id];
  }
  return std::ranges::any_of(table.entries, [&](const EntryModel& entry) {
    return IsCompositeType(entry.type) && (names[entry.name] > 1 || (entry.id >= 0 && ids[entry.id] > 1));
  });
}

}  // namespace

std::optional<std::string> SearchKeyOf(const TableContext& context, std::size_t max_findings) {
  const bool are_files = IsFile(context.old_source) && IsFile(context.new_source);
  if (!are_files || !context.new_source.HasMeta(context.table)) return std::nullopt;
  const MetaModel table = TableOf(context, context.old_source);
  if (table != TableOf(context, context.new_source) || IsAmbiguous(table)) return std::nullopt;
  const Settings& settings = context.settings;
  KeyText key;
  key.Add(settings.type).Add(settings.created_as).Add(std::string_view(settings.server_version));
  key.Add(std::string_view(settings.whitelist)).Add(settings.list_num).Add(static_cast<std::int64_t>(max_findings));
  key.Add(table.kind).AddOptional(table.customattr);
  for (const EntryModel& entry : table.entries) {
    if (!IsCompositeType(entry.type)) continue;
    key.Add(std::string_view(entry.type)).Add(entry.count).Add(entry.version).AddOptional(entry.customattr2);
    key.Add(entry.refer.empty() ? 0 : 1).Add(entry.id < 0 ? 0 : 1);
    key.Add(std::ranges::count(table.primary_key, entry.name) + std::ranges::count(table.splittable_key, entry.name));
    if (!settings.whitelist.empty()) key.Add(std::string_view(entry.name));
  }
  return key.Take();
}

void SharedSearches::Add(const std::string& key, SharedSearch search) {
  const std::scoped_lock lock(mutex_);
  searches_.try_emplace(key, std::move(search));
}

const SharedSearch* SharedSearches::Find(const std::string& key, const Difference& difference) const {
  const std::scoped_lock lock(mutex_);
  const auto found = searches_.find(key);
  if (found == searches_.end()) return nullptr;
  const Difference& known = found->second.difference;
  const bool has_same_edits = std::ranges::equal(known.edits(), difference.edits(), HasSameValues);
  const bool has_same_structures = StructuresOf(known.old_model()) == StructuresOf(difference.old_model()) &&
                                   StructuresOf(known.new_model()) == StructuresOf(difference.new_model());
  return has_same_edits && has_same_structures ? &found->second : nullptr;
}

}  // namespace korvel
