#include "shared_report.h"

#include "analysis/findings/finding.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::Changes;
using korvel::Edit;
using korvel::EditKind;
using korvel::EditStatus;
using korvel::Finding;
using korvel::TableResult;
using Kind = qmx::ElementId::Kind;

std::string Schema(int version, const char* type, std::size_t tables, std::size_t fields) {
  std::string text = "<metalib name=\"mall\" version=\"" + std::to_string(version) + "\">\n<meta name=\"item\">\n";
  for (std::size_t i = 0; i < fields; ++i) {
    text += "<entry name=\"f" + std::to_string(i) + "\" type=\"" + type + "\"/>\n";
  }
  text += "</meta>\n";
  for (std::size_t i = 0; i < tables; ++i) {
    text += "<meta name=\"t" + std::to_string(i) +
            "\"><entry name=\"k\" type=\"int8\"/><entry name=\"i\" type=\"item\"/><primarykey entries=\"k\"/></meta>\n";
  }
  return text + "</metalib>\n";
}

class Maker {
 public:
  explicit Maker(SharedReport& made) : made_(made) {}

  TableResult Table(std::size_t position, std::size_t fields) const {
    TableResult table;
    table.table = "t" + std::to_string(position);
    table.status = korvel::Status::kRefused;
    table.first = made_.old_source.get();
    table.second = made_.new_source.get();
    table.declared = korvel::DeclaredAt(*made_.new_source, table.table);
    table.verdict = {-3, "the whole change of " + table.table + " is refused", "field.size"};
    Changes& changes = table.changes.emplace();
    for (std::size_t i = 0; i < fields; ++i) {
      changes.edits.push_back(EditOf(table.table, static_cast<std::uint32_t>(i)));
      changes.findings.push_back(FindingOf(changes.edits, i));
    }
    changes.status.assign(fields, EditStatus::kRefused);
    return table;
  }

 private:
  Edit EditOf(const std::string& table, std::uint32_t field) const {
    Edit edit;
    edit.kind = EditKind::kEntryType;
    edit.meta = "item";
    edit.item = "f" + std::to_string(field);
    edit.before = "int32";
    edit.after = "int8";
    edit.paths = {table + ".i." + edit.item};
    edit.path_count = 1;
    edit.old_location = {made_.old_source.get(), {Kind::kEntry, 0, field}, "type"};
    edit.new_location = {made_.new_source.get(), {Kind::kEntry, 0, field}, "type"};
    return edit;
  }

  static Finding FindingOf(const std::vector<Edit>& edits, std::size_t field) {
    const Edit& edit = edits[field];
    Finding finding;
    finding.edits = {field};
    finding.verdict = {-3, TextOfField(field), "field.size"};
    finding.path = edit.paths.front();
    finding.old_location = edit.old_location;
    finding.new_location = edit.new_location;
    finding.suggestion = "keep it";
    finding.fingerprint = korvel::FingerprintOf("new.xml", "mall", finding, edits);
    return finding;
  }

  SharedReport& made_;
};

}  // namespace

std::string TextOfField(std::size_t field) { return "field f" + std::to_string(field) + " is refused"; }

SharedReport MakeSharedReport(std::size_t tables, std::size_t fields) {
  SharedReport made;
  made.old_source = std::make_unique<korvel::Source>(ReadSource("old.xml", Schema(1, "int32", tables, fields)));
  made.new_source = std::make_unique<korvel::Source>(ReadSource("new.xml", Schema(2, "int8", tables, fields)));
  made.report.command = "check";
  made.report.path_prefix = "";
  made.report.inputs = {{"old", made.old_source.get()}, {"new", made.new_source.get()}};
  for (std::size_t i = 0; i < tables; ++i) made.report.tables.push_back(Maker(made).Table(i, fields));
  return made;
}

}  // namespace report_test
