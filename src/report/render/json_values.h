// Parts of a JSON report as values: those that are small and do not depend on the rest of the report.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "report/result/fold_edits.h"
#include "report/result/summary.h"
#include "report/result/text_ranges.h"

namespace korvel {

// The members with which every document begins: its version, the program and the command.
nlohmann::ordered_json HeaderToJson(int version, const std::string& command);

// Null for "".
nlohmann::ordered_json NameOrNull(const std::string& name);

// Settings that are absent are left out.
nlohmann::ordered_json ToJson(const PartialSettings& settings);

// Where the range begins.
nlohmann::ordered_json ToJson(const TextRange& range);
nlohmann::ordered_json LocationToJson(const std::string& file, const qmx::LineColumn& position);

nlohmann::ordered_json ToJson(const Verdict& verdict);

// Null for none.
nlohmann::ordered_json ToJson(const std::optional<Waiver>& waiver);

// `ranges` has the locations of the edit or finding.
nlohmann::ordered_json ToJson(const Edit& edit, EditStatus status, const TextRanges& ranges);
nlohmann::ordered_json ToJson(const Finding& finding, const FoldedEdits& edits, const TextRanges& ranges);

// A warning or note about `edit`.
nlohmann::ordered_json AdviceToJson(const Finding& finding, const Edit& edit, const TextRanges& ranges);

nlohmann::ordered_json ToJson(const Summary& summary);
nlohmann::ordered_json ToJson(const FileNote& note);
nlohmann::ordered_json ToJson(const ReportBaseline& baseline);
nlohmann::ordered_json ToJson(const ReportProject& project);
nlohmann::ordered_json ToJson(const ProjectFinding& finding);
nlohmann::ordered_json ToJson(const InputFault& fault);

}  // namespace korvel
