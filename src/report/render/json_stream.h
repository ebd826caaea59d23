// Writes JSON documents, as a whole or piece by piece.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/text_sink.h"
#include "report/render/json_value.h"

namespace korvel {

// Writes a document piece by piece: it has the bytes that JsonText would give for the whole.
class JsonStream {
 public:
  explicit JsonStream(TextSink sink) : sink_(std::move(sink)) {}

  // Begins an object ('{') or array ('['): the document, an element of an array, or, with a name, a member of an object.
  void Begin(char open);
  void Begin(const char* name, char open);
  // Ends the object or array that was begun last; a newline follows the document.
  void End();

  // Adds an element to an array, or a member to an object.
  void Add(const Json& value);
  void Add(const char* name, const Json& value);
  // Adds all members of an object to an object.
  void AddMembers(const Json& object);

 private:
  void StartItem();
  void Write(const Json& value);
  std::string Indent() const { return "\n" + std::string(2 * open_.size(), ' '); }

  struct Container {
    char close;
    bool is_empty;
  };

  TextSink sink_;
  std::vector<Container> open_;
};

// A value as Json::dump gives it, with hidden characters escaped (EscapeInJson). `indent` is that of dump: -1 for one line.
std::string JsonText(const Json& value, int indent = 2);

}  // namespace korvel
