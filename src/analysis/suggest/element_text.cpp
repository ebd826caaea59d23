// Edits schema files byte by byte. No XML parser: the text is well-formed and has no document type. Tested by
// tests/report/element_text_test.cpp.
#include "analysis/suggest/element_text.h"

#include <algorithm>
#include <utility>

#include "qmx/tag_scanner.h"

namespace korvel {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kLineEnds = "\r\n";
constexpr std::size_t kMaxLineEndDistance = 4096;  // bytes; otherwise a file of one line would be searched for each element

std::size_t FindOrEnd(std::string_view text, std::string_view what, std::size_t from) {
  const std::size_t at = text.find(what, from);
  return at == std::string_view::npos ? text.size() : at + what.size();
}

// The offset behind a tag's '>', ignoring those between quotes.
std::size_t TagEnd(std::string_view text, std::size_t tag) {
  for (std::size_t at = text.find_first_of("\"'>", tag); at != std::string_view::npos;) {
    if (text[at] == '>') return at + 1;
    const std::size_t close = text.find(text[at], at + 1);
    if (close == std::string_view::npos) break;
    at = text.find_first_of("\"'>", close + 1);
  }
  return text.size();
}

// The markup at a '<': the offset behind it, and by how much it changes the nesting depth.
struct Markup {
  std::size_t end;
  int depth;
};

Markup MarkupAt(std::string_view text, std::size_t at) {
  const std::string_view rest = text.substr(at);
  if (rest.starts_with("<!--")) return {FindOrEnd(text, "-->", at + 4), 0};
  if (rest.starts_with("<?")) return {FindOrEnd(text, "?>", at + 2), 0};
  if (rest.starts_with("<![CDATA[")) return {FindOrEnd(text, "]]>", at), 0};
  const std::size_t end = TagEnd(text, at);
  if (rest.starts_with("</")) return {end, -1};
  return {end, end >= 2 && text[end - 2] == '/' ? 0 : 1};
}

std::size_t SkipBlanks(std::string_view text, std::size_t at) {
  return std::min(text.find_first_not_of(kBlanks, at), text.size());
}

bool EndsLine(std::string_view text, std::size_t at) {
  return at == text.size() || kLineEnds.find(text[at]) != std::string_view::npos;
}

// The offset of the blanks before `at` on its line.
std::size_t BlanksBefore(std::string_view text, std::size_t at) {
  while (at > 0 && kBlanks.find(text[at - 1]) != std::string_view::npos) --at;
  return at;
}

std::size_t NextLine(std::string_view text, std::size_t line_end) {
  if (line_end == text.size()) return line_end;
  return line_end + (text.substr(line_end).starts_with("\r\n") ? 2 : 1);
}

// Behind the comments that follow `at` and end on its line.
std::size_t BehindComments(std::string_view text, std::size_t at) {
  for (;;) {
    const std::size_t next = SkipBlanks(text, at);
    if (!text.substr(next).starts_with("<!--")) return at;
    const std::size_t end = MarkupAt(text, next).end;
    if (text.substr(at, end - at).find_first_of(kLineEnds) != std::string_view::npos) return at;
    at = end;
  }
}

std::string_view AttributeName(std::string_view text, const qmx::AttributeSpans& attribute) {
  return text.substr(attribute.name.begin, attribute.name.end - attribute.name.begin);
}

// An attribute of a start tag, and where its text begins, including the white space before it.
struct TagAttribute {
  std::string_view name;
  qmx::Span value;
  std::size_t begin;
};

std::vector<TagAttribute> AttributesAt(std::string_view text, std::size_t element) {
  std::vector<TagAttribute> attributes;
  std::size_t begin = text.find_first_of(" \t\r\n/>", element);
  qmx::TagScanner scanner(text, element);
  while (const auto found = scanner.Next()) {
    attributes.push_back({AttributeName(text, *found), found->value, begin});
    begin = found->value.end + 1;
  }
  return attributes;
}

// Where to add an attribute: behind the last present one that comes before it in the list, else behind the element's name.
std::size_t OffsetFor(std::string_view text, std::size_t element, const std::vector<TagAttribute>& present,
                      const std::vector<AttributeText>& order, std::size_t added) {
  std::size_t offset = text.find_first_of(" \t\r\n/>", element);
  for (const TagAttribute& attribute : present) {
    for (std::size_t i = 0; i < added; ++i) {
      if (order[i].name == attribute.name) offset = std::max(offset, attribute.value.end + 1);
    }
  }
  return offset;
}

}  // namespace

std::size_t ElementEnd(std::string_view text, std::size_t element) {
  int depth = 0;
  for (std::size_t at = element; at < text.size(); at = std::min(text.find('<', at), text.size())) {
    const Markup markup = MarkupAt(text, at);
    depth += markup.depth;
    at = markup.end;
    if (depth == 0) return at;
  }
  return text.size();
}

