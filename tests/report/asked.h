// Changes of tables, taken apart for tests.
#pragma once

#include <string>
#include <vector>

#include "report/edit/diff.h"
#include "report/finding/findings.h"

namespace report_test {

// A change of a table with all that is asked about it. The sources outlive it.
struct Asked {
  const korvel::report::Source& old_source;
  const korvel::report::Source& new_source;
  std::string table;
  korvel::report::Settings settings;  // all of them

  korvel::report::Verdict Whole() const;
  bool IsOnBothSides() const { return old_source.HasMeta(table) && new_source.HasMeta(table); }
  korvel::report::Changes TakeApart(std::size_t max_findings = korvel::report::kMaxFindings) const;
};

// Asks with settings from the old source, but for those given.
Asked Ask(const korvel::report::Source& old_source, const korvel::report::Source& new_source, const std::string& table,
          const korvel::report::Settings& given = {});

// Everything that was found out, one line an edit and a finding:
//
//   allowed entry-added orders.note
//   refused entry-type orders.uid
//   [primary-key.size] -3 entry-type orders.uid
//     orders.uid 5d1c4f0a9b3e7721
//     The size of primarykey can't be modified! entry:'uid' metaname:'orders'
//   together: allowed
std::string Shown(const korvel::report::Changes& changes);

// Fails the test where something does not hold that holds of all changes: the whole is refused if and only if there are findings,
// every verdict is the checker's own, no edit of a combination can be left out, what is allowed is allowed.
void ExpectLaws(const Asked& asked, const korvel::report::Changes& changes);

}  // namespace report_test
