// A report in the Static Analysis Results Interchange Format, version 2.1.0. Tested by tests/report/formats_test.cpp, which
// validates it with the schema of the standard.
#include <algorithm>
#include <map>

#include "base/uri.h"
#include "common/catalog.h"
#include "report/render/json_stream.h"
#include "report/render/render.h"
#include "report/result/issues.h"
#include "report/result/notes.h"
#include "report/result/service_path.h"
#include "rule_docs/rule_docs.h"

namespace korvel {
namespace {

// What relative URIs are relative to; services know where that is.
constexpr char kTop[] = "SRCROOT";

Json ArtifactOf(const std::string& file, const ServicePaths& paths) {
  const std::string path = paths.Of(file);
  Json json = {{"uri", UriOf(path.empty() ? file : path)}};
  if (!path.starts_with('/')) json["uriBaseId"] = kTop;
  return json;
}

Json MessageOf(const std::string& text) { return {{"text", text}}; }

Json RegionOf(const qmx::LineColumn& begin, const qmx::LineColumn& end) {
  return {{"startLine", begin.line}, {"startColumn", begin.column}, {"endLine", end.line}, {"endColumn", end.column}};
}

Json PhysicalLocation(const TextRange& range, const ServicePaths& paths) {
  Json json = {{"artifactLocation", ArtifactOf(range.file, paths)}};
  if (!range.begin) return json;
  Json& region = json["region"] = RegionOf(*range.begin, range.end);
  const bool is_shown = range.begin->line == range.end.line && !range.line.empty();
  if (is_shown)
    region["snippet"] =
        MessageOf(std::string(range.line.substr(range.span.begin - range.line_begin, range.span.end - range.span.begin)));
  return json;
}

// Lines and columns of the parts that fixes replace. Resolved for all findings at once, because that reads the whole file.
class FixPositions {
 public:
  explicit FixPositions(const std::vector<Issue>& issues) {
    for (const Issue& issue : issues) {
      if (issue.folded == nullptr) continue;
      for (const Replacement& part : issue.folded->finding->fix) {
        offsets_[issue.table->second].insert(offsets_[issue.table->second].end(), {part.span.begin, part.span.end});
      }
    }
    for (auto& [source, offsets] : offsets_) {
      std::ranges::sort(offsets);
      positions_[source] = FindPositions(source->text ? source->text->Bytes() : "", offsets);
    }
  }

  qmx::LineColumn At(const Source* source, std::size_t offset) const {
    const std::vector<std::size_t>& offsets = offsets_.at(source);
    const auto found = std::ranges::lower_bound(offsets, offset) - offsets.begin();
    return positions_.at(source)[static_cast<std::size_t>(found)];
  }

 private:
  std::map<const Source*, std::vector<std::size_t>> offsets_;  // sorted
  std::map<const Source*, std::vector<qmx::LineColumn>> positions_;
};

// --- Rules ---

// The only rule without a page: "refused".
constexpr char kNoRule[] = "the checker refused the table without a text, or with a text that belongs to no rule";

constexpr char kAllWaived[] = "all findings of the table are waived";

// Twice, because some services do not read Markdown.
Json HelpOf(const RuleDoc& doc) {
  const std::string call = std::string("korvelcheck explain ") + doc.row->id;
  const std::string more = doc.example ? " shows an example." : " shows the whole page.";
  const std::string instead = doc.level.empty() ? "Allowed instead:" : "What to do instead:";
  return {{"text", doc.protects + "\n\n" + instead + " " + doc.allowed + "\n\n'" + call + "'" + more},
          {"markdown", doc.protects + "\n\n**" + instead + "** " + doc.allowed + "\n\n`" + call + "`" + more}};
}

const char* SarifLevel(Level level) { return level == Level::kRefused ? "error" : WordOf(level); }

Level LevelOf(const std::string& id) {
  if (const AdviceRule* const advice = FindAdvice(id)) return advice->level;
  const ProjectRule* const rule = FindProjectRule(id);
  return rule != nullptr && rule->IsWarning() ? Level::kWarning : Level::kRefused;
}

// A reportingDescriptor. Services show it next to a result.
Json SarifRule(const std::string& id) {
  Json rule = {{"id", id}};
  if (const RuleDoc* const doc = FindRuleDoc(id)) {
    rule["shortDescription"] = MessageOf(doc->row->summary);
    rule["fullDescription"] = MessageOf(doc->protects);
    rule["help"] = HelpOf(*doc);
    rule["helpUri"] = RulePageUrl(id);
  } else {
    rule["shortDescription"] = MessageOf(kNoRule);
  }
  rule["defaultConfiguration"] = {{"level", SarifLevel(LevelOf(id))}};
  return rule;
}

// --- The log ---

class SarifLog {
 public:
  explicit SarifLog(const Report& report)
      : folded_(report), issues_(folded_), positions_(issues_.all()), paths_(issues_.paths()) {
    ListRules();
  }

  void Write(const TextSink& sink) const {
    const Summary summary = Summarize(folded_);
    JsonStream json(sink);
    json.Begin('{');
    json.Add("$schema", "https://docs.oasis-open.org/sarif/sarif/v2.1.0/errata01/os/schemas/sarif-schema-2.1.0.json");
    json.Add("version", "2.1.0");
    json.Begin("runs", '[');
    json.Begin('{');
    json.Add("tool",
             {{"driver",
               {{"name", "korvelcheck"}, {"version", KORVEL_VERSION}, {"informationUri", KORVEL_HOMEPAGE}, {"rules", rules_}}}});
    json.Add("invocations", Json::array({InvocationOf(summary)}));
    json.Add("originalUriBaseIds", {{kTop, {{"description", MessageOf("the top of the repository")}}}});
    json.Add("columnKind", "unicodeCodePoints");
    json.Begin("results", '[');
    for (const Issue& issue : issues_.all()) json.Add(ResultOf(issue));
    json.End();
    json.Add("properties", {{"verdict", WordOf(VerdictOf(summary))}, {"summary", ToText(summary)}});
    json.End();
    json.End();
    json.End();
  }

