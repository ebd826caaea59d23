// Parts of a JSON report as values: those that are small and do not depend on the rest of the report.
#pragma once

#include <optional>
#include <string>

#include "report/render/json_value.h"
#include "report/result/fold_edits.h"
#include "report/result/summary.h"
#include "report/result/text_ranges.h"

namespace korvel {

// The members with which every document begins: its version, the program and the command.
Json HeaderToJson(int version, const std::string& command);

// Null for "".
Json NameOrNull(const std::string& name);

// Settings that are absent are left out.
Json ToJson(const PartialSettings& settings);

// Where the range begins.
Json ToJson(const TextRange& range);
Json LocationToJson(const std::string& file, const qmx::LineColumn& position);

Json ToJson(const Verdict& verdict);

// Null for none.
Json ToJson(const std::optional<Waiver>& waiver);

// `ranges` has the locations of the edit or finding.
Json ToJson(const Edit& edit, EditStatus status, const TextRanges& ranges);
Json ToJson(const Finding& finding, const FoldedEdits& edits, const TextRanges& ranges);

// A warning or note about `edit`.
Json AdviceToJson(const Finding& finding, const Edit& edit, const TextRanges& ranges);

Json ToJson(const Summary& summary);
Json ToJson(const FileNote& note);
Json ToJson(const ReportBaseline& baseline);
Json ToJson(const ReportProject& project);
Json ToJson(const ProjectFinding& finding);
Json ToJson(const InputFault& fault);

}  // namespace korvel
