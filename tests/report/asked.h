// Changes of tables, taken apart for tests.
#pragma once

#include <string>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/findings/findings.h"

namespace report_test {

// A change of a table with all that is asked about it. The sources outlive it.
struct Asked {
  const korvel::Source& old_source;
  const korvel::Source& new_source;
  std::string table;
  korvel::Settings settings;  // all of them

  korvel::Verdict Whole() const;
  bool IsOnBothSides() const { return old_source.HasMeta(table) && new_source.HasMeta(table); }
  korvel::Changes TakeApart(std::size_t max_findings = korvel::kMaxFindings) const;
};

// Asks with settings from the old source, but for those given.
Asked Ask(const korvel::Source& old_source, const korvel::Source& new_source, const std::string& table,
          const korvel::Settings& given = {});

// Everything that was found out, one line an edit and a finding:
//
//   allowed entry-added orders.note
//   refused entry-type orders.uid
//   [primary-key.size] -3 entry-type orders.uid
//     orders.uid 5d1c4f0a9b3e7721
//     The size of primarykey can't be modified! entry:'uid' metaname:'orders'
//   together: allowed
std::string Shown(const korvel::Changes& changes);

// Fails the test where something does not hold that holds of all changes: the whole is refused if and only if there are findings,
// every verdict is the checker's own, no edit of a combination can be left out, what is allowed is allowed.
void ExpectLaws(const Asked& asked, const korvel::Changes& changes);

}  // namespace report_test
