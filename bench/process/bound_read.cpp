// The lower bound of every check of XML files: reads each file into memory and parses it once with expat; the handlers of
// elements and text return immediately. Keeps no file while it reads the next.
#include <expat.h>

#include <climits>
#include <cstdio>
#include <memory>
#include <string>

namespace {

void OnStart(void* /*user*/, const XML_Char* /*name*/, const XML_Char** /*attributes*/) {}
void OnEnd(void* /*user*/, const XML_Char* /*name*/) {}
void OnText(void* /*user*/, const XML_Char* /*text*/, int /*length*/) {}

bool ReadFile(const char* path, std::string& text) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rb"), std::fclose);
  if (file == nullptr || std::fseek(file.get(), 0, SEEK_END) != 0) return false;
  const long size = std::ftell(file.get());
  if (size < 0 || size > INT_MAX || std::fseek(file.get(), 0, SEEK_SET) != 0) return false;
  text.resize(static_cast<std::size_t>(size));
  return std::fread(text.data(), 1, text.size(), file.get()) == text.size();
}

bool Parse(const std::string& text) {
  const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr), XML_ParserFree);
  if (parser == nullptr) return false;
  XML_SetElementHandler(parser.get(), OnStart, OnEnd);
  XML_SetCharacterDataHandler(parser.get(), OnText);
  return XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE) == XML_STATUS_OK;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::string text;
    if (!ReadFile(argv[i], text) || !Parse(text)) {
      std::fprintf(stderr, "cannot read %s\n", argv[i]);
      return 1;
    }
  }
}
