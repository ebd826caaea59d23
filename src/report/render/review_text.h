// The Markdown of reviews: the summary of a report as one comment, and the text of a comment on a line.
#pragma once

#include <string>
#include <vector>

#include "report/result/issues.h"

namespace korvel {

// The issues in the order in which reviews list them: what is refused or an error, warnings, notes, what is waived.
std::vector<const Issue*> ReviewOrder(const std::vector<Issue>& issues);

// The comment on the whole change: verdict, counts, findings of each rule, and the first findings with their details and the
// command that waives them. At most 50,000 bytes, whatever the report contains: what is left out is counted. Begins with a
// comment of HTML by which programs recognize it.
std::string ReviewSummary(const FoldedReport& folded, const Issues& issues);

// The comment on one issue, without its fix; at most 10,000 bytes. Begins with a comment of HTML that contains the fingerprint.
std::string ReviewComment(const FoldedReport& folded, const Issue& issue, const ServicePaths& paths);

}  // namespace korvel
