// Writes a grammar in the XML form of RELAX NG.
#include <sstream>
#include <string_view>

#include "grammar/schema_grammar.h"

namespace grammar {
namespace {

using Kind = Pattern::Kind;

const char* TagOf(Kind kind) {
  switch (kind) {
    case Kind::kRef:
      return "ref";
    case Kind::kElement:
      return "element";
    case Kind::kAttribute:
      return "attribute";
    case Kind::kGroup:
      return "group";
    case Kind::kInterleave:
      return "interleave";
    case Kind::kChoice:
      return "choice";
    case Kind::kOptional:
      return "optional";
    case Kind::kZeroOrMore:
      return "zeroOrMore";
    case Kind::kOneOrMore:
      return "oneOrMore";
    case Kind::kList:
      return "list";
    case Kind::kText:
      return "text";
    case Kind::kValue:
      return "value";
    case Kind::kData:
      return "data";
  }
  return "";
}

class Writer {
 public:
  void Write(const Pattern& pattern);
  void Open(const std::string& tag);
  void Close(const std::string& name);
  void Line(const std::string& text) { out_ << std::string(2 * depth_, ' ') << text << '\n'; }
  void Documentation(const std::string& doc);
  std::string Text() const { return out_.str(); }

 private:
  void WriteData(const Pattern& data);

  std::ostringstream out_;
  std::size_t depth_ = 0;
};

void Writer::Open(const std::string& tag) {
  Line("<" + tag + ">");
  ++depth_;
}

void Writer::Close(const std::string& name) {
  --depth_;
  Line("</" + name + ">");
}

void Writer::Documentation(const std::string& doc) {
  if (!doc.empty()) Line("<a:documentation>" + doc + "</a:documentation>");
}

void Writer::WriteData(const Pattern& data) {
  const std::string tag = "data type=\"" + data.name + "\"";
  if (data.params.empty() && data.children.empty()) return Line("<" + tag + "/>");
  Open(tag);
  for (const auto& [name, value] : data.params) Line("<param name=\"" + name + "\">" + value + "</param>");
  if (!data.children.empty()) {
    Open("except");
    for (const Pattern& child : data.children) Write(child);
    Close("except");
  }
  Close("data");
}

void Writer::Write(const Pattern& pattern) {
  const std::string tag = TagOf(pattern.kind);
  if (pattern.kind == Kind::kData) return WriteData(pattern);
  if (pattern.kind == Kind::kValue) {
    Line("<value type=\"string\">" + pattern.name + "</value>");
    return Documentation(pattern.doc);  // behind it: a value contains only text
  }
  const std::string with_name = pattern.name.empty() ? tag : tag + " name=\"" + pattern.name + "\"";
  if (pattern.children.empty()) return Line("<" + with_name + "/>");
  Open(with_name);
  Documentation(pattern.doc);
  for (const Pattern& child : pattern.children) Write(child);
  Close(tag);
}

}  // namespace

std::string ToRng(const Grammar& grammar) {
  Writer writer;
  writer.Line("<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
  writer.Line("<!--");
  writer.Line(grammar.comment + "-->");
  writer.Open(
      "grammar xmlns=\"http://relaxng.org/ns/structure/1.0\" xmlns:a=\"http://relaxng.org/ns/compatibility/annotations/1.0\"\n"
      "         datatypeLibrary=\"http://www.w3.org/2001/XMLSchema-datatypes\"");
  writer.Open("start");
  writer.Line("<ref name=\"" + grammar.start + "\"/>");
  writer.Close("start");
  for (const Definition& definition : grammar.definitions) {
    writer.Open("define name=\"" + definition.name + "\"");
    writer.Write(definition.pattern);
    writer.Close("define");
  }
  writer.Close("grammar");
  return writer.Text();
}

}  // namespace grammar
