// Tested by tests/tool/image_test.cpp.
#include <unistd.h>

#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "project/load_inputs.h"
#include "qmx/qmx_image.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

struct CompileArguments {
  InputFiles inputs;
  OutputOption output{.is_required = true};

  void AddTo(ArgumentList& arguments) {
    inputs.AddOneTo(arguments, "FILE");
    output.AddTo(arguments);
  }
};

// A library may be too large for an image, or have contents that readers of images refuse.
void RequireValidImage(const std::string& name, const qmx::Metalib& metalib, const std::string& image) {
  const qmx::Limits limits;
  std::string fault;
  if (image.size() > limits.max_bytes) {
    fault =
        "the image would have " + std::to_string(image.size()) + " bytes; allowed: at most " + std::to_string(limits.max_bytes);
  } else if (const auto error = qmx::Verify(metalib.get(), metalib.size(), limits)) {
    fault = "cannot be written as an image: " + qmx::Describe(*error);
  }
  if (!fault.empty()) throw InputError{{ToolMessage(OneLine(name) + ": " + fault)}};
}

int Run(const CompileArguments& arguments) {
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  if (!arguments.output.file && ::isatty(STDOUT_FILENO) == 1) {
    throw InputError{{ToolMessage("compile: standard output is a terminal; allowed: a file or a pipe")}};
  }
  const Input input = std::move(LoadInputs(arguments.inputs.paths).front());
  const std::string image = qmx::WriteImage(input.metalib);
  RequireValidImage(input.name, input.metalib, image);
  arguments.output.Write(image);
  return kAllAllowed;
}

}  // namespace

const Command kCompileCommand{"compile", "write a schema as an image", Declare<CompileArguments, Run>};

}  // namespace korvel::tool
