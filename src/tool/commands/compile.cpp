// compile: a schema as an image. Held by tests/tool/image_test.cpp.
#include <unistd.h>

#include "base/input_error.h"
#include "base/one_line.h"
#include "project/load_inputs.h"
#include "qmx/qmx_image.h"
#include "tool/cli/command.h"

namespace korvel::tool {
namespace {

// What is written can be read: a library may be too large, or hold what no image may ask of its reader.
void RequireReadable(const std::string& name, const qmx::Metalib& metalib, const std::string& image) {
  const qmx::Limits limits;
  std::string fault;
  if (image.size() > limits.max_bytes) {
    fault = "the image would have " + std::to_string(image.size()) + " bytes; allowed: up to " + std::to_string(limits.max_bytes);
  } else if (const auto error = qmx::Verify(metalib.get(), metalib.size(), limits)) {
    fault = "no image can be made: " + qmx::Describe(*error);
  }
  if (!fault.empty()) throw InputError{{ToolMessage(OneLine(name) + ": " + fault)}};
}

std::string Make(const Options& options) {
  if (!options.output && ::isatty(STDOUT_FILENO) == 1) {
    throw InputError{
        {ToolMessage("compile: an image is not for a terminal; allowed: -o with a file, or standard output elsewhere")}};
  }
  const Input input = std::move(LoadInputs(options.inputs).front());
  std::string image = qmx::WriteImage(input.metalib);
  RequireReadable(input.name, input.metalib, image);
  RequireUnchanged(input);
  return image;
}

}  // namespace

const Command kCompileCommand{
    .name = "compile",
    .summary = "write a schema as an image, which is read without parsing",
    .first = {"FILE", "file"},
    .second = kNoInput,
    .options = kNeedsOutput,
    .make = Make,
};

}  // namespace korvel::tool
