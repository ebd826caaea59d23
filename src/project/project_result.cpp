// Puts the results of several baselines together. Tested by tests/tool/baseline_test.cpp.
#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "project/check_project.h"

namespace korvel {
namespace {

// A fault of the new state is found once for each baseline.
void AppendNew(std::vector<InputFault> more, std::vector<InputFault>& faults) {
  for (InputFault& fault : more) {
    const auto is_same = [&](const InputFault& one) { return one.message == fault.message && one.needed_by == fault.needed_by; };
    if (std::ranges::none_of(faults, is_same)) faults.push_back(std::move(fault));
  }
}

}  // namespace

void Append(ProjectResult more, bool names_baseline, ProjectResult& result) {
  const auto append = [](auto from, auto& to) { std::ranges::move(from, std::back_inserter(to)); };
  if (names_baseline) {
    for (TableResult& table : more.report.tables) table.baseline = more.report.baselines.front().name;
  }
  for (ComparedFile& file : more.compared) {
    file.baseline += result.report.baselines.size();
    file.first_table += result.report.tables.size();
  }
  append(std::move(more.compared), result.compared);
  append(std::move(more.report.baselines), result.report.baselines);
  append(std::move(more.report.inputs), result.report.inputs);
  append(std::move(more.report.tables), result.report.tables);
  append(std::move(more.report.files), result.report.files);
  append(std::move(more.report.project), result.report.project);
  AppendNew(std::move(more.report.faults), result.report.faults);
  append(std::move(more.sources), result.sources);
  append(std::move(more.judged), result.judged);
}

}  // namespace korvel
