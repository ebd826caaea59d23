// Tested by tests/tool/diff_test.cpp.
#include "project/load_inputs.h"
#include "report/render/render.h"
#include "schema/selection.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

struct DiffArguments {
  InputFiles inputs;
  TableSelection selection;
  OutputOption output{.is_report = true};
  TextOrJson format;

  void AddTo(ArgumentList& arguments) {
    inputs.AddPairTo(arguments, "OLD", "NEW");
    selection.AddTo(arguments);
    output.AddTo(arguments);
    format.AddTo(arguments);
  }
};

int Run(const DiffArguments& arguments) {
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  const std::vector<Input> inputs = LoadInputs(arguments.inputs.paths);
  const Selection selection = SelectTables({inputs[0], inputs[1]}, arguments.selection.tables);
  const Listing listing = ListChanges(inputs[0], inputs[1], selection.compared, selection.added);
  const std::string text = arguments.format.json ? RenderDiffJson(listing) : RenderDiffText(listing);
  arguments.output.Write(text);
  return kAllAllowed;
}

}  // namespace

const Command kDiffCommand{"diff", "list the changes between two schemas without checking them", Declare<DiffArguments, Run>};

}  // namespace korvel::tool