bool TextEdits::ChangeAttributes(std::size_t element, const std::vector<AttributeText>& was,
                                 const std::vector<AttributeText>& target) {
  const std::vector<TagAttribute> present = AttributesAt(text_, element);
  for (std::size_t i = 0; i < target.size(); ++i) {
    const std::optional<std::string>& value = target[i].value;
    if (value == was[i].value) continue;
    const auto found = std::ranges::find(present, target[i].name, &TagAttribute::name);
    const bool is_present = found != present.end();
    const auto escaped = value ? EscapeForXml(*value, is_present ? text_[found->value.end] : '"') : "";
    if (!escaped) return false;
    if (is_present) {
      value ? Add(found->value.begin, found->value.end, *escaped) : Add(found->begin, found->value.end + 1, "");
    } else if (value) {
      const std::size_t offset = OffsetFor(text_, element, present, target, i);
      Add(offset, offset, " " + std::string(target[i].name) + "=\"" + *escaped + "\"");
    }
  }
  return true;
}

void TextEdits::Cut(std::size_t begin, std::size_t end) {
  const std::size_t line = BlanksBefore(text_, begin);
  const bool starts = line == 0 || EndsLine(text_, line - 1);
  const std::size_t behind = SkipBlanks(text_, end);
  if (starts && EndsLine(text_, behind)) {
    Add(line, NextLine(text_, behind), "");
  } else {
    Add(starts ? begin : line, starts ? behind : end, "");
  }
}

void TextEdits::Remove(std::size_t element) { Cut(element, ElementEnd(text_, element)); }

void TextEdits::RemoveWithComments(std::size_t element) { Cut(element, element + WithComments(text_, element).size()); }

void TextEdits::InsertBehind(std::size_t element, std::string_view inserted) {
  const std::optional<std::string_view> indent = IndentOf(text_, element);
  const std::size_t end = ElementEnd(text_, element);
  const std::size_t behind = SkipBlanks(text_, BehindComments(text_, end));
  if (indent && EndsLine(text_, behind) && behind < text_.size()) {
    const std::size_t offset = NextLine(text_, behind);
    Add(offset, offset, std::string(*indent).append(inserted).append(LineEndAt(text_, element)));
  } else {
    const std::size_t blanks = BlanksBefore(text_, element);
    Add(end, end, std::string(indent ? "" : text_.substr(blanks, element - blanks)).append(inserted));
  }
}

void TextEdits::InsertBefore(std::size_t element, std::string_view inserted) {
  const std::optional<std::string_view> indent = IndentOf(text_, element);
  const std::size_t offset = BlanksBefore(text_, element);
  const std::string blanks(text_.substr(offset, element - offset));
  const bool own_line = indent && EndsLine(text_, SkipBlanks(text_, BehindComments(text_, ElementEnd(text_, element))));
  Add(offset, offset, blanks + std::string(inserted) + (own_line ? std::string(LineEndAt(text_, element)) : ""));
}

// A removal includes blanks that the removal of another element on the line may include, too, and at whose edge something may be
// inserted.
std::vector<Replacement> TextEdits::Finish() {
  std::ranges::stable_sort(edits_, [](const Replacement& a, const Replacement& b) {
    return std::pair(a.span.begin, a.span.end) < std::pair(b.span.begin, b.span.end);
  });
  std::size_t done = 0;
  for (Replacement& edit : edits_) {
    edit.span = {std::max(edit.span.begin, done), std::max(edit.span.end, done)};
    done = edit.span.end;
  }
  return std::move(edits_);
}

std::string ApplyReplacements(std::string_view text, const std::vector<Replacement>& replacements) {
  std::string result;
  std::size_t at = 0;
  for (const Replacement& replacement : replacements) {
    result.append(text.substr(at, replacement.span.begin - at)).append(replacement.text);
    at = replacement.span.end;
  }
  return result.append(text.substr(at));
}

Replacement ReplacementBetween(std::string_view before, std::string_view after) {
  const auto front = static_cast<std::size_t>(std::ranges::mismatch(before, after).in1 - before.begin());
  std::size_t back = 0;
  const std::size_t most = std::min(before.size(), after.size()) - front;
  while (back < most && before[before.size() - 1 - back] == after[after.size() - 1 - back]) ++back;
  return {{front, before.size() - back}, std::string(after.substr(front, after.size() - back - front))};
}

std::string_view WithComments(std::string_view text, std::size_t element) {
  const std::size_t behind = BehindComments(text, ElementEnd(text, element));
  const bool ends_line = EndsLine(text, SkipBlanks(text, behind));
  return text.substr(element, (ends_line ? behind : ElementEnd(text, element)) - element);
}

std::string_view LineEndAt(std::string_view text, std::size_t offset) {
  const std::size_t at = text.substr(0, std::min(offset + kMaxLineEndDistance, text.size())).find_first_of(kLineEnds, offset);
  return at == std::string_view::npos ? "\n" : text.substr(at, NextLine(text, at) - at);
}

std::optional<std::string_view> IndentOf(std::string_view text, std::size_t element) {
  const std::size_t line = BlanksBefore(text, element);
  if (line > 0 && !EndsLine(text, line - 1)) return std::nullopt;
  return text.substr(line, element - line);
}

std::string WithLineEnds(std::string_view text, std::string_view line_end) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of(kLineEnds, at), text.size());
    result.append(text.substr(at, end - at));
    if (end < text.size()) result.append(line_end);
    at = NextLine(text, end);
  }
  return result;
}

}  // namespace korvel
