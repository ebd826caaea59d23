// A JUnit report: a suite for each pair of files, a test case for each table, a failure for each of its findings. Findings that
// are listed with an earlier table are one short failure. A waived finding, a note, and a warning that does not fail the call are
// no failures; they are in the output of the test case. A fault is a test case with an error. Tested by
// tests/report/formats_test.cpp and shared_findings_test.cpp.
#include <algorithm>
#include <span>

#include "base/characters.h"
#include "base/text.h"
#include "report/render/render.h"
#include "report/result/issues.h"
#include "report/result/service_path.h"
#include "schema/xml_writer.h"

namespace korvel {
namespace {

// Lines as content. Hidden characters are escaped ("\x1b"); other bytes that XML cannot contain become U+FFFD.
std::string XmlText(std::string_view text) {
  std::string xml;
  const std::string valid = ValidUtf8(text);
  for (std::string_view rest = valid; !rest.empty(); rest.remove_prefix(CharacterLength(rest))) {
    const std::string_view character = rest.substr(0, CharacterLength(rest));
    // U+FFFE and U+FFFF are valid UTF-8 but not allowed in XML.
    xml += character == "\n" ? "\n" : EscapeForXml(VisibleCharacter(rest)).value_or("\xef\xbf\xbd");
  }
  return xml;
}

std::string Attribute(const char* name, std::string_view value) {
  return std::string(" ") + name + "=\"" + XmlText(OneLine(ValidUtf8(value))) + "\"";
}

// A failure, or output if it does not fail. `text` is its details, as lines.
std::string Problem(const std::string& rule, const std::string& summary, const std::string& text, bool fails) {
  if (!fails) return "      <system-out>" + XmlText(text) + "</system-out>\n";
  return "      <failure" + Attribute("message", summary) + Attribute("type", rule) + ">" + XmlText(text) + "</failure>\n";
}

// A warning about a waiver never fails the call.
bool IssueFails(const Report& report, const Issue& issue) {
  if (issue.project != nullptr) return Fails(report, *issue.project);
  const bool fails_on_warnings = report.fails_on_warnings && issue.table != nullptr;
  return !issue.waived && (issue.level == Level::kRefused || (issue.level == Level::kWarning && fails_on_warnings));
}

std::string ProblemOf(const Report& report, const Issue& issue, const ServicePaths& paths) {
  const std::string level = issue.level == Level::kRefused ? "" : std::string(WordOf(issue.level)) + " [" + issue.rule + "] ";
  std::string text = ToText(issue.location, &paths) + ": " + level + issue.summary + "\n";
  for (const std::string& line : DetailsOf(issue, paths)) text += line + "\n";
  return Problem(issue.rule, issue.summary, text, IssueFails(report, issue));
}

// Findings that are listed with an earlier table.
std::string ProblemOf(const FoldedReport& report, const SharedItems& items) {
  const Finding& first = *report.findings()[items.first].finding;
  const std::string path = items.path + first.path.substr(items.instead_of.size());
  const std::string summary = SummaryOf(first.verdict) + (path.empty() ? "" : ": " + OneLine(path));
  const std::string more = items.count == 1 ? "" : " (and " + NextOf(items) + ")";
  const std::string text = "same as in table " + OneLine(items.table->table) + more + ", fingerprint " + first.fingerprint + "\n";
  return Problem(RuleIdOf(first.verdict), summary + more, text, Fails(report.report(), first));
}

std::string CaseText(const std::string& suite, const std::string& name, const std::string& file, const std::string& body) {
  const std::string start =
      "    <testcase" + Attribute("name", name) + Attribute("classname", suite) + (file.empty() ? "" : Attribute("file", file));
  return body.empty() ? start + "/>\n" : start + ">\n" + body + "    </testcase>\n";
}

// Tests, and how many of them failed, were skipped, or could not run.
struct Counts {
  std::size_t tests = 0, failures = 0, skipped = 0, errors = 0;

  void Add(const Report& report, const TableResult& table) {
    ++tests;
    if (Fails(report, table)) {
      ++failures;
    } else if (table.status == Status::kNew) {
      ++skipped;
    }
  }

  std::string Attributes() const {
    return Attribute("tests", std::to_string(tests)) + Attribute("failures", std::to_string(failures)) +
           Attribute("errors", std::to_string(errors)) + Attribute("skipped", std::to_string(skipped));
  }
};

class JunitReport {
 public:
  JunitReport(const Report& report, const TextSink& sink)
      : report_(report), folded_(report), issues_(folded_), next_(issues_.all().begin()), paths_(issues_.paths()), sink_(sink) {}

