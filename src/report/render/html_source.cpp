// Schema files side by side, line by line. Tested by tests/report/html_test.cpp and tests/browser.
#include "report/render/html_source.h"

#include <algorithm>
#include <span>

#include "base/alignment.h"
#include "base/characters.h"
#include "base/text.h"
#include "report/render/html_text.h"
#include "report/result/words.h"

namespace korvel {
namespace {

constexpr std::size_t kContext = 3;    // rows shown around a marked one
constexpr std::size_t kMaxLinks = 6;   // of one line
constexpr std::size_t kMaxLine = 400;  // characters shown of a line

std::string IdOf(std::size_t pair, bool is_new, std::size_t line) {
  return "p" + std::to_string(pair + 1) + (is_new ? "n" : "o") + std::to_string(line);
}

// The marks of a line.
std::span<const LineMark> MarksOf(const std::vector<LineMark>& marks, std::size_t line) {
  return {std::ranges::lower_bound(marks, line, {}, &LineMark::line), std::ranges::upper_bound(marks, line, {}, &LineMark::line)};
}

StatusStyle WorstOf(std::span<const LineMark> marks) { return std::ranges::min_element(marks, {}, &LineMark::style)->style; }

std::string LinksOf(std::span<const LineMark> marks) {
  std::string html;
  std::string last;
  std::size_t number = 0;
  for (const LineMark& mark : marks) {
    if (mark.id == last) continue;
    last = mark.id;
    if (++number > kMaxLinks) continue;
    const StatusText& words = TextOf(mark.style);
    html += "<a class=\"mark " + std::string(words.name) + "\" href=\"#" + mark.id + "\"><span aria-hidden=\"true\">" +
            words.sign + "</span> <span class=\"hidden\">" + words.word + " </span>" + LabelOf(mark.id) + "</a> ";
  }
  if (number > kMaxLinks) html += "and " + std::to_string(number - kMaxLinks) + " more";
  return html;
}

// A piece of a line, cut at kMaxLine characters.
std::string Piece(std::string_view text) {
  std::size_t end = 0;
  for (std::size_t i = 0; i < kMaxLine && end < text.size(); ++i) end += CharacterLength(text.substr(end));
  return HtmlLine(text.substr(0, end)) + (end < text.size() ? "\u2026" : "");
}

// The text of a line; changed attribute values are marked.
std::string MarkedLine(std::string_view line, std::span<const LineMark> marks) {
  std::vector<LineMark> spans(marks.begin(), marks.end());
  std::erase_if(spans, [](const LineMark& mark) { return mark.span.begin >= mark.span.end; });
  std::ranges::sort(spans, {}, [](const LineMark& mark) { return std::pair(mark.span.begin, mark.style); });
  std::string html;
  std::size_t at = 0;
  for (const LineMark& mark : spans) {
    if (mark.span.begin < at) continue;
    html += Piece(line.substr(at, mark.span.begin - at)) + "<mark class=\"" + TextOf(mark.style).name + "\">" +
            Piece(line.substr(mark.span.begin, mark.span.end - mark.span.begin)) + "</mark>";
    at = mark.span.end;
  }
  return html + Piece(line.substr(at));
}

// One side of a row: marks, number, text.
std::string Cells(std::size_t pair, bool is_new, std::size_t number, const Lines& lines, const std::vector<LineMark>& all) {
  if (number == 0) return "<td class=\"none\"></td><td class=\"none\"></td><td class=\"none\"></td>";
  const std::span<const LineMark> marks = MarksOf(all, number);
  const std::string style = marks.empty() ? "" : std::string(" ") + TextOf(WorstOf(marks)).name;
  return "<td class=\"marks\">" + LinksOf(marks) + "</td><td class=\"number\" id=\"" + IdOf(pair, is_new, number) + "\">" +
         std::to_string(number) + "</td><td class=\"line" + style + "\">" + MarkedLine(lines[number - 1], marks) + "</td>";
}

// The rows to show: all, or those near a marked one.
std::vector<bool> Near(const std::vector<LineRow>& rows, const PagePair& pair, bool whole) {
  std::vector<bool> near(rows.size(), whole);
  for (std::size_t i = 0; i < rows.size() && !whole; ++i) {
    if (MarksOf(pair.old_marks, rows[i].old_line).empty() && MarksOf(pair.new_marks, rows[i].new_line).empty()) continue;
    const std::size_t end = std::min(i + kContext + 1, rows.size());
    for (std::size_t k = i - std::min(i, kContext); k < end; ++k) near[k] = true;
  }
  return near;
}

std::string Gap(std::size_t number, int columns) {
  return "<tr class=\"gap\"><td colspan=\"" + std::to_string(columns) + "\">\u2026 " + Counted(number, "row") +
         " not shown \u2026</td></tr>\n";
}

std::vector<LineRow> OneSide(std::size_t number) {
  std::vector<LineRow> rows;
  for (std::size_t i = 1; i <= number; ++i) rows.push_back({0, i, true});
  return rows;
}

std::string Heading(const PagePair& pair) {
  constexpr char kCells[] = "<th scope=\"col\">marks</th><th scope=\"col\">line</th><th scope=\"col\">";
  const auto side = [&](const std::string& role, const Source& source) { return kCells + role + Code(source.name) + "</th>"; };
  if (pair.IsOne()) return side("", *pair.second);
  return side("old: ", *pair.first) + side("new: ", *pair.second);
}

// The names of the sources of a pair that satisfy a condition.
template <typename Condition>
std::string NamesOf(const PagePair& pair, const Condition& condition) {
  std::string names;
  for (const Source* source : {pair.IsOne() ? nullptr : pair.first, pair.second}) {
    if (source != nullptr && condition(*source)) AppendPart(names, ", ", Code(source->name));
  }
  return names;
}

// Why a pair has no text to show; empty if it has text.
std::string WhyNoText(const PagePair& pair) {
  const std::string images = NamesOf(pair, [](const Source& source) { return !source.text; });
  if (images.empty()) return "";
  return "<p class=\"note\">No source text: " + images + " is compiled, and cannot be written as XML.</p>\n";
}

// A note for compiled files: their lines are not in the file itself.
std::string DumpNote(const PagePair& pair) {
  const std::string images = NamesOf(pair, [](const Source& source) { return source.text && source.text->is_dump; });
  return images.empty() ? "" : "Compiled; the lines are the output of <code>korvelcheck dump</code>: " + images + ". ";
}

}  // namespace

HtmlSources::HtmlSources(const Page& page) : page_(page), rows_left_(page.limits().lines), shown_(page.pairs().size()) {
  for (std::size_t i = 0; i < page.pairs().size(); ++i) sections_.push_back(Section(i));
}

std::string HtmlSources::LineId(std::size_t pair, bool is_new, std::size_t line) const {
  const std::vector<bool>& lines = is_new ? shown_[pair].new_lines : shown_[pair].old_lines;
  return line < lines.size() && lines[line] ? IdOf(pair, is_new, line) : "";
}

std::string HtmlSources::Section(std::size_t number) {
  const PagePair& pair = page_.pairs()[number];
  if (pair.second == nullptr) return "";
  const std::string title = "<h2 id=\"p" + std::to_string(number + 1) + "\">Source" +
                            (page_.pairs().size() > 1 ? ": " + Code(pair.second->name) : "") + "</h2>\n";
  if (const std::string why = WhyNoText(pair); !why.empty()) return title + why;
  const Lines new_lines = SourceLines(pair.second->text->Bytes());
  const Lines old_lines = pair.IsOne() ? Lines() : SourceLines(pair.first->text->Bytes());
  const bool whole = old_lines.size() + new_lines.size() <= page_.limits().whole_lines && page_.pairs().size() == 1;
  const std::vector<LineRow> rows = pair.IsOne() ? OneSide(new_lines.size()) : AlignLines(old_lines, new_lines, pair.known);
  const std::vector<bool> near = Near(rows, pair, whole);
  if (std::ranges::find(near, true) == near.end()) return "";

  ShownLines& shown = shown_[number];
  shown.old_lines.resize(old_lines.size() + 1);
  shown.new_lines.resize(new_lines.size() + 1);
  std::string body;
  std::size_t gap = 0;
  const int columns = pair.IsOne() ? 3 : 6;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!near[i] || rows_left_ == 0) {
      ++gap;
      continue;
    }
    --rows_left_;
    if (gap > 0) body += Gap(gap, columns);
    gap = 0;
    const LineRow& row = rows[i];
    if (row.old_line > 0) shown.old_lines[row.old_line] = true;
    if (row.new_line > 0) shown.new_lines[row.new_line] = true;
    body += row.same ? "<tr>" : "<tr class=\"changed\">";
    if (!pair.IsOne()) body += Cells(number, false, row.old_line, old_lines, pair.old_marks);
    body += Cells(number, true, row.new_line, new_lines, pair.new_marks) + "</tr>\n";
  }
  if (gap > 0) body += Gap(gap, columns);

  std::string notes = DumpNote(pair);
  if (!whole) notes += "Only lines near a finding or change are shown, with " + std::to_string(kContext) + " lines of context. ";
  if (rows_left_ == 0) notes += "The page shows at most " + std::to_string(page_.limits().lines) + " rows of source. ";
  if (!notes.empty()) notes = "<p class=\"note\">" + notes + "</p>\n";
  return title + notes +
         "<div class=\"scroll\" role=\"region\" aria-label=\"schema source\" tabindex=\"0\">\n<table class=\"source" +
         (pair.IsOne() ? " one" : "") + "\">\n<thead><tr>" + Heading(pair) + "</tr></thead>\n<tbody>\n" + body +
         "</tbody>\n</table>\n</div>\n";
}

}  // namespace korvel
