// Tested by tests/report/json_stream_test.cpp.
#include "report/render/json_stream.h"

#include <algorithm>
#include <string_view>

#include "base/text.h"

namespace korvel {

std::string JsonText(const Json& value, int indent) { return EscapeInJson(value.dump(indent)); }

void JsonStream::StartItem() {
  if (open_.empty()) return;
  sink_(open_.back().is_empty ? Indent() : "," + Indent());
  open_.back().is_empty = false;
}

// A line end in a dumped value is always between two items: in strings it is escaped.
void JsonStream::Write(const Json& value) {
  const std::string text = JsonText(value);
  const std::string indent = Indent();
  std::string indented;
  for (std::string_view rest = text; !rest.empty();) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    indented.append(rest.substr(0, end)).append(end < rest.size() ? indent : "");
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  sink_(indented);
}

void JsonStream::Begin(char open) {
  StartItem();
  sink_(std::string_view(&open, 1));
  open_.push_back({open == '{' ? '}' : ']', true});
}

void JsonStream::Begin(const char* name, char open) {
  StartItem();
  sink_(JsonText(name) + ": " + open);
  open_.push_back({open == '{' ? '}' : ']', true});
}

void JsonStream::End() {
  const Container ended = open_.back();
  open_.pop_back();
  if (!ended.is_empty) sink_(Indent());
  sink_(std::string_view(&ended.close, 1));
  if (open_.empty()) sink_("\n");
}

void JsonStream::Add(const Json& value) {
  StartItem();
  Write(value);
}

void JsonStream::Add(const char* name, const Json& value) {
  StartItem();
  sink_(JsonText(name) + ": ");
  Write(value);
}

void JsonStream::AddMembers(const Json& object) {
  for (std::size_t i = 0; i < object.names().size(); ++i) Add(object.names()[i].c_str(), object.values()[i]);
}

}  // namespace korvel
