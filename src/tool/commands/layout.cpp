// layout: where do the fields of a record lie, and what becomes of them? Held by tests/tool/layout_test.cpp.
#include "project/load_inputs.h"
#include "report/render/render.h"
#include "schema/selection.h"
#include "tool/cli/command.h"

namespace korvel::tool {
namespace {

std::vector<std::string> TablesOf(const Input& input, const std::vector<std::string>& asked) {
  RequireTables(input, asked);
  return SelectTables({input, input}, asked).compared;
}

std::vector<std::string> TablesOf(const Input& before, const Input& after, const std::vector<std::string>& asked) {
  Selection selection = SelectTables({before, after}, asked);
  selection.compared.insert(selection.compared.end(), selection.added.begin(), selection.added.end());
  return selection.compared;
}

std::string Make(const Options& options) {
  const std::vector<Input> inputs = LoadInputs(options.inputs);
  const Input& last = inputs.back();
  LayoutRequest request{nullptr, &last, {}};
  if (inputs.size() == 1) {
    request.tables = TablesOf(last, options.tables);
  } else {
    request.before = &inputs.front();
    request.tables = TablesOf(inputs.front(), last, options.tables);
  }
  std::string text = options.json ? RenderLayoutJson(request) : RenderLayoutText(request);
  for (const Input& input : inputs) RequireUnchanged(input);
  return text;
}

}  // namespace

const Command kLayoutCommand{
    .name = "layout",
    .summary = "where do the fields of a record lie; old and new side by side if given two",
    .first = {"FILE", "file"},
    .second = {"NEW", "new"},
    .options = kTableOption | kSecondIsOptional | kTextOrJson,
    .make = Make,
};

}  // namespace korvel::tool
