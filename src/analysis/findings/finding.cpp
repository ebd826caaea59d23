// Computes fingerprints. Tested by tests/report/fingerprint_test.cpp.
#include "analysis/findings/finding.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cstdint>

#include "base/text.h"
#include "qmx/qmx_metalib_kernel.h"

namespace korvel {
namespace {

constexpr char kEnd = '\0';  // after each part; no name contains it

// A refusal without a row in the catalog is identified by its code.
std::string RuleOf(const Verdict& verdict) { return verdict.rule.empty() ? std::to_string(verdict.code) : verdict.rule; }

std::string ItemText(const Edit& edit) { return std::string(NameOf(edit.kind)) + kEnd + edit.meta + kEnd + edit.item + kEnd; }

// The library, the rule and the edits, each as `text_of` gives it.
template <class TextOf>
std::string HashedText(const std::string& library, const Finding& finding, const std::vector<Edit>& edits, TextOf text_of) {
  std::vector<std::string> parts;
  for (const std::size_t i : finding.edits) parts.push_back(text_of(edits[i]));
  std::ranges::sort(parts);
  if (parts.empty()) parts.push_back(finding.path + kEnd);
  return library + kEnd + RuleOf(finding.verdict) + kEnd + Join(parts, "");
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

// The description of an edit with the values that it leaves out.
std::string ChangeText(const Edit& edit) {
  switch (edit.kind) {
    case EditKind::kEntryAdded:
      return Describe(edit) + ": " + OneLine(edit.after) + AddedAttributes(edit);
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
  return FingerprintOf(file + kEnd + HashedText(library, finding, edits, [](const Edit& edit) {
                         return ItemText(edit) + ChangeText(edit) + kEnd;
                       }));
}

std::string OldFingerprintOf(const std::string& library, const Finding& finding, const std::vector<Edit>& edits) {
  return FingerprintOf(HashedText(library, finding, edits, ItemText));
}

std::string ChangeOf(const Finding& finding, const std::vector<Edit>& edits) {
  std::vector<std::string> texts;
  for (const std::size_t i : finding.edits) texts.push_back(ChangeText(edits[i]));
  std::ranges::sort(texts);
  return Join(texts, "; ");
}

}  // namespace korvel
