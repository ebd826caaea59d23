// Checks changes of tables for tests.
#pragma once

#include <string>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/findings/findings.h"

namespace report_test {

// A change of a table and the settings of its check. The sources must outlive it.
struct ChangeCheck {
  const korvel::Source& old_source;
  const korvel::Source& new_source;
  std::string table;
  korvel::Settings settings;

  korvel::Verdict WholeVerdict() const;
  bool IsOnBothSides() const { return old_source.HasMeta(table) && new_source.HasMeta(table); }
  korvel::Changes Find(std::size_t max_findings = korvel::kMaxFindings) const;
};

// The settings are the given ones, then those of the old source.
ChangeCheck MakeCheck(const korvel::Source& old_source, const korvel::Source& new_source, const std::string& table,
                      const korvel::PartialSettings& given = {});

// All results, one line for each edit and each finding:
//
//   allowed entry-added orders.note
//   refused entry-type orders.uid
//   [primary-key.size] -3 entry-type orders.uid
//     orders.uid 5d1c4f0a9b3e7721
//     The size of primarykey can't be modified! entry:'uid' metaname:'orders'
//   together: allowed
std::string ToText(const korvel::Changes& changes);

// Fails the test if a law of all changes is violated: the whole change is refused if and only if there are findings, every
// verdict is that of the checker, every edit of a combination is needed, and the allowed edits are allowed.
void ExpectLaws(const ChangeCheck& check, const korvel::Changes& changes);

}  // namespace report_test
