// Tested by tests/tool/image_test.cpp.
#include "project/load_inputs.h"
#include "schema/input.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

struct DumpArguments {
  InputFiles inputs;
  OutputOption output;

  void AddTo(ArgumentList& arguments) {
    inputs.AddOneTo(arguments, "IMAGE");
    output.AddTo(arguments);
  }
};

int Run(const DumpArguments& arguments) {
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  const std::vector<Input> inputs = LoadInputs(arguments.inputs.paths);
  const std::string text = SchemaFile(inputs.front());
  arguments.output.Write(text);
  return kAllAllowed;
}

}  // namespace

const Command kDumpCommand{"dump", "write an image as a schema file that compiles to the same image",
                           Declare<DumpArguments, Run>};

}  // namespace korvel::tool
