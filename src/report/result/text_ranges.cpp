// Resolves locations into lines and columns. Snippets are in snippet.cpp. Tested by tests/report/text_ranges_test.cpp.
#include "report/result/text_ranges.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <tuple>

#include "qmx/tag_scanner.h"
#include "qmx/value_part.h"
#include "report/result/released_source.h"

namespace korvel {
namespace {

// The start tag that begins at `element`. A '>' in the value of an attribute does not end it.
qmx::Span StartTag(std::string_view text, std::size_t element) {
  std::size_t at = element;
  for (qmx::TagScanner scanner(text, element); const auto attribute = scanner.Next();) at = attribute->value.end + 1;
  const std::size_t end = text.find('>', at);
  return {element, end == std::string_view::npos ? text.size() : end + 1};
}

qmx::Span SpanOf(const Location& location) {
  const SchemaText& text = *location.source->text;
  const std::size_t element = text.source_map.Find(location.element).value_or(0);
  if (!location.attribute.empty()) {
    if (const auto value = qmx::FindAttributeValue(text.Bytes(), element, location.attribute)) {
      const bool is_whole = location.part.begin == location.part.end;
      return is_whole ? *value : qmx::FindValuePart(text.Bytes(), *value, location.part).value_or(*value);
    }
  }
  return StartTag(text.Bytes(), element);
}

// Finds the lines of ascending offsets; reads each byte of the text at most twice, no matter how many offsets share a line.
class LineFinder {
 public:
  explicit LineFinder(std::string_view text) : text_(text), begin_(text.starts_with("\xEF\xBB\xBF") ? 3 : 0), end_(begin_) {
    end_ = EndFrom(begin_);
  }

  qmx::Span At(std::size_t offset) {
    if (offset > end_) {
      const std::size_t before = text_.substr(end_, offset - end_).find_last_of("\r\n");
      begin_ = before == std::string_view::npos ? end_ : end_ + before + 1;
      end_ = EndFrom(offset);
    }
    return {begin_, end_};
  }

 private:
  std::size_t EndFrom(std::size_t offset) const { return std::min(text_.find_first_of("\r\n", offset), text_.size()); }

  std::string_view text_;
  std::size_t begin_;
  std::size_t end_;
};

// One end of a range.
struct Point {
  const Source* source;
  std::size_t offset;
  TextRange* range;
  bool is_end;
};

void FillIn(std::vector<Point> points) {
  std::ranges::sort(points, std::less<>(), [](const Point& one) { return std::tuple(one.source, one.offset); });
  const Source* source = nullptr;
  qmx::LineCounter counter{""};
  LineFinder lines{""};
  for (const auto& [of, offset, range, is_end] : points) {
    if (of != source) {
      counter = qmx::LineCounter(of->text->Bytes());
      lines = LineFinder(of->text->Bytes());
      source = of;
    }
    if (is_end) {
      range->end = counter.At(offset);
    } else {
      const qmx::Span line = lines.At(offset);
      range->begin = counter.At(offset);
      range->line = of->text->Bytes().substr(line.begin, line.end - line.begin);
      range->line_begin = line.begin;
    }
  }
}

bool IsMeta(const Location& location) {
  return location.element.kind == qmx::ElementId::Kind::kMeta && location.attribute.empty();
}

bool HasText(const Location& location) {
  return location && FindReleased(*location.source) == nullptr && location.source->text.has_value();
}

auto KeyOf(const Location& location) {
  const qmx::ElementId& id = location.element;
  return std::tuple(location.source, id.kind, id.meta, id.item, id.column, location.attribute, location.part.begin,
                    location.part.end);
}

}  // namespace

std::vector<std::optional<TextRange>> FindTextRanges(const std::vector<Location>& locations, Dumps dumps) {
  std::vector<std::optional<TextRange>> ranges(locations.size());
  std::vector<Point> points;
  for (const Location& location : locations) {
    if (HasText(location) && !IsMeta(location)) location.source->text->Bytes();
  }
  for (std::size_t i = 0; i < locations.size(); ++i) {
    const Source* const source = locations[i].source;
    if (source == nullptr) continue;
    TextRange& range = ranges[i].emplace();
    range.file = source->name;
    if (dumps == Dumps::kHidden && source->text && source->text->is_dump) continue;
    if (const ReleasedSource* const released = FindReleased(*source)) {
      FillIn(*released, locations[i], range);
      continue;
    }
    if (!source->text) continue;
    if (!source->text->file->IsInMemory()) {
      FillIn(source->text->file->MetaTag(locations[i].element.meta), range);
      continue;
    }
    range.span = SpanOf(locations[i]);
    points.push_back({source, range.span.begin, &range, false});
    points.push_back({source, range.span.end, &range, true});
  }
  FillIn(std::move(points));
  return ranges;
}

TextRanges::TextRanges(std::vector<Location> locations, Dumps dumps) : locations_(std::move(locations)) {
  std::ranges::sort(locations_, std::less<>(), KeyOf);
  const auto is_same = [](const Location& one, const Location& other) { return KeyOf(one) == KeyOf(other); };
  locations_.erase(std::unique(locations_.begin(), locations_.end(), is_same), locations_.end());
  ranges_ = FindTextRanges(locations_, dumps);
}

const TextRange* TextRanges::Find(const Location& location) const {
  if (!location) return nullptr;
  const auto found = std::ranges::lower_bound(locations_, KeyOf(location), std::less<>(), KeyOf);
  return &*ranges_[static_cast<std::size_t>(found - locations_.begin())];
}

std::vector<qmx::LineColumn> FindPositions(std::string_view text, const std::vector<std::size_t>& offsets) {
  std::vector<std::size_t> order(offsets.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::sort(order, std::less<>(), [&](std::size_t i) { return offsets[i]; });
  std::vector<qmx::LineColumn> positions(offsets.size());
  qmx::LineCounter counter(text);
  for (const std::size_t i : order) positions[i] = counter.At(offsets[i]);
  return positions;
}

}  // namespace korvel
