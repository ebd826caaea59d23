// Writes the grammar of schema files, qmx.rng and qmx.rnc: write_grammar DIRECTORY
#include <cstdio>
#include <fstream>
#include <string>

#include "grammar/schema_grammar.h"

namespace {

bool Write(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  if (out << text << std::flush) return true;
  std::fprintf(stderr, "write_grammar: cannot write %s\n", path.c_str());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: write_grammar DIRECTORY\n", stderr);
    return 2;
  }
  const std::string directory = argv[1];
  const grammar::Grammar schema = grammar::SchemaGrammar();
  return Write(directory + "/qmx.rng", ToRng(schema)) && Write(directory + "/qmx.rnc", ToRnc(schema)) ? 0 : 2;
}
