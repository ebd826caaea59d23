// Tested by tests/tool/image_test.cpp and compile_project_test.cpp.
#include <unistd.h>

#include <optional>

#include "base/input_error.h"
#include "project/load_inputs.h"
#include "project/schema_finder.h"
#include "schema/input.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/commands/image_files.h"
#include "tool/commands/selected_inputs.h"
#include "tool/io/blocked_signals.h"
#include "tool/io/exit.h"
#include "tool/io/output.h"

namespace korvel::tool {
namespace {

struct CompileArguments {
  InputFiles inputs;
  TableSettings settings;  // only the project file
  OutputOption output{.is_required = true, .remark = "; with several files, a directory"};

  void AddTo(ArgumentList& arguments) {
    inputs.AddListTo(arguments);
    settings.AddProjectTo(arguments);
    output.AddTo(arguments);
  }

  bool WritesOneFile() const { return inputs.paths.size() == 1 && !SelectsFiles(inputs.paths); }
};

void CompileOne(const CompileArguments& arguments) {
  if (arguments.output.file && NamesDirectory(*arguments.output.file)) {
    throw UsageError{OneLine(*arguments.output.file) + " is a directory; allowed with one file: a file"};
  }
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  if (!arguments.output.file && ::isatty(STDOUT_FILENO) == 1) {
    throw InputError{{ToolMessage("compile: standard output is a terminal; allowed: a file or a pipe")}};
  }
  const std::string image = ImageOf(LoadInputs(arguments.inputs.paths).front());
  if (arguments.output.file) RequireNoOther(*arguments.output.file);
  arguments.output.Write(image);
}

void CompileAll(const CompileArguments& arguments) {
  if (!arguments.output.file) throw UsageError{"several images are written to a directory; allowed: -o DIR"};
  const std::optional<Project> project = arguments.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, {&arguments.output});
  const Project* const of_call = project ? &*project : nullptr;
  const SelectedInputs selected = LoadSelected(arguments.inputs.paths, arguments.settings, of_call, arguments.output);
  const BlockedSignals signals;  // until the images are listed
  WriteStandardOutput(AsProducer(WriteImages(selected, of_call, *arguments.output.file, signals)));
}

int Run(const CompileArguments& arguments) {
  arguments.WritesOneFile() ? CompileOne(arguments) : CompileAll(arguments);
  return kAllAllowed;
}

}  // namespace

const Command kCompileCommand{"compile", "write schemas as images", Declare<CompileArguments, Run>};

}  // namespace korvel::tool
