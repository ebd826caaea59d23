// All output formats: of reports (check, lint, ...), and of `diff`, `layout` and `history`.
//
// Common to all functions: they return the whole document or write it to a sink, read only their argument, and write nothing
// else. Same input, same bytes: the locale and the terminal do not matter. Names from schemas cannot break a document out of its
// format. Text output shows invalid UTF-8 and control characters escaped; other formats replace invalid UTF-8 by U+FFFD.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/text_sink.h"
#include "report/result/history.h"
#include "report/result/listing.h"
#include "report/result/report.h"
#include "report/result/waiver_list.h"

namespace korvel {

class SeenFindings;

// "version" of JSON documents. Goes up when a member changes its meaning or is removed; new members do not change it.
inline constexpr int kReportJsonVersion = 2;   // reports
inline constexpr int kHistoryJsonVersion = 2;  // history
inline constexpr int kJsonVersion = 1;         // all other documents

// --- Reports ---

// For people: the verdict, one block for each table that Report::detail shows, a summary. `color` colors the status words for a
// terminal.
std::string RenderText(const Report& report, bool color);

// Of the same text, the blocks of the tables. With `seen`, of a step of a history: refers to findings of earlier steps.
std::string RenderTablesText(const Report& report, Detail detail, bool color, SeenFindings* seen = nullptr, std::size_t step = 0);

// One finding for people, in each table and for each baseline that it is listed with, and the call that fixes it.
struct ExplainedFinding {
  std::string text;
  std::string rule;  // "" without one
  int code = 0;
  bool is_waived = false;
};
// REQUIRES: the report lists a finding with this fingerprint.
ExplainedFinding RenderFinding(const Report& report, std::string_view fingerprint);

// For programs: one JSON object as described by docs/report.schema.json, its members in a fixed order. Written table by table.
void WriteJson(const Report& report, const TextSink& sink);

// For pipelines and the services that show findings. Files are named relative to the working directory.
void WriteSarif(const Report& report, const TextSink& sink);   // one result for each finding; SARIF 2.1.0
void WriteJunit(const Report& report, const TextSink& sink);   // one test case for each table
void WriteGitlab(const Report& report, const TextSink& sink);  // a code quality report
std::string RenderGithub(const Report& report);                // workflow commands, one a line
std::string RenderMarkdown(const Report& report);              // for the description of a merge request

// The comments on a pull request or merge request: one on the whole, one on each line with a finding. Fixes are blocks of code
// that the service can apply. One JSON object as described by docs/review.schema.json.
void WriteGithubReview(const Report& report, const TextSink& sink);
void WriteGitlabReview(const Report& report, const TextSink& sink);

// For people with a browser: one page without references to other files.
std::string RenderHtml(const Report& report);

// A value of --format.
struct Format {
  const char* name;
  void (*write)(const Report& report, bool color, const TextSink& sink);  // `color` matters for text only
  bool shows_fixes = false;                                               // shows Finding::fix, which takes time to find
  bool shows_allowed_changes = false;                                     // lists the changes of allowed tables
  bool shows_sources = false;                                             // shows whole files: images are dumped as text for it

  // The whole document.
  std::string Render(const Report& report, bool color) const;
};

// The first is the default.
std::span<const Format> Formats();

// --- diff ---

// For people: one block for each table, one for each shared structure, a summary.
std::string RenderDiffText(const Listing& listing);
std::string RenderDiffJson(const Listing& listing);

// The changes of a file of a project since one of the baselines.
struct FileListing {
  enum class Kind { kChanged, kAdded, kDeleted } kind;
  std::size_t baseline;  // position in Report::baselines
  Listing listing;       // of an added or deleted file, the other source has no tables
};

// The same for the changed files of a project, in the order of their baselines. The report says what was compared.
std::string RenderProjectDiffText(const Report& report, const std::vector<FileListing>& listings);
std::string RenderProjectDiffJson(const Report& report, const std::vector<FileListing>& listings);

// --- history ---

// For people: for each file its steps, with the blocks of RenderTablesText, and each version against the newest; a summary.
std::string RenderHistoryText(const Histories& histories, bool color);
// The JSON object is described by docs/history.schema.json.
void WriteHistoryJson(const Histories& histories, const TextSink& sink);
// For people with a browser: a line of versions, the steps as text, and a comparison of any two versions.
std::string RenderHistoryHtml(const Histories& histories);

// A value of --format. The formats besides text, json and html list the findings of all steps as one report (ReportOf).
struct HistoryFormat {
  const char* name;
  void (*write)(const Histories& histories, const std::optional<std::string>& path_prefix, bool color, const TextSink& sink);
  bool shows_texts = false;  // shows the texts of the versions
};

// The first is the default.
std::span<const HistoryFormat> HistoryFormats();

// The output of `waivers`. The JSON object is described by docs/waivers.schema.json.
std::string RenderWaiversText(const WaiverList& list);
std::string RenderWaiversJson(const WaiverList& list);

// --- layout ---

struct LayoutRequest {
  const Source* before;  // null: one schema alone
  const Source* after;
  std::vector<std::string> tables;  // each in at least one of the sources
};

// For people: one block of aligned columns for each table. Column widths count characters, not bytes.
std::string RenderLayoutText(const LayoutRequest& request);
std::string RenderLayoutJson(const LayoutRequest& request);

// The same for several files, each with its name.
std::string RenderLayoutsText(const std::vector<LayoutRequest>& requests);
std::string RenderLayoutsJson(const std::vector<LayoutRequest>& requests);

// "98.1": the part of a record that a field takes, in percent; "0.0" of an empty record. Independent of the locale.
std::string Percent(std::uint64_t part, std::uint64_t whole);

}  // namespace korvel
