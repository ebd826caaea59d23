// Writes a grammar in the compact form of RELAX NG.
#include <sstream>
#include <string_view>

#include "grammar/schema_grammar.h"

namespace grammar {
namespace {

using Kind = Pattern::Kind;

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

// How often the only child of the pattern occurs; null for other patterns.
const char* RepetitionOf(Kind kind) {
  if (kind == Kind::kOptional) return "?";
  if (kind == Kind::kZeroOrMore) return "*";
  return kind == Kind::kOneOrMore ? "+" : nullptr;
}

// What stands between the children of the pattern; null for other patterns.
const char* OperatorOf(Kind kind) {
  if (kind == Kind::kGroup) return ",";
  if (kind == Kind::kInterleave) return " &";
  return kind == Kind::kChoice ? " |" : nullptr;
}

std::string DataText(const Pattern& data) {
  std::string text = "xsd:" + data.name;
  if (data.params.empty()) return text;
  text += " {";
  for (const auto& [name, value] : data.params) text += " " + name + " = " + Quoted(value);
  return text + " }";
}

// What is in front of the braces of a pattern; "" for patterns without braces.
std::string HeadOf(const Pattern& pattern) {
  if (pattern.kind == Kind::kElement) return "element " + pattern.name;
  if (pattern.kind == Kind::kAttribute) return "attribute " + pattern.name;
  return pattern.kind == Kind::kList ? "list" : "";
}

// The pattern, without its documentation, if it fits on one line; else "".
std::string OneLine(const Pattern& pattern) {
  if (pattern.kind == Kind::kRef) return pattern.name;
  if (pattern.kind == Kind::kText) return "text";
  if (pattern.kind == Kind::kValue) return "xsd:string " + Quoted(pattern.name);
  if (pattern.kind == Kind::kData && pattern.children.empty()) return DataText(pattern);
  if (pattern.children.size() != 1 || !pattern.children.front().doc.empty()) return "";
  const std::string child = OneLine(pattern.children.front());
  if (child.empty()) return "";
  if (const char* repetition = RepetitionOf(pattern.kind)) return child + repetition;
  const std::string head = HeadOf(pattern);
  return head.empty() ? "" : head + " { " + child + " }";
}

class Writer {
 public:
  void Line(const std::string& text);
  void Define(const std::string& name, const Pattern& pattern);
  std::string Text() const { return out_.str(); }

 private:
  // `tail` follows the pattern on its last line.
  void Write(const Pattern& pattern, const std::string& tail);
  void Block(const std::string& begin, const std::vector<Pattern>& content, const std::string& end);
  void Children(const std::vector<Pattern>& children, const std::string& separator);

  std::ostringstream out_;
  std::size_t depth_ = 0;
};

void Writer::Line(const std::string& text) {
  if (!text.empty()) out_ << std::string(2 * depth_, ' ') << text;
  out_ << '\n';
}

void Writer::Define(const std::string& name, const Pattern& pattern) {
  Line("");
  Block(name + " =", {pattern}, "");
}

void Writer::Children(const std::vector<Pattern>& children, const std::string& separator) {
  for (const Pattern& child : children) Write(child, &child == &children.back() ? "" : separator);
}

// A list of patterns that is the only content needs no parentheses.
void Writer::Block(const std::string& begin, const std::vector<Pattern>& content, const std::string& end) {
  Line(begin);
  ++depth_;
  const char* const inner = content.size() == 1 ? OperatorOf(content.front().kind) : nullptr;
  if (inner != nullptr) {
    Children(content.front().children, inner);
  } else {
    Children(content, ",");
  }
  --depth_;
  if (!end.empty()) Line(end);
}

void Writer::Write(const Pattern& pattern, const std::string& tail) {
  if (!pattern.doc.empty()) Line("## " + pattern.doc);
  if (const std::string text = OneLine(pattern); !text.empty()) return Line(text + tail);
  if (const char* repetition = RepetitionOf(pattern.kind)) return Write(pattern.children.front(), repetition + tail);
  if (pattern.kind == Kind::kData) {
    return Block("(" + DataText(pattern) + " - (", {{.kind = Kind::kChoice, .children = pattern.children}}, "))" + tail);
  }
  const std::string head = HeadOf(pattern);
  if (head.empty()) return Block("(", {pattern}, ")" + tail);
  Block(head + " {", pattern.children, "}" + tail);
}

}  // namespace

std::string ToRnc(const Grammar& grammar) {
  Writer writer;
  std::istringstream comment(grammar.comment);
  for (std::string line; std::getline(comment, line);) writer.Line(line.empty() ? "#" : "# " + line);
  writer.Line("");
  writer.Line("datatypes xsd = \"http://www.w3.org/2001/XMLSchema-datatypes\"");
  writer.Line("");
  writer.Line("start = " + grammar.start);
  for (const Definition& definition : grammar.definitions) writer.Define(definition.name, definition.pattern);
  return writer.Text();
}

}  // namespace grammar
