// The findings about one table: plain data, and the fingerprint of a finding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/diff/edit.h"
#include "qmx/qmx_source_map.h"
#include "rule_docs/advice.h"

namespace korvel {

// Bytes of a file and the text that replaces them.
struct Replacement {
  qmx::Span span;
  std::string text;
};

// A result of the checker.
struct Verdict {
  int code = 0;      // 0 = allowed
  std::string text;  // verbatim; empty if allowed, and for a refusal without a text
  std::string rule;  // id in a catalog, that of advice if allowed; may be empty if allowed, and for a refusal without a row there

  bool Refused() const { return code != 0; }
};

// A waiver of the project file that covers a finding.
struct Waiver {
  std::string reason;
  std::string until;     // "2027-01-31", the last day on which it holds
  bool is_wide = false;  // covers any change that the rule refuses here, not only the one that was accepted
};

struct Finding {
  Level level = Level::kRefused;
  // The edits that are refused, by their position in Changes::edits, ascending. One edit; several if they are refused only in
  // combination, of which none can be left out; none if the refusal is pre-existing or the table was removed. Of a warning or
  // note, the one edit that it is about, by its position in Advice::edits.
  std::vector<std::size_t> edits;
  Verdict verdict;   // about exactly these edits and those they need
  std::string path;  // "orders.items[].price"
  Location old_location;
  Location new_location;
  std::string suggestion;        // one line for people; empty only if the caller wanted no suggestions
  bool has_fix = false;          // whether the checker allows something other than leaving the edit out
  std::vector<Replacement> fix;  // edits of the new file in its order, after which the checker allows the change; may be empty
  std::string fingerprint;       // 16 hexadecimal digits; see FingerprintOf
  std::optional<Waiver> waiver;
  // Of a warning or note: the refusals of changes of the same element, by their position in Changes::findings.
  std::vector<std::size_t> refusals;
};

// Whether a finding is a warning or a note.
inline bool IsAdvice(const Finding& finding) { return finding.level != Level::kRefused; }

enum class EditStatus : std::uint8_t {
  kAllowed,     // in the set of edits that the checker allowed together
  kRefused,     // in a finding
  kBlocked,     // needs a refused edit
  kNotChecked,  // left out because the search stopped at the limit of findings, or hidden by a pre-existing refusal
};

// What changed in one table, and what of it the checker refuses.
struct Changes {
  std::vector<Edit> edits;         // in the order of Difference::edits
  std::vector<EditStatus> status;  // of each edit
  std::vector<Finding> findings;   // empty if and only if the whole change is allowed
  // The verdict about the old schema with all allowed edits and no others. Refused only if the refusal is pre-existing; then it
  // is about all edits that cause no other refusal. The checker stops at the first refusal, so they are not checked, and no edit
  // is allowed.
  Verdict allowed_together;
  bool stopped = false;             // the limit of findings was reached
  bool reached_work_limit = false;  // the call reached a limit of SuggestionWork at this table
  // The texts of the findings are those of another table that embeds the same structures (SharedSearches), and may name it.
  bool borrows_texts = false;
};

// Warnings and notes about the edits of one table. Reports leave out some (TableResult::IsHidden).
struct Advice {
  std::vector<Edit> edits;        // those that the findings are about, one each
  std::vector<Finding> findings;  // warnings, then notes; without fixes
};

// 16 hexadecimal digits: a hash of a text. Stored in project files: do not change.
std::string FingerprintOf(const std::string& text);

// Identifies a finding across runs, and what was changed. A hash of the file (Source::path_in_project), the library's name, the
// rule, and the kind, structure, item and change (as in ChangeOf) of each edit, in any order. For a finding without edits, of its
// path and the edits that it may hide (as in ChangeOf). Tables and paths to an edit are left out: the fingerprint is the same in
// every table that embeds a structure. Stored in project files: do not change.
std::string FingerprintOf(const std::string& file, const std::string& library, const Finding& finding,
                          const std::vector<Edit>& edits);

// The fingerprint without file and values, as project files of earlier versions contain it. Only for messages about them.
std::string OldFingerprintOf(const std::string& library, const Finding& finding, const std::vector<Edit>& edits);

// What the edits of a finding change, with old and new values, on one line: "attribute ListNum of orders: 100 -> 99". Several
// edits are sorted and joined by "; ". For a finding without edits, `edits`, which it may hide, except for the version of the
// library. A structure that an entry gets is described by a hash of its content. Stored in project files: do not change.
std::string ChangeOf(const Finding& finding, const std::vector<Edit>& edits);

}  // namespace korvel
