// The report as text. Every line stays one line, whatever a name holds. Held by tests/tool/text_report_test.cpp.
#include <algorithm>

#include "common/result_codes.h"
#include "report/one_line.h"
#include "report/places.h"
#include "report/render.h"

namespace korvel::report {
namespace {

struct StatusWord {
  const char* text;
  const char* colour;  // SGR number
};

StatusWord WordFor(Status status) {
  switch (status) {
    case Status::kAllowed:
      return {"allowed", "32"};
    case Status::kRefused:
      return {"refused", "31"};
    case Status::kNew:
      break;
  }
  return {"new", "36"};
}

std::string Shown(Status status, bool colour) {
  const StatusWord word = WordFor(status);
  return colour ? std::string("\x1b[") + word.colour + "m" + word.text + "\x1b[0m" : word.text;
}

std::string Shown(const Mark& mark) {
  const std::string file = OneLine(mark.file) + ":";
  if (!mark.begin) return file + " ";
  return file + std::to_string(mark.begin->line) + ":" + std::to_string(mark.begin->column) + ": ";
}

// What follows the status of a refusal.
std::string Refusal(const TableResult& result) {
  const std::string rule = result.rule.empty() ? "" : " [" + result.rule + "]";
  const std::string text = result.text.empty() ? "(the checker gives no text)" : OneLine(result.text);
  const std::string gone = result.gone ? " (gone)" : "";
  return rule + " " + text + "\n   table " + OneLine(result.table) + ": " + std::to_string(result.code) + " " +
         ResultCodeName(result.code) + gone + "\n";
}

std::string Block(const TableResult& result, const Mark& place, bool colour) {
  const std::string start = Shown(place) + Shown(result.status, colour);
  if (result.status == Status::kRefused) return start + Refusal(result);
  const std::string note = result.status == Status::kNew ? " (not compared)" : "";
  return start + ": table " + OneLine(result.table) + note + "\n";
}

std::string Shown(const Summary& summary) {
  const auto number = [](std::size_t n) { return std::to_string(n); };
  return number(summary.refused) + (summary.refused == 1 ? " table" : " tables") + " refused, " + number(summary.allowed) +
         " allowed; " + number(summary.compared) + " compared, " + number(summary.added) + " new, " + number(summary.gone) +
         " gone\n";
}

}  // namespace

std::string RenderText(const Report& report, bool colour) {
  const Summary summary = Summarize(report);
  std::string text = "verdict: " + Shown(summary.refused == 0 ? Status::kAllowed : Status::kRefused, colour) + "\n";
  std::vector<Location> locations;
  for (const TableResult& table : report.tables) locations.push_back(table.declared);
  const Marks marks(std::move(locations));
  for (const TableResult& table : report.tables) text += Block(table, *marks.Find(table.declared), colour);
  return text + Shown(summary);
}

}  // namespace korvel::report
