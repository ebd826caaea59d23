// Wordings that several formats share.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "report/result/fold.h"
#include "report/result/report.h"
#include "report/result/text_ranges.h"

namespace korvel {

// "allowed", "refused", "new"
const char* WordOf(Status status);

// "allowed", "refused", "waits"
const char* WordOf(EditStatus status);

// The verdict about all tables. The checker's, whatever is waived.
Status VerdictOf(const Summary& summary);

// What must be said behind the verdict, lest it be read for more than it is: " (all waived)" where every refusal is waived,
// " (nothing was compared: all tables are new)"; mostly "".
const char* RemarkOn(const Summary& summary);

// "1 table", "2 tables"
std::string Counted(std::size_t number, const std::string& noun);

// "1 table refused, 2 allowed; 3 compared, 0 new, 1 gone", and what there is of findings, waivers and files.
std::string ToText(const Summary& summary);

// A text of the checker on one line; a refusal may have none.
std::string TextOf(const std::string& text);

// "FILE:LINE:COLUMN", on one line; "FILE" for a mark in an image.
std::string ToText(const TextRange& mark);

// "added: FILE (nothing to compare it with)", on one line.
std::string ToText(const FileNote& note);

// "ERROR_VALUE_FIELD"; "" for a number that is no result code.
std::string CodeNameOf(int code);

// Where a finding is told: on the new side, on the old side for what was removed.
const Location& LeadOf(const TableResult& table, const Finding& finding);

// The edits of a finding, each on one line.
std::vector<std::string> EditsOf(const TableResult& table, const Finding& finding);

// Whether a finding without edits means that the old schema was refused, too: nothing is old in a schema by itself.
bool WasRefusedBefore(const TableResult& table);

// The tables and ways beside the first by which a finding is reached: "orders.items[].price", "carts.items[].price"; "table
// carts" for what is the library's, to which no way leads.
std::vector<std::string> AlsoOf(const FoldedFinding& folded);

// "7 of 9 changes may go now (asked as one change: allowed)". REQUIRES: there are edits.
std::string AllowedPart(const Changes& changes);

std::size_t NumberOf(const Changes& changes, EditStatus status);

// Every location that a report points at, those of all edits if `with_edits`, else those of findings.
std::vector<Location> LocationsOf(const Report& report, bool with_edits);

}  // namespace korvel
