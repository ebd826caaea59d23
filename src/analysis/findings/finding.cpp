// Computes fingerprints. Tested by tests/report/fingerprint_test.cpp.
#include "analysis/findings/finding.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cstdint>

#include "base/text.h"
#include "qmx/qmx_metalib_kernel.h"
#include "schema/model.h"

namespace korvel {
namespace {

constexpr char kEnd = '\0';  // after each part; no name contains it

// A refusal without a row in the catalog is identified by its code.
std::string RuleOf(const Verdict& verdict) { return verdict.rule.empty() ? std::to_string(verdict.code) : verdict.rule; }

std::string ItemText(const Edit& edit) { return std::string(NameOf(edit.kind)) + kEnd + edit.meta + kEnd + edit.item + kEnd; }

// The edits of a finding, sorted, each as `text_of` gives it.
template <class TextOf>
std::vector<std::string> TextsOf(const Finding& finding, const std::vector<Edit>& edits, TextOf text_of) {
  std::vector<std::string> texts;
  for (const std::size_t i : finding.edits) texts.push_back(text_of(edits[i]));
  std::ranges::sort(texts);
  return texts;
}

// The edits that a pre-existing refusal may hide: all of the table, for the checker stops at the refusal. The version of the
// library is checked before the tables, and rises with a change of any of them.
Finding WithHiddenEdits(const Finding& finding, const std::vector<Edit>& edits) {
  Finding with_edits;
  for (std::size_t i = 0; i < edits.size(); ++i) {
    if (edits[i].kind != EditKind::kLibraryVersion) with_edits.edits.push_back(i);
  }
  return finding.edits.empty() ? with_edits : finding;
}

// The library, the rule, the path if the finding has no edits, and these texts.
std::string HashedText(const std::string& library, const Finding& finding, const std::vector<std::string>& texts) {
  return library + kEnd + RuleOf(finding.verdict) + kEnd + (finding.edits.empty() ? finding.path + kEnd : "") + Join(texts, "");
}

// ", id 7, version 6, count 3": attributes of an added entry. Its type is the new value of the edit.
std::string AddedAttributes(const Edit& edit) {
  if (!edit.new_location) return "";
  const qmx::ElementId& element = edit.new_location.element;
  const LPQMXMETA meta = qmx_get_meta_by_index(edit.new_location.source->Library(), static_cast<int>(element.meta));
  const LPQMXMETAENTRY entry = qmx_get_entry_by_index(meta, static_cast<int>(element.item));
  const int id = qmx_get_entry_id(entry);
  const int count = qmx_get_entry_count(entry);
  return (id == -1 ? "" : ", id " + std::to_string(id)) + ", version " + std::to_string(qmx_get_entry_version(entry)) +
         (count == 1 ? "" : ", count " + std::to_string(count));
}

// What a structure contains, with all structures in it.
std::string ContentOf(const Source& source, const std::string& structure) {
  std::string content;
  const auto add = [&](const auto&... values) { ((content += values + kEnd), ...); };
  for (const MetaModel& meta : ModelOf(source, structure).metas) {
    add(meta.name, std::to_string(static_cast<int>(meta.kind)), std::to_string(meta.entries.size()));
    for (const EntryModel& entry : meta.entries) {
      add(entry.name, entry.type, std::to_string(entry.size), std::to_string(entry.id), std::to_string(entry.version),
          std::to_string(entry.count), entry.refer, entry.customattr2 ? "=" + *entry.customattr2 : std::string());
    }
  }
  return content;
}

// " (content 1f0c...)" if an edit gives an entry a structure: its declaration is no edit of the table.
std::string StructureContent(const Edit& edit) {
  if (!edit.new_location) return "";
  const Source& source = *edit.new_location.source;
  const qmx::ElementId& element = edit.new_location.element;
  const LPQMXMETA meta = qmx_get_meta_by_index(source.Library(), static_cast<int>(element.meta));
  const LPQMXMETAENTRY entry = qmx_get_entry_by_index(meta, static_cast<int>(element.item));
  const LPQMXMETA structure = qmx_get_entry_type_meta(source.Library(), entry);
  if (structure == nullptr) return "";
  return " (content " + FingerprintOf(ContentOf(source, qmx_get_meta_name(structure))) + ")";
}

// The description of an edit with the values that it leaves out.
std::string ChangeText(const Edit& edit) {
  switch (edit.kind) {
    case EditKind::kEntryAdded:
      return Describe(edit) + ": " + OneLine(edit.after) + AddedAttributes(edit) + StructureContent(edit);
    case EditKind::kEntryType:
    case EditKind::kEntryMeta:
      return Describe(edit) + StructureContent(edit);
    case EditKind::kIndexAdded:
      return Describe(edit) + ": " + OneLine(edit.after);
    case EditKind::kEntryRemoved:
    case EditKind::kIndexRemoved:
      return Describe(edit) + ": " + OneLine(edit.before);
    case EditKind::kEntryMoved:
    case EditKind::kIndexMoved:
      return Describe(edit) + " (was " + (edit.before.empty() ? "at the front" : "after " + OneLine(edit.before)) + ")";
    default:
      return Describe(edit);
  }
}

}  // namespace

std::string FingerprintOf(const std::string& text) {
  constexpr int kDigits = 16;
  std::uint64_t hash = XXH3_64bits(text.data(), text.size());
  std::string digits(kDigits, '0');
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, hash >>= 4) *digit = "0123456789abcdef"[hash & 0xF];
  return digits;
}

std::string FingerprintOf(const std::string& file, const std::string& library, const Finding& finding,
                          const std::vector<Edit>& edits) {
  const auto text_of = [](const Edit& edit) { return ItemText(edit) + ChangeText(edit) + kEnd; };
  return FingerprintOf(file + kEnd + HashedText(library, finding, TextsOf(WithHiddenEdits(finding, edits), edits, text_of)));
}

std::string OldFingerprintOf(const std::string& library, const Finding& finding, const std::vector<Edit>& edits) {
  return FingerprintOf(HashedText(library, finding, TextsOf(finding, edits, ItemText)));
}

std::string ChangeOf(const Finding& finding, const std::vector<Edit>& edits) {
  return Join(TextsOf(WithHiddenEdits(finding, edits), edits, ChangeText), "; ");
}

}  // namespace korvel
