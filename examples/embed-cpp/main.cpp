// Checks the change of one table: embed_cpp OLD.xml NEW.xml TABLE
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "common/modify_table.h"
#include "qmx/qmx_xml.h"
#include "vesk/log_category.h"

[[noreturn]] void Fail(const std::string& text) {
  std::fprintf(stderr, "%s\n", text.c_str());
  std::exit(2);
}

// Reads a schema file; its first fault ends the program.
qmx::Schema ReadSchema(const std::string& path) {
  std::ostringstream text;
  if (!(text << std::ifstream(path, std::ios::binary).rdbuf())) Fail(path + ": empty or unreadable");
  const qmx::ReadResult result = qmx::ReadXml(text.str());
  if (!result.schema) Fail(path + ":" + std::to_string(result.errors[0].location.line) + ": " + result.errors[0].text);
  return *result.schema;
}

int main(int argc, char** argv) {
  if (argc != 4) Fail("usage: embed_cpp OLD.xml NEW.xml TABLE");
  const qmx::Schema old_schema = ReadSchema(argv[1]);
  const qmx::Schema new_schema = ReadSchema(argv[2]);

  // With a server version ("3.29.0"), the checker also checks the lengths of fields. For this it needs a log category.
  vesk::LogSettings settings;
  settings.file = "embed_cpp.log";
  std::string error;
  const auto log = vesk::LogCategory::Open(settings, error);
  if (log == nullptr) Fail(error);

  ModifyTable checker;
  const int code = checker.KorvelModifyTable(old_schema.metalib.get(), new_schema.metalib.get(), argv[3], 0 /* generic */,
                                             1 /* created in the record format */, log->handle(), "3.29.0", "", 0);
  if (code == 0) {
    std::puts("allowed");
    return 0;
  }
  std::printf("refused: %d %s: %s\n", code, ResultCodeName(code), checker.GetErrType());
  return 1;
}
