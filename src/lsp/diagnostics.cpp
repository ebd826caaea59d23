// Tested by tests/lsp/server_test.cpp.
#include "lsp/diagnostics.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>

#include "base/input_error.h"
#include "base/text.h"
#include "base/uri.h"
#include "lsp/baseline_address.h"
#include "project/child_process.h"
#include "project/found_project.h"
#include "project/project_path.h"
#include "report/result/words.h"
#include "rule_docs/rule_docs.h"
#include "schema/file_bytes.h"

namespace korvel::lsp {
namespace {

enum Severity : int { kError = 1, kWarning = 2, kInformation = 3 };

constexpr char kSource[] = "korvelcheck";

Severity SeverityOf(const Issue& issue) {
  if (issue.waived || issue.level == Level::kNote) return kInformation;
  return issue.level == Level::kRefused ? kError : kWarning;
}

// A fault of another file, such as a refused project file, is shown in the document: the message names the file.
std::string MessageOf(const Issue& issue, const DocumentCheck& check) {
  const InputFault* const fault = issue.fault;
  const bool is_elsewhere = fault != nullptr && fault->needed_by.empty() && !fault->file.empty() && fault->file != check.name;
  return (is_elsewhere ? ToText(issue.location) + ": " : "") + issue.summary +
         Join(DetailsOf(issue, check.issues->paths()), "", [](const std::string& line) { return "\n" + line; });
}

// From a fault to the end of what is wrong: a name, a value, a tag.
qmx::Span WordAt(const Text& text, const qmx::LineColumn& location) {
  const std::size_t begin = text.OffsetOf(location);
  const std::size_t end = text.bytes().find_first_of("\"'<>= \t\r\n", begin + 1);
  return {begin, std::min(end, text.bytes().size())};
}

Json Diagnostic(const Json& range, Severity severity, const std::string& rule, const std::string& message) {
  Json diagnostic = {{"range", range}, {"severity", severity}, {"source", kSource}, {"code", rule}, {"message", message}};
  if (FindRuleDoc(rule) != nullptr) diagnostic["codeDescription"] = {{"href", RulePageUrl(rule)}};
  return diagnostic;
}

// The range of a location in its file.
Json RangeOf(const Text& text, const TextRange& location) {
  if (!location.begin) return ToJson(text, {0, 0});
  const bool is_element = location.span.end > location.span.begin;
  return ToJson(text, is_element ? location.span : WordAt(text, *location.begin));
}

// A file that is not open may have gone since it was checked.
Text TextOf(const std::string& path, const Documents& documents) {
  if (const Document* const document = documents.FindPath(path)) return document->text;
  try {
    return Text(std::string(ReadAll(OpenRegular(path)).View()));
  } catch (const InputError&) {
    return Text();
  }
}

Json RelatedTo(const TextRange& location, const std::string& root) {
  Position begin{location.begin->line - 1, 0};
  Position end = begin;
  begin.character = Utf16Length(location.line.substr(0, location.span.begin - location.line_begin));
  end.character = Utf16Length(location.line.substr(0, location.span.end - location.line_begin));
  return {
      {"message", "was: " + ToText(location)},
      {"location", {{"uri", BaselineAddress(root, location.file)}, {"range", {{"start", ToJson(begin)}, {"end", ToJson(end)}}}}}};
}

// Where a diagnostic is shown.
struct DiagnosticPlace {
  std::string uri;
  Json range;
};

// What is about no line of the document, or of its project file, is shown at the begin of the document.
DiagnosticPlace PlaceOf(const Issue& issue, const DocumentCheck& check, const Document& document, const Documents& documents) {
  const std::string& file = issue.location.file;
  if (file == check.name) return {document.uri, RangeOf(document.text, issue.location)};
  const bool is_project_file = issue.project != nullptr && std::filesystem::path(file).filename() == kProjectFileName;
  if (!is_project_file) return {document.uri, ToJson(document.text, {0, 0})};
  const std::string path = (std::filesystem::path(check.root) / file).lexically_normal().string();
  const Document* const open = documents.FindPath(path);
  return {open == nullptr ? UriOf(path) : open->uri, RangeOf(TextOf(path, documents), issue.location)};
}

struct LocatedText {
  qmx::LineColumn location;
  std::string text;
};

// A line of the reader of project files: "korvelcheck.toml:LINE:COLUMN: error: TEXT".
LocatedText SplitLine(const std::string& line) {
  LocatedText result;
  std::string_view rest = line;
  rest.remove_prefix(std::min(rest.size(), rest.find(':')));
  for (std::size_t* const number : {&result.location.line, &result.location.column}) {
    if (rest.starts_with(':')) rest.remove_prefix(1);
    rest.remove_prefix(
        static_cast<std::size_t>(std::from_chars(rest.data(), rest.data() + rest.size(), *number).ptr - rest.data()));
  }
  constexpr std::string_view kMark = ": error: ";
  result.text = rest.starts_with(kMark) ? rest.substr(kMark.size()) : std::string_view(line);
  return result;
}

}  // namespace

Json FailedCheck(const std::string& message) { return Diagnostic(ToJson(Text(), {0, 0}), kError, "check.failed", message); }

Diagnostics DiagnosticsOf(const DocumentCheck& check, const Document& document, const Documents& documents) {
  Diagnostics diagnostics{{document.uri, Json::array()}};
  if (!check.excluded_by.empty()) {
    diagnostics[document.uri].push_back(Diagnostic(ToJson(document.text, {0, 0}), kInformation, "project.excluded",
                                                   "not checked: " + check.excluded_by + " excludes this file"));
  }
  for (const Issue& issue : check.issues->all()) {
    const DiagnosticPlace place = PlaceOf(issue, check, document, documents);
    Json diagnostic = Diagnostic(place.range, SeverityOf(issue), issue.rule, MessageOf(issue, check));
    diagnostic["data"] = {{"fingerprint", issue.fingerprint}};
    if (issue.old_location && issue.old_location->begin) {
      diagnostic["relatedInformation"] = Json::array({RelatedTo(*issue.old_location, check.root)});
    }
    diagnostics.try_emplace(place.uri, Json::array()).first->second.push_back(std::move(diagnostic));
  }
  return diagnostics;
}

Json DiagnosticsOfProjectFile(const Document& document, Links links) {
  Json diagnostics = Json::array();
  try {
    TextOfProject(document.path, false, links);  // which may refuse the file on the disk
    ParseProject(kProjectFileName, document.text.bytes());
  } catch (const InputError& error) {
    for (const std::string& line : error.lines) {
      const auto [location, what] = SplitLine(line);
      diagnostics.push_back(Diagnostic(ToJson(document.text, WordAt(document.text, location)), kError, "project.invalid", what));
    }
  } catch (const OutputTimeoutError& error) {
    diagnostics.push_back(FailedCheck(error.what()));
  }
  return diagnostics;
}

}  // namespace korvel::lsp