 private:
  // All rules of the catalog, then the other rules that results refer to.
  void ListRules() {
    rules_ = Json::array();
    for (const RefusalRow* row : AllRefusals()) AddRule(row->id);
    for (const Issue& issue : issues_.all()) AddRule(issue.rule);
  }

  void AddRule(const std::string& id) {
    if (rule_positions_.try_emplace(id, rules_.size()).second) rules_.push_back(SarifRule(id));
  }

  Json InvocationOf(const Summary& summary) const {
    Json notes = Json::array();
    for (const InputFault& fault : folded_.report().faults) notes.push_back(NotificationOf(fault));
    for (const std::string& line : NotesOf(folded_.report(), &paths_)) {
      notes.push_back({{"level", "note"}, {"message", MessageOf(line)}});
    }
    return {{"executionSuccessful", summary.faults == 0},
            {"exitCode", ExitCodeOf(folded_.report())},
            {"toolExecutionNotifications", std::move(notes)}};
  }

  // The rule is one of `rules`, because the fault is a result, too.
  Json NotificationOf(const InputFault& fault) const {
    const std::string id = RuleOf(fault.kind).id;
    Json json = {{"level", "error"},
                 {"message", MessageOf(fault.message)},
                 {"associatedRule", {{"id", id}, {"index", rule_positions_.at(id)}}}};
    TextRange place = LocationOf(fault);
    if (!fault.needed_by.empty()) {
      place = TextRange();
      place.file = fault.needed_by;
    }
    if (!place.file.empty()) json["locations"] = Json::array({{{"physicalLocation", PhysicalLocation(place, paths_)}}});
    return json;
  }

  Json LocationsOf(const Issue& issue) const {
    TextRange place = issue.location;
    if (place.file.empty()) place.file = kFileOfCall;
    Json location = {{"physicalLocation", PhysicalLocation(place, paths_)}};
    if (issue.folded != nullptr) location["logicalLocations"] = LogicalLocations(*issue.folded);
    return Json::array({std::move(location)});
  }

  Json ResultOf(const Issue& issue) const {
    std::string message = issue.summary;
    for (const std::string& line : DetailsOf(issue, paths_)) message += "\n" + line;
    Json json = {{"ruleId", issue.rule},
                 {"ruleIndex", rule_positions_.at(issue.rule)},
                 {"level", SarifLevel(issue.level)},
                 {"message", MessageOf(message)},
                 {"locations", LocationsOf(issue)},
                 {"partialFingerprints", {{"korvelcheck/v1", issue.fingerprint}}}};
    if (issue.old_location) {
      json["relatedLocations"] = Json::array({{{"id", 1},
                                               {"message", MessageOf("was: " + ToText(*issue.old_location, &paths_))},
                                               {"physicalLocation", PhysicalLocation(*issue.old_location, paths_)}}});
    }
    if (issue.folded != nullptr) {
      AddFindingTo(json, issue);
    } else if (issue.project != nullptr) {
      AddSuppressionTo(json, issue.project->waiver);
    } else if (issue.waived) {
      json["suppressions"] = Json::array({{{"kind", "external"}, {"status", "accepted"}, {"justification", kAllWaived}}});
    }
    return json;
  }

  void AddFindingTo(Json& json, const Issue& issue) const {
    const Finding& finding = *issue.folded->finding;
    if (!finding.fix.empty()) json["fixes"] = Json::array({FixOf(*issue.table->second, finding)});
    AddSuppressionTo(json, finding.waiver);
  }

  static void AddSuppressionTo(Json& json, const std::optional<Waiver>& waiver) {
    if (!waiver) return;
    json["suppressions"] = Json::array({{{"kind", "external"},
                                         {"status", "accepted"},
                                         {"justification", waiver->reason},
                                         {"properties", {{"until", waiver->until}, {"wide", waiver->is_wide}}}}});
  }

  // A change of the library has no path; the table is named instead.
  static Json LogicalLocations(const FoldedFinding& folded) {
    Json json = Json::array();
    const auto add = [&](const TableResult& table, const std::string& path) {
      json.push_back({{"fullyQualifiedName", path.empty() ? table.table : path}, {"kind", path.empty() ? "type" : "member"}});
    };
    add(*folded.table, folded.finding->path);
    for (const FoldedFinding::Embedding& also : folded.also) add(*also.table, also.path);
    return json;
  }

  Json FixOf(const Source& source, const Finding& finding) const {
    Json replacements = Json::array();
    for (const auto& [span, text] : finding.fix) {
      Json region = RegionOf(positions_.At(&source, span.begin), positions_.At(&source, span.end));
      region["byteOffset"] = span.begin;
      region["byteLength"] = span.end - span.begin;
      replacements.push_back({{"deletedRegion", std::move(region)}, {"insertedContent", MessageOf(text)}});
    }
    return {{"description", MessageOf(finding.suggestion)},
            {"artifactChanges",
             Json::array({{{"artifactLocation", ArtifactOf(source.name, paths_)}, {"replacements", std::move(replacements)}}})}};
  }

  FoldedReport folded_;
  Issues issues_;
  FixPositions positions_;
  const ServicePaths& paths_;
  Json rules_;
  std::map<std::string, std::size_t> rule_positions_;
};

}  // namespace

void WriteSarif(const Report& report, const TextSink& sink) { SarifLog(report).Write(sink); }

}  // namespace korvel
