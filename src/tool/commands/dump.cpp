// dump: an image as a schema file again. Held by tests/tool/image_test.cpp.
#include "project/load_inputs.h"
#include "schema/schema_file.h"
#include "tool/cli/command.h"

namespace korvel::tool {
namespace {

std::string Make(const Options& options) {
  const std::vector<Input> inputs = LoadInputs(options.inputs);
  std::string text = SchemaFile(inputs.front());
  RequireUnchanged(inputs.front());
  return text;
}

}  // namespace

const Command kDumpCommand{
    .name = "dump",
    .summary = "write an image as a schema file that compiles to the same image",
    .first = {"IMAGE", "file"},
    .second = kNoInput,
    .options = 0,
    .make = Make,
};

}  // namespace korvel::tool
