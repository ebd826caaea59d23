// diff: what has changed between two schemas? Nothing is judged. Held by tests/tool/diff_test.cpp.
#include "project/load_inputs.h"
#include "report/render/render.h"
#include "schema/selection.h"
#include "tool/cli/command.h"

namespace korvel::tool {
namespace {

std::string Make(const Options& options) {
  const std::vector<Input> inputs = LoadInputs(options.inputs);
  const Selection selection = SelectTables({inputs[0], inputs[1]}, options.tables);
  const Listing listing = ListChanges(inputs[0], inputs[1], selection.compared, selection.added);
  std::string text = options.json ? RenderDiffJson(listing) : RenderDiffText(listing);
  for (const Input& input : inputs) RequireUnchanged(input);
  return text;
}

}  // namespace

const Command kDiffCommand{
    .name = "diff",
    .summary = "what has changed between two schemas, without judgement",
    .first = {"OLD", "old"},
    .second = {"NEW", "new"},
    .options = kTableOption | kTextOrJson,
    .make = Make,
};

}  // namespace korvel::tool
