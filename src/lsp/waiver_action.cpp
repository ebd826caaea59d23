// Tested by tests/lsp/code_actions_test.cpp.
#include "lsp/waiver_action.h"

#include <algorithm>
#include <filesystem>

#include "base/calendar.h"
#include "base/input_error.h"
#include "base/text.h"
#include "base/uri.h"
#include "lsp/open_files.h"
#include "project/found_project.h"
#include "project/project_path.h"
#include "project/waiver_entry.h"

namespace korvel::lsp {
namespace {

// Nullopt for a text with an error.
std::optional<Project> Parsed(const std::string& text) {
  try {
    return ParseProject(kProjectFileName, text);
  } catch (const InputError&) {
    return std::nullopt;
  }
}

// Nullopt for a file that cannot be read.
std::optional<Text> TextAt(const std::string& path, const Documents& documents) {
  if (const Document* const open = documents.FindPath(path)) return open->text;
  try {
    return Text(TextOfProject(path, false, Links::kRefuse));
  } catch (const InputError&) {
    return std::nullopt;
  }
}

// Whether the text has this number of waivers, of which one is valid and lasts until this day.
bool HasWaiver(const std::string& text, std::size_t count, std::size_t position, const std::string& until) {
  const std::optional<Project> project = Parsed(text);
  if (!project || project->waivers.size() != count) return false;
  return project->waivers[position].fault.empty() && project->waivers[position].until == until;
}

Json TextEditOf(const Text& text, qmx::Span span, const std::string& new_text) {
  return {{"range", ToJson(text, span)}, {"newText", new_text}};
}

// Replaces the last day of a waiver. Null if it is written in an unusual way.
Json Extend(const Text& text, const Project& project, std::size_t position, const std::string& until) {
  const std::string& old = project.waivers[position].until;
  const bool is_last = position + 1 == project.waivers.size();
  const std::size_t end = is_last ? text.bytes().size() : text.OffsetOf(project.waivers[position + 1].location);
  std::size_t at = text.bytes().find(old, text.OffsetOf(project.waivers[position].location));
  for (; at < end; at = text.bytes().find(old, at + 1)) {
    std::string longer = text.bytes();
    longer.replace(at, old.size(), until);
    if (HasWaiver(longer, project.waivers.size(), position, until)) return TextEditOf(text, {at, at + old.size()}, until);
  }
  return nullptr;
}

// Null if the file cannot take another waiver.
Json Add(const Text& text, const Project& project, const WaiverEntry& entry) {
  const std::string longer = WithWaivers(text.bytes(), {entry});
  const std::size_t count = project.waivers.size();
  if (!HasWaiver(longer, count + 1, count, entry.until)) return nullptr;
  const std::size_t end = text.bytes().size();
  return TextEditOf(text, {end, end}, longer.substr(end));
}

}  // namespace

std::optional<WaiverAction> WaiverActionFor(const Issue& issue, const DocumentCheck& check, const Documents& documents) {
  const Project* const judge = check.project->set()[issue.folded->table->project];
  if (judge == nullptr) return std::nullopt;
  const std::string path = (std::filesystem::path(check.root) / judge->file).lexically_normal().string();
  const std::optional<Text> text = TextAt(path, documents);
  const std::optional<Project> project = text ? Parsed(text->bytes()) : std::nullopt;
  if (!project) return std::nullopt;
  WaiverEntry entry = EntryFor(*issue.folded->table, *issue.folded->finding, WaiverForm::kExact);
  entry.reason = "TODO: why this change is acceptable";
  entry.until = DayAfter(Today(), kWaiverDays);
  const Document* const open = documents.FindPath(path);
  WaiverAction action{.title = "Waive until " + entry.until + " (give the reason in " + OneLine(judge->file) + ")",
                      .uri = open == nullptr ? UriOf(path) : open->uri,
                      .edit = nullptr};
  const auto same = std::ranges::find_if(project->waivers, [&](const WaiverEntry& one) { return NamesTheSame(one, entry); });
  if (same == project->waivers.end()) {
    action.edit = Add(*text, *project, entry);
  } else if (same->until < Today()) {
    action.title = "Extend the waiver until " + entry.until;
    action.edit = Extend(*text, *project, static_cast<std::size_t>(same - project->waivers.begin()), entry.until);
  }
  if (action.edit == nullptr) return std::nullopt;
  return action;
}

}  // namespace korvel::lsp
