// Tested by tests/tool/layout_project_test.cpp and compile_project_test.cpp.
#include "tool/commands/selected_inputs.h"

#include <algorithm>
#include <utility>

#include "base/input_error.h"
#include "project/load_inputs.h"
#include "project/nearest_projects.h"
#include "project/schema_finder.h"

namespace korvel::tool {

bool SelectsFiles(const std::vector<std::string>& paths) { return paths.empty() || std::ranges::any_of(paths, NamesDirectory); }

SelectedInputs LoadSelected(const std::vector<std::string>& paths, const TableSettings& settings, const Project* project,
                            const OutputOption& output) {
  RequireOneStandardInput(paths);
  ProjectSet projects(project, settings.SearchesProjects());
  SchemaFinder finder(projects, settings.links());
  const std::vector<std::string> files = finder.Select(paths);
  RefuseOverlaps(files, {&output});
  RefuseOverlaps(projects.Files(), {&output});
  LoadedInputs loaded = TryToLoadInputs(files, Texts::kWhenNeeded, [&](const std::string& path) { return finder.Read(path); });
  if (!loaded.faults.empty()) throw ErrorOf(std::move(loaded.faults));
  std::vector<bool> is_found;
  for (const std::string& path : loaded.paths) is_found.push_back(finder.IsFound(path));
  return {std::move(loaded.inputs), std::move(loaded.paths), std::move(is_found)};
}

}  // namespace korvel::tool
