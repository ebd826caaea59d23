// Computes fingerprints. Tested by tests/report/fingerprint_test.cpp.
#include "analysis/findings/finding.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cstdint>

namespace korvel {
namespace {

constexpr char kEnd = '\0';  // after each part; no name contains it

// A refusal without a row in the catalog is identified by its code.
std::string RuleOf(const Verdict& verdict) { return verdict.rule.empty() ? std::to_string(verdict.code) : verdict.rule; }

}  // namespace

std::string FingerprintOf(const std::string& text) {
  constexpr int kDigits = 16;
  std::uint64_t hash = XXH3_64bits(text.data(), text.size());
  std::string digits(kDigits, '0');
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, hash >>= 4) *digit = "0123456789abcdef"[hash & 0xF];
  return digits;
}

std::string FingerprintOf(const std::string& library, const Finding& finding, const std::vector<Edit>& edits) {
  std::vector<std::string> parts;
  for (const std::size_t i : finding.edits) {
    const Edit& edit = edits[i];
    parts.push_back(std::string(NameOf(edit.kind)) + kEnd + edit.meta + kEnd + edit.item + kEnd);
  }
  std::ranges::sort(parts);
  if (parts.empty()) parts.push_back(finding.path + kEnd);
  std::string text = library + kEnd + RuleOf(finding.verdict) + kEnd;
  for (const std::string& part : parts) text += part;
  return FingerprintOf(text);
}

}  // namespace korvel