  void Write() {
    sink_("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + Attribute("name", "korvelcheck " + report_.command) +
          CountAll().Attributes() + ">\n");
    if (!report_.faults.empty()) WriteFaults();
    const std::span<const FoldedTable> tables = folded_.tables();
    for (std::size_t begin = 0, end = 0; begin < tables.size(); begin = end) {
      const auto is_other = [&](const FoldedTable& one) { return one.table->second != tables[begin].table->second; };
      end = static_cast<std::size_t>(std::ranges::find_if(tables.subspan(begin), is_other) - tables.begin());
      WriteSuite(tables.subspan(begin, end - begin));
    }
    if (!report_.project.empty()) WriteProject();
    sink_("</testsuites>\n");
  }

 private:
  Counts CountProject() const { return {report_.project.size(), CountFailingProject(report_), 0}; }

  Counts CountAll() const {
    Counts counts = CountProject();
    counts.tests += report_.faults.size();
    counts.errors += report_.faults.size();
    for (const TableResult& table : report_.tables) counts.Add(report_, table);
    return counts;
  }

  void WriteFaults() {
    const std::string name = "not checked";
    const std::size_t number = report_.faults.size();
    sink_("  <testsuite" + Attribute("name", name) + Counts{.tests = number, .errors = number}.Attributes() + ">\n");
    for (; next_ != issues_.all().end() && next_->fault != nullptr; ++next_) {
      const std::string& file = next_->location.file;
      const std::string at = file.empty() ? "" : " at " + ToText(next_->location, &paths_);
      sink_(CaseText(name, next_->rule + at, file.empty() ? "" : paths_.Of(file), ErrorBody(*next_)));
    }
    sink_("  </testsuite>\n");
  }

  std::string ErrorBody(const Issue& issue) const {
    std::string text = (issue.location.file.empty() ? "" : ToText(issue.location, &paths_) + ": ") + issue.summary + "\n";
    for (const std::string& line : DetailsOf(issue, paths_)) text += line + "\n";
    return "      <error" + Attribute("message", issue.summary) + Attribute("type", issue.rule) + ">" + XmlText(text) +
           "</error>\n";
  }

  // The tables of one pair of files.
  void WriteSuite(std::span<const FoldedTable> tables) {
    const TableResult& first = *tables.front().table;
    const std::string second = paths_.Shown(first.second->name);
    const bool has_old = first.first != nullptr && first.first != first.second;
    const std::string against = first.baseline.empty() ? "" : " against " + first.baseline;
    const std::string name = has_old ? paths_.Shown(first.first->name) + " -> " + second : second + against;
    Counts counts;
    for (const FoldedTable& table : tables) counts.Add(report_, *table.table);
    sink_("  <testsuite" + Attribute("name", name) + counts.Attributes() + ">\n" + Properties());
    for (const FoldedTable& table : tables) {
      sink_(CaseText(name, table.table->table, paths_.Of(table.table->declared.source->name), BodyOf(table)));
    }
    sink_("  </testsuite>\n");
  }

  std::string Properties() const {
    std::string properties;
    for (const ReportBaseline& baseline : report_.baselines) {
      if (!baseline.origin.empty()) {
        properties += "      <property" + Attribute("name", baseline.name) + Attribute("value", baseline.origin) + "/>\n";
      }
    }
    return properties.empty() ? "" : "    <properties>\n" + properties + "    </properties>\n";
  }

  std::string BodyOf(const FoldedTable& table) {
    const bool is_skipped = table.table->status == Status::kNew && !Fails(report_, *table.table);
    std::string body = is_skipped ? "      <skipped message=\"new table: there is nothing to compare it with\"/>\n" : "";
    for (; next_ != issues_.all().end() && next_->table == table.table; ++next_) body += ProblemOf(report_, *next_, paths_);
    for (const SharedItems& items : table.shared) body += ProblemOf(folded_, items);
    return body;
  }

  void WriteProject() {
    const std::string name = "project file";
    sink_("  <testsuite" + Attribute("name", name) + CountProject().Attributes() + ">\n");
    for (; next_ != issues_.all().end(); ++next_) {
      sink_(CaseText(name, next_->rule + " at " + ToText(next_->location, &paths_), paths_.Of(next_->location.file),
                     ProblemOf(report_, *next_, paths_)));
    }
    sink_("  </testsuite>\n");
  }

  const Report& report_;
  FoldedReport folded_;
  Issues issues_;
  std::vector<Issue>::const_iterator next_;
  const ServicePaths& paths_;
  const TextSink& sink_;
};

}  // namespace

void WriteJunit(const Report& report, const TextSink& sink) { JunitReport(report, sink).Write(); }

}  // namespace korvel
