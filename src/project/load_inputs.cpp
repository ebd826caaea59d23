// Loads schemas for commands, several files at a time. Tested by tests/tool/input_test.cpp and git_test.cpp.
#include "project/load_inputs.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <optional>
#include <utility>

#include "base/input_error.h"
#include "base/parallel.h"
#include "project/revision_hint.h"
#include "schema/file_bytes.h"
#include "schema/input.h"

namespace korvel {
namespace {

// A loaded file, or why it could not be loaded.
struct Loaded {
  std::optional<Input> input;
  std::exception_ptr fault;
};

// `paths` are those of the call.
Input Load(const std::string& path, const std::vector<std::string>& paths, Git& git, Texts texts, const ReadFound& read_found) {
  if (std::optional<Bytes> found = read_found ? read_found(path) : std::nullopt) return LoadBytes(path, std::move(*found), texts);
  if (const std::optional<GitPath> in_git = ParseGitPath(path)) return LoadBytes(path, git.Read(*in_git), texts);
  try {
    return LoadFile(path, texts);
  } catch (const InputError&) {
    const std::string hint = HintForFile(path, paths);
    if (hint.empty()) throw;
    RefuseFile(path, "No such file or directory" + hint);
  }
}

Loaded TryToLoad(const std::string& path, const std::vector<std::string>& paths, Git& git, Texts texts,
                 const ReadFound& read_found) {
  try {
    return {Load(path, paths, git, texts, read_found), nullptr};
  } catch (...) {
    return {std::nullopt, std::current_exception()};
  }
}

// One thread for each large file.
std::size_t UsefulThreads(const std::vector<std::string>& paths) {
  const auto is_large = [](const std::string& path) { return SizeOf(path) >= kWorthAThread; };
  return static_cast<std::size_t>(std::ranges::count_if(paths, is_large));
}

}  // namespace

Input LoadInput(const std::string& path, Git& git, Texts texts) { return Load(path, {}, git, texts, nullptr); }

LoadedInputs TryToLoadInputs(const std::vector<std::string>& paths, Texts texts, const ReadFound& read_found) {
  LoadedInputs result;
  std::vector<Loaded> files(paths.size());
  Git git;
  ForEach(paths.size(), UsefulThreads(paths),
          [&](std::size_t i) { files[i] = TryToLoad(paths[i], paths, git, texts, read_found); });
  for (std::size_t i = 0; i < paths.size(); ++i) {
    try {
      if (files[i].fault != nullptr) std::rethrow_exception(files[i].fault);
      result.inputs.push_back(std::move(*files[i].input));
      result.paths.push_back(paths[i]);
    } catch (const InputError& error) {
      std::ranges::move(FaultsOf(error, paths[i]), std::back_inserter(result.faults));
    }
  }
  return result;
}

std::vector<Input> LoadInputs(const std::vector<std::string>& paths, Texts texts) {
  LoadedInputs loaded = TryToLoadInputs(paths, texts);
  if (!loaded.faults.empty()) throw ErrorOf(std::move(loaded.faults));
  return std::move(loaded.inputs);
}

}  // namespace korvel
