// The forms of a report.
#pragma once

#include <span>
#include <string>

#include "report/result/report.h"

namespace korvel {

// For people: the verdict, one block a table, a summary. `colour` marks the status words for a terminal.
std::string RenderText(const Report& report, bool colour);

// For programs: one JSON object, its members in a fixed order. Bytes that are no UTF-8 become U+FFFD.
std::string RenderJson(const Report& report);

// For pipelines and the services that show what they find. Whole documents, whatever is in the report; in all of them bytes that
// are no UTF-8 become U+FFFD, and files are named relative to the working directory.
std::string RenderSarif(const Report& report);     // one result for each finding; SARIF 2.1.0
std::string RenderJunit(const Report& report);     // one test for each table
std::string RenderGithub(const Report& report);    // commands of a workflow, one a line
std::string RenderGitlab(const Report& report);    // a code quality report
std::string RenderMarkdown(const Report& report);  // the description of a merge request

// For people with a browser: one page that needs nothing else.
std::string RenderHtml(const Report& report);

// A value of --format.
struct Format {
  const char* name;
  std::string (*render)(const Report& report, bool colour);  // `colour` is for forms that people read on a terminal
  bool shows_fixes = false;                                  // as replacements in the new file; they take time to find
  bool shows_allowed_changes = false;                        // lists the changes of tables that are allowed
  bool shows_sources = false;                                // whole files: images need a text for it
};

// The first is the default.
std::span<const Format> Formats();

}  // namespace korvel
