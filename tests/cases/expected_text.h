// Writes the file `expected` of a case: blocks, each under a heading.
//
//   # Operations
//   OPERATION CODE NAME
//     "the error buffer afterwards"
//     PRIORITY METHOD: each log record; "log only" after the method: the text was never in the error buffer
//
//   # Edits
//   STATUS KIND META.ITEM: OLD VALUE -> NEW VALUE
//     path: the path from the table, if it is not META.ITEM; each of them if the structure is used more than once
//     needs: KIND META.ITEM            each edit that it needs
//   allowed together: the result for all allowed edits and no others
//
//   # Findings
//   [RULE] CODE NAME
//     "the text of the checker"
//     edit: KIND META.ITEM             each edit that causes the finding
//     path: the path from the table
//     old: LINE:COLUMN `source text`   the location in old.xml; new: the same in new.xml
//     suggestion: what is allowed instead
//     has fix: whether an alternative is allowed, apart from leaving the edit out
//     fix: LINE:COLUMN `source text` -> `replacement`, in new.xml
//     fingerprint: 16 digits
//
//   # Warnings and notes               only if there are any
//   LEVEL [RULE]
//     edit: KIND META.ITEM: OLD VALUE -> NEW VALUE
//     path, old, new, suggestion, fingerprint: as above
//     hidden by: [RULE] KIND META.ITEM  each refused edit of its element; the warning is not listed until they are waived
//
//   # Each schema against itself
//   old: allowed, or CODE NAME and the text of the checker; new: likewise
//
// "none" stands for a missing value. The value of a moved element is the name of the element before it. Line breaks inside a
// value are escaped.
#pragma once

#include <string>

namespace cases {

// The complete text for a case. Throws std::runtime_error as Load.
std::string ExpectedText(const std::string& name);

}  // namespace cases
