// Tested by tests/tool/layout_test.cpp.
#include "project/load_inputs.h"
#include "report/render/render.h"
#include "schema/selection.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

struct LayoutArguments {
  InputFiles inputs;
  TableSelection selection;
  OutputOption output{.is_report = true};
  TextOrJson format;

  void AddTo(ArgumentList& arguments) {
    inputs.AddPairTo(arguments, "FILE", "NEW", false);
    selection.AddTo(arguments);
    output.AddTo(arguments);
    format.AddTo(arguments);
  }
};

LayoutRequest RequestFor(const Input& input, const std::vector<std::string>& tables) {
  RequireTables(input, tables);
  return {nullptr, &input, SelectTables({input, input}, tables).compared};
}

LayoutRequest RequestFor(const Input& before, const Input& after, const std::vector<std::string>& tables) {
  Selection selection = SelectTables({before, after}, tables);
  selection.compared.insert(selection.compared.end(), selection.added.begin(), selection.added.end());
  return {&before, &after, std::move(selection.compared)};
}

int Run(const LayoutArguments& arguments) {
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  const std::vector<Input> inputs = LoadInputs(arguments.inputs.paths);
  const std::vector<std::string>& tables = arguments.selection.tables;
  const LayoutRequest request =
      inputs.size() == 1 ? RequestFor(inputs.front(), tables) : RequestFor(inputs.front(), inputs.back(), tables);
  const std::string text = arguments.format.json ? RenderLayoutJson(request) : RenderLayoutText(request);
  arguments.output.Write(text);
  return kAllAllowed;
}

}  // namespace

const Command kLayoutCommand{"layout", "show the record layout: offsets and sizes", Declare<LayoutArguments, Run>};

}  // namespace korvel::tool
