// Wording that several formats share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "report/result/fold.h"
#include "report/result/fold_edits.h"
#include "report/result/service_path.h"
#include "report/result/summary.h"
#include "report/result/text_ranges.h"

namespace korvel {

// "allowed", "refused", "new"
const char* WordOf(Status status);

// "allowed", "refused", "blocked", "not-checked"
const char* WordOf(EditStatus status);

// The checker's verdict about all tables. Waivers do not change it. If no table was compared, nothing is allowed. If a file could
// not be checked, or is no longer selected, the verdict is incomplete, whatever the others are; unless all such files are waived
// and the call fails for another reason. If the baseline is the commit that is checked out and no file differs, there was no
// change to allow.
enum class OverallVerdict : std::uint8_t { kAllowed, kRefused, kNothingCompared, kIncomplete, kUnchanged };
OverallVerdict VerdictOf(const Summary& summary);

// "allowed", "refused", "nothing-compared", "incomplete", "unchanged"
const char* WordOf(OverallVerdict verdict);

// A remark to print after the verdict so that it is not misread: " (1 file was not checked)", " (the check failed)" or " (1 file
// is no longer checked)", also with "; waived", if it is incomplete or refused; " (warnings fail this call)"; " (all waived)" if
// every refusal is waived; " (all tables are new)" if none was compared; " (but the project file has an error)"; " (the baseline
// is the commit that is checked out)" if it is unchanged; " (with warnings)"; usually "".
std::string RemarkOn(const Summary& summary);

// "refused", "warning", "note"; "waived" if it is waived.
const char* WordOf(const Finding& finding);

// "1 table", "2 tables"
std::string Counted(std::size_t number, const std::string& noun);

// "1 table refused, 2 allowed; 3 compared, 0 new, 1 removed", then findings, waivers and files, if there are any.
std::string ToText(const Summary& summary);

// The same, with how many of the allowed tables changed if that is known: "... 3 allowed (1 changed, 2 unchanged); ...".
std::string ToDetailedText(const Summary& summary);

// What is refused, in plain words: the summary of the rule in the catalog. A refusal without a rule is described by its result
// code: "CHECK_TABLE_ERROR_SYSTEM_ERROR: ...".
std::string SummaryOf(const Verdict& verdict);
std::string SummaryOf(const TableResult& table);

// "checker: TEXT", the checker's own text on one line. "checker: (no text)" for the few refusals without a text.
std::string CheckerLine(const std::string& text);

// "FILE:LINE:COLUMN", on one line, FILE by PathText; "FILE" for a location in an image. With `paths`, the file as services show
// it.
std::string ToText(const TextRange& range, const ServicePaths* paths = nullptr);

// "table orders", and " against git:v1.2" if the report compares with several baselines.
std::string TableAndBaseline(const TableResult& table);

// "waived until 2027-01-31: the table is empty", on one line. A wide waiver is marked as such.
std::string ToText(const Waiver& waiver);

// The lines of a suggestion, each on one line.
std::vector<std::string> SuggestionLines(std::string_view suggestion);
// "  suggestion: LINE" with the other lines below it; "" without a suggestion.
std::string SuggestionText(std::string_view suggestion);

// Where a fault is, without the text of the line.
TextRange LocationOf(const InputFault& fault);

// What there is to say about a fault besides its text: what is allowed, and which file could not be compared.
std::vector<std::string> DetailsOf(const InputFault& fault, const ServicePaths* paths = nullptr);

// "error", "warning"; "waived" if it is waived.
const char* WordOf(ProjectFinding::Level level);
const char* WordOf(const ProjectFinding& finding);

// The lines of a finding about the project file after its text, as text reports show them: waiver, suggestion, fingerprint.
std::string EndOf(const ProjectFinding& finding);

// "ERROR_VALUE_FIELD"; "" for a number that is no result code.
std::string CodeNameOf(int code);

// The location at which a finding is reported: the old one for something that was removed, else the new one.
const Location& LeadOf(const TableResult& table, const Finding& finding);

// The edits of a finding, each on one line. None for a table that is checked alone: nothing changes in it.
std::vector<std::string> EditsOf(const TableResult& table, const Finding& finding);

// Whether a finding without edits is pre-existing, that is, the old schema breaks the rule already.
bool IsPreexisting(const TableResult& table);

inline constexpr char kPreexisting[] = "pre-existing: the old schema already breaks this rule";

// The other tables and paths with a finding: "orders.items[].price", "carts.items[].price"; "table carts" for a change of the
// library, which has no path. One line that names an earlier finding if the others are the same: "the same 900 tables and
// paths as finding 84ffde231685f362".
std::vector<std::string> AlsoOf(const FoldedReport& report, const FoldedFinding& folded);

// "7 of 9 changes are allowed on their own (verified)"; "... of 4 checked changes ..." if the search stopped before all.
// REQUIRES: there are edits.
std::string AllowedPart(const Changes& changes);

// "stopped after 5 findings: ..."; REQUIRES: changes.stopped.
std::string StoppedText(const Changes& changes);

// The shared findings after the first: "the next 11 findings"; "" if there is only one.
std::string NextOf(const SharedItems& items);

// The limits that were reached: StoppedText, "suggestions are incomplete ...", "5 findings are not listed: ...". Usually empty.
std::vector<std::string> LimitsOf(const FoldedTable& table);

std::size_t NumberOf(const Changes& changes, EditStatus status);

// Every location that a report refers to: those of tables, of the listed findings and of their edits. With `edits`, also those
// of the listed edits.
std::vector<Location> LocationsOf(const FoldedReport& folded, const std::vector<FoldedEdits>& edits = {});

}  // namespace korvel
