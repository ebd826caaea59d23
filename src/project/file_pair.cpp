// Tested by tests/tool/against_test.cpp.
#include "project/file_pair.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "project/project_path.h"
#include "report/result/released_source.h"
#include "schema/model.h"

namespace korvel {
namespace {

std::vector<std::string> NamesOf(const FilePair& pair) {
  std::vector<std::string> names;
  const auto add = [&](const Source& source) { names.insert(names.end(), source.tables.begin(), source.tables.end()); };
  if (pair.first != nullptr && pair.first != pair.second) add(*pair.first);
  if (pair.second != nullptr) add(*pair.second);
  return names;
}

// The small replacement for a source of these results, which then refer to it.
std::shared_ptr<const Source> ReleaseFrom(std::vector<TableResult>& tables, const Source& source, bool keeps_text) {
  std::vector<Location> declared;
  for (const TableResult& table : tables) {
    if (table.declared.source == &source) declared.push_back(table.declared);
  }
  auto released = korvel::Release(source, declared, keeps_text);
  for (TableResult& table : tables) {
    for (const Source** const used : {&table.first, &table.second, &table.declared.source}) {
      if (*used == &source) *used = released.get();
    }
  }
  return released;
}

}  // namespace

Input WithoutTables(const Source& old_source, const std::string& shown) {
  Model model = ModelOf(old_source, std::string(old_source.tables.front()));
  model.metas.clear();
  return {shown, std::move(*Build(model)), std::nullopt, {}, old_source.path_in_project};
}

FilePairCheck::FilePairCheck(const ProjectCheck& check) : check_(check) {
  wants_names_ = !check.options.tables.empty() || check.states.projects->projects().HasTableSettings();
}

void FilePairCheck::Load(FilePair& pair) const {
  try {
    LoadSides(pair);
  } catch (const InputError& error) {
    std::ranges::move(FaultsOf(error, check_.states.new_state->Display(pair.Path())), std::back_inserter(pair.faults));
  }
  if (!pair.faults.empty()) pair.first = pair.second = nullptr;
  if (wants_names_) pair.names = NamesOf(pair);
}

void FilePairCheck::LoadSides(FilePair& pair) const {
  FileTree& state = *check_.states.new_state;
  Bytes new_bytes;
  if (pair.new_path != nullptr) new_bytes = state.Read(*pair.new_path);
  if (pair.old_path != nullptr) LoadOld(pair, new_bytes);
  if (pair.new_path == nullptr) return;
  pair.second = LoadFrom(state, pair, *pair.new_path, std::move(new_bytes));
  const bool is_same = pair.old_path != nullptr && pair.first == nullptr && pair.faults.empty();
  if (is_same) pair.first = pair.second;
  pair.is_unchanged = is_same;
}

// Most files of a large project are unchanged: such a file is read into one library, not into two.
void FilePairCheck::LoadOld(FilePair& pair, const Bytes& new_bytes) const {
  FileTree& state = *check_.states.old_state;
  try {
    if (pair.new_path == nullptr) {
      pair.first = LoadFrom(state, pair, *pair.old_path, state.Read(*pair.old_path));
    } else {
      LoadOldOfPair(pair, new_bytes);
    }
  } catch (const InputError& error) {
    std::vector<InputFault> faults = FaultsOf(error, state.Display(*pair.old_path));
    if (LoadEarlier(pair, faults)) return;
    pair.faults = std::move(faults);
    for (InputFault& fault : pair.faults) fault.needed_by = check_.states.new_state->Display(pair.Path());
  }
}

// A file that is kept need not be read.
void FilePairCheck::LoadOldOfPair(FilePair& pair, const Bytes& new_bytes) const {
  FileTree& state = *check_.states.old_state;
  const std::string& path = *pair.old_path;
  const CachedFile file{state.ObjectOf(path), state.Display(path), PathInProject(pair.project->directory, path)};
  SourceCache* const cache = file.object.empty() || check_.shows_sources ? nullptr : check_.old_files;
  if (const std::shared_ptr<const Source> known = cache == nullptr ? nullptr : cache->Find(file)) {
    if (known->text->Bytes() != new_bytes.View()) pair.first = known;
    return;
  }
  std::optional<Bytes> bytes = state.ReadUnless(path, new_bytes.View());
  if (!bytes) return;
  pair.first = LoadFrom(state, pair, path, std::move(*bytes));
  if (cache != nullptr) cache->Keep(file, pair.first);
}

// No table was created from a file with a fault. So its last version without one is compared, and who repairs it is not refused.
bool FilePairCheck::LoadEarlier(FilePair& pair, const std::vector<InputFault>& faults) const {
  const auto is_of_content = [](const InputFault& fault) {
    return fault.kind == FaultKind::kSyntax || fault.kind == FaultKind::kInvalid || fault.kind == FaultKind::kImage;
  };
  if (!std::ranges::all_of(faults, is_of_content)) return false;
  return check_.states.old_state->TakeEarlier(*pair.old_path, [&](const std::string& name, Bytes bytes) {
    try {
      Input input = LoadBytes(name, std::move(bytes));
      input.path_in_project = PathInProject(pair.project->directory, *pair.old_path);
      pair.first = Share(std::move(input));
    } catch (const InputError&) {
      return false;
    }
    pair.older_name = name;
    return true;
  });
}

std::shared_ptr<const Source> FilePairCheck::Share(Input input) const {
  if (check_.shows_sources) AddDump(input);
  return std::make_shared<Input>(std::move(input));
}

std::shared_ptr<const Source> FilePairCheck::LoadFrom(FileTree& state, const FilePair& pair, const std::string& path,
                                                      Bytes bytes) const {
  Input input = LoadBytes(state.Display(path), std::move(bytes));
  input.path_in_project = PathInProject(pair.project->directory, path);
  return Share(std::move(input));
}

std::shared_ptr<const Source> FilePairCheck::InProjectOf(const FilePair& pair, std::shared_ptr<const Source> source) {
  std::string path = PathInProject(pair.project->directory, *pair.old_path);
  if (path == source->path_in_project) return source;
  auto own = std::make_shared<Source>(*source);
  own->path_in_project = std::move(path);
  return own;
}

std::vector<TableResult> FilePairCheck::TablesOf(FilePair& pair) const {
  CheckOptions options = check_.options;
  options.project = pair.project->project;
  if (pair.old_path == nullptr) return NewTables(*pair.second, {}, options);
  if (pair.new_path == nullptr) {
    if (pair.first->tables.empty()) return {};
    pair.second = Share(WithoutTables(*pair.first, check_.states.new_state->Display(*pair.old_path)));
  }
  return CheckTables({*pair.first, *pair.second}, options);
}

void FilePairCheck::Check(FilePair& pair) const {
  pair.tables = TablesOf(pair);
  for (TableResult& table : pair.tables) table.project = pair.project->position;
  pair.is_checked = true;
  if (std::ranges::none_of(pair.tables, ShowsSources)) Release(pair);
}

void FilePairCheck::Release(FilePair& pair) const {
  const bool is_same = pair.first == pair.second;
  if (pair.first != nullptr) pair.first = ReleaseFrom(pair.tables, *pair.first, check_.shows_sources);
  if (is_same) {
    pair.second = pair.first;
  } else if (pair.second != nullptr) {
    pair.second = ReleaseFrom(pair.tables, *pair.second, check_.shows_sources);
  }
}

}  // namespace korvel
