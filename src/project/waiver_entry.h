// Entries of [[waivers]]: their forms and faults, those that cover a finding, and their text.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "project/project.h"
#include "report/result/report.h"

namespace korvel {

// "2293271b193a8552"
bool IsFingerprint(std::string_view text);

// The keys that an entry has; an empty value may be meaningful.
using WaiverKeys = std::set<std::string, std::less<>>;

WaiverForm FormOf(const std::string& rule, const WaiverKeys& keys);

// What is wrong with a waiver and what is allowed; empty if it is valid. `project` holds the waivers before it.
std::string FaultOf(const WaiverEntry& waiver, const WaiverKeys& keys, const Project& project);

// Whether both name the same finding in the same form.
bool NamesTheSame(const WaiverEntry& one, const WaiverEntry& other);

// What a waiver of a finding accepts: ChangeOf; "table removed"; "pre-existing", followed by the changes that it may hide.
std::string AcceptedChange(const TableResult& table, const Finding& finding);

// Whether a finding is a pre-existing refusal that hides changes: the checker stops there, so they are not checked.
bool HidesChanges(const TableResult& table, const Finding& finding);

// The path of a finding without the table in front, "" for the table as a whole.
std::string EntryOf(const TableResult& table, const Finding& finding);

// The entry that covers a finding of a table, without reason and last day. kExact or kWide.
WaiverEntry EntryFor(const TableResult& table, const Finding& finding, WaiverForm form);

// The same for a finding about the project file. kFile.
WaiverEntry EntryFor(const ProjectFinding& finding);

// The lines of an entry in TOML, "[[waivers]]" first. Not kBare.
std::vector<std::string> LinesOf(const WaiverEntry& waiver);

// The text of a project file with these waivers at its end, with the line ends of the text.
std::string WithWaivers(const std::string& text, const std::vector<WaiverEntry>& waivers);

// "the waiver of 'field.size' at 'orders.items[].price'"
std::string Describe(const WaiverEntry& waiver);

}  // namespace korvel
