// Refused changes, each with the checker's own words.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/diff/edit.h"
#include "qmx/qmx_source_map.h"

namespace korvel {

// Bytes of a file and what to put there instead.
struct Replacement {
  qmx::Span span;
  std::string text;
};

// What the checker answered.
struct Verdict {
  int code = 0;      // 0 = allowed
  std::string text;  // verbatim; empty for a refusal without a text
  std::string rule;  // id in the catalogue; empty if the text has no row there

  bool Refused() const { return code != 0; }
};

// The waiver of a project that lets a finding pass.
struct Waiver {
  std::string reason;
  std::string until;  // "2027-01-31", the last day on which it holds
};

struct Finding {
  // The edits that are refused, by their position in Changes::edits: one; several where only together they are refused, and
  // then no fewer of them are; none where the schema is refused as it already was.
  std::vector<std::size_t> edits;
  Verdict verdict;   // about exactly these edits
  std::string path;  // "orders.items[].price"
  Location old_location;
  Location new_location;
  std::string suggestion;        // one line for people; never empty
  bool has_fix = false;          // whether something other than leaving the edit out is known that the checker allows
  std::vector<Replacement> fix;  // in the new file, in its order: what makes the checker allow it; may be empty
  std::string fingerprint;       // 16 hexadecimal digits: stable while rule, root of the change and kinds of edits stay
  std::optional<Waiver> waiver;
};

enum class EditStatus : std::uint8_t {
  kAllowed,  // is in the set that was put to the checker as a whole and allowed
  kRefused,  // has a finding
  kBlocked,  // nothing speaks against it but an edit that it needs and that is refused
};

// What changed about one table, and which of it the checker refuses.
struct Changes {
  std::vector<Edit> edits;         // library first, then metas and their entries in the order of the walk
  std::vector<EditStatus> status;  // of each edit
  std::vector<Finding> findings;   // not empty if and only if the whole check refuses
  // The answer about the old schema with all allowed edits and no other: what may go now, if it is allowed.
  Verdict allowed_together;
  bool stopped = false;  // at the most findings that were asked for: edits not looked at any more count as kBlocked
};

}  // namespace korvel
