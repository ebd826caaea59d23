// Pairs the files of two states and checks their tables. project_files.cpp selects the files. Tested by
// tests/tool/against_test.cpp.
#include "project/check_project.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_set>
#include <utility>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/parallel.h"
#include "base/text.h"
#include "project/project_files.h"
#include "schema/input.h"
#include "schema/model.h"

namespace korvel {
namespace {

// One schema file in both states, and the results of its tables.
struct FilePair {
  std::string old_path;  // empty: added
  std::string new_path;  // empty: deleted
  std::shared_ptr<Input> first = nullptr;
  std::shared_ptr<Input> second = nullptr;  // the same as `first` if the file is the same byte for byte
  std::vector<TableResult> tables = {};
  std::vector<std::string> faults = {};
  bool is_requested = true;  // false: only a candidate for the old path of a moved file

  const std::string& Path() const { return new_path.empty() ? old_path : new_path; }
};

class Comparison {
 public:
  explicit Comparison(const ProjectCheck& check) : check_(check), options_(check.options), states_(check.states) {
    const ProjectFiles& files = check.files;
    for (const std::string& path : files.in_new) pairs_.push_back({files.in_old.contains(path) ? path : "", path});
    for (const std::string& path : files.in_old) {
      if (!files.in_new.contains(path)) pairs_.push_back({path, ""});
    }
    for (const std::string& path : files.removed_elsewhere) {
      pairs_.push_back({.old_path = path, .new_path = "", .is_requested = false});
    }
  }

  ProjectResult Run() {
    EachPair(ProjectPhase::kLoad, [&](FilePair& pair) { Load(pair); });
    DropCandidates([](const FilePair& pair) { return !pair.faults.empty(); });
    RefuseFaults();
    PairMoved();
    DropCandidates([](const FilePair&) { return true; });
    std::ranges::sort(pairs_, {}, &FilePair::Path);
    RequireTables();
    EachPair(ProjectPhase::kCheck, [&](FilePair& pair) { CheckPair(pair); });
    return Collect();
  }

 private:
  void EachPair(ProjectPhase phase, const std::function<void(FilePair&)>& work) {
    const auto report = [&](std::size_t done) {
      if (check_.on_progress) check_.on_progress(phase, done, pairs_.size());
    };
    report(0);
    std::atomic<std::size_t> done = 0;
    ForEach(pairs_.size(), options_.in_order ? 1 : std::thread::hardware_concurrency(), [&](std::size_t i) {
      work(pairs_[i]);
      report(++done);
    });
  }

  std::shared_ptr<Input> Share(Input input) const {
    if (check_.shows_sources) AddDump(input);
    return std::make_shared<Input>(std::move(input));
  }

  std::shared_ptr<Input> LoadFrom(FileTree& state, const std::string& path, Bytes bytes) const {
    return Share(LoadBytes(state.Display(path), std::move(bytes)));
  }

  // The side without tables that a deleted file is compared with.
  std::shared_ptr<Input> WithoutTables(const Input& old_input, const std::string& shown) const {
    Model model = ModelOf(old_input, std::string(old_input.tables.front()));
    model.metas.clear();
    return Share(Input{{shown, std::move(*Build(model)), std::nullopt, {}}, std::nullopt});
  }

  void Load(FilePair& pair) {
    Bytes new_bytes;
    try {
      if (!pair.new_path.empty()) new_bytes = states_.new_state->Read(pair.new_path);
      if (!pair.old_path.empty()) LoadOld(pair, new_bytes);
      if (!pair.new_path.empty() && pair.second == nullptr) {
        pair.second = LoadFrom(*states_.new_state, pair.new_path, std::move(new_bytes));
      }
    } catch (const InputError& fault) {
      pair.faults.insert(pair.faults.end(), fault.lines.begin(), fault.lines.end());
    }
  }

  // Most files of a large project are unchanged: such a file is read into one library, not into two.
  void LoadOld(FilePair& pair, const Bytes& new_bytes) {
    FileTree& state = *states_.old_state;
    try {
      Bytes bytes = state.Read(pair.old_path);
      if (!pair.new_path.empty() && bytes.View() == new_bytes.View()) return;
      pair.first = LoadFrom(state, pair.old_path, std::move(bytes));
    } catch (const InputError& fault) {
      pair.faults = fault.lines;
      const std::string shown = OneLine(states_.new_state->Display(pair.Path()));
      pair.faults.push_back(ToolMessage(shown + ": cannot be compared with " + OneLine(state.Display(pair.old_path))));
    }
  }

  template <class Condition>
  void DropCandidates(Condition condition) {
    std::erase_if(pairs_, [&](const FilePair& pair) { return !pair.is_requested && condition(pair); });
  }

  void RefuseFaults() const {
    InputError faults;
    for (const FilePair& pair : pairs_) faults.lines.insert(faults.lines.end(), pair.faults.begin(), pair.faults.end());
    if (!faults.lines.empty()) throw faults;
  }

  // Joins the two paths of each moved file in one pair.
  void PairMoved() {
    std::vector<std::size_t> removed;
    std::vector<std::size_t> added;
    std::vector<const Source*> removed_sources;
    std::vector<const Source*> added_sources;
    for (std::size_t i = 0; i < pairs_.size(); ++i) {
      if (pairs_[i].new_path.empty()) removed.push_back(i), removed_sources.push_back(pairs_[i].first.get());
      if (pairs_[i].old_path.empty()) added.push_back(i), added_sources.push_back(pairs_[i].second.get());
    }
    std::vector<bool> is_taken(pairs_.size());
    for (const auto& [from, to] : FindMoved(removed_sources, added_sources)) {
      FilePair& old_pair = pairs_[removed[from]];
      pairs_[added[to]].old_path = old_pair.old_path;
      pairs_[added[to]].first = std::move(old_pair.first);
      is_taken[removed[from]] = true;
    }
    std::size_t position = 0;
    std::erase_if(pairs_, [&](const FilePair&) { return is_taken[position++]; });
  }

  // A requested table that no file has is an error. So are settings for such a table: they would have no effect.
  void RequireTables() const {
    std::vector<std::string_view> known;
    for (const FilePair& pair : pairs_) {
      for (const auto& input : {pair.first, pair.second}) {
        if (input != nullptr) known.insert(known.end(), input->tables.begin(), input->tables.end());
      }
    }
    InputError unknown;
    for (const std::string& name : options_.tables) {
      if (std::ranges::find(known, name) != known.end()) continue;
      unknown.lines.push_back(ToolMessage("table " + Quote(name) + " is in no file" + DidYouMean(name, known)));
    }
    if (options_.project != nullptr && check_.files.is_whole) AddUnknownSettings(*options_.project, known, unknown);
    if (!unknown.lines.empty()) throw unknown;
  }

  static void AddUnknownSettings(const Project& project, const std::vector<std::string_view>& known, InputError& unknown) {
    const std::unordered_set<std::string_view> tables(known.begin(), known.end());
    for (const auto& [name, settings] : project.tables) {
      if (tables.contains(name)) continue;
      unknown.lines.push_back(OneLine(FileLineColumn(project.file, settings.location) + ": error: [tables." + Quote(name) +
                                      "] is for a table that no schema file has" + DidYouMean(name, known)));
    }
  }

  void CheckPair(FilePair& pair) {
    if (pair.old_path.empty()) {
      pair.tables = NewTables(*pair.second, {}, options_);
      return;
    }
    if (pair.first == nullptr) pair.first = pair.second;
    if (pair.second == nullptr && !pair.first->tables.empty()) {
      pair.second = WithoutTables(*pair.first, states_.new_state->Display(pair.old_path));
    }
    if (pair.second != nullptr) pair.tables = CheckTables({*pair.first, *pair.second}, options_);
  }

  ProjectResult Collect() {
    ProjectResult result;
    Report& report = result.report;
    for (FilePair& pair : pairs_) {
      if (const auto note = NoteOf(pair)) report.files.push_back(*note);
      if (pair.first != nullptr && pair.first != pair.second) report.inputs.push_back({"old", pair.first.get()});
      if (pair.second != nullptr && !pair.new_path.empty()) report.inputs.push_back({"new", pair.second.get()});
      std::ranges::move(pair.tables, std::back_inserter(report.tables));
      result.sources.insert(result.sources.end(), {pair.first, pair.second});
    }
    const bool is_compared =
        std::ranges::any_of(report.tables, [](const TableResult& one) { return one.status != Status::kNew; });
    const bool is_allowed = check_.allow_new && !report.tables.empty();
    if (!is_compared && !is_allowed) RefuseNothing(report);
    return result;
  }

  std::optional<FileNote> NoteOf(const FilePair& pair) const {
    using Kind = FileNote::Kind;
    if (pair.old_path == pair.new_path) return std::nullopt;
    const std::string old_file = pair.old_path.empty() ? "" : states_.old_state->Display(pair.old_path);
    const std::string new_file = pair.new_path.empty() ? "" : states_.new_state->Display(pair.new_path);
    return FileNote{old_file.empty() ? Kind::kAdded : new_file.empty() ? Kind::kDeleted : Kind::kMoved, old_file, new_file};
  }

  [[noreturn]] static void RefuseNothing(const Report& report) {
    const bool has_new = !report.tables.empty();
    throw InputError{
        {ToolMessage(std::string("nothing was compared: ") +
                     (has_new ? "all tables are new; check them with 'korvelcheck lint', or accept them with --allow-new"
                              : "no file has a table"))}};
  }

  const ProjectCheck& check_;
  const CheckOptions& options_;
  const ProjectStates& states_;
  std::vector<FilePair> pairs_;
};

}  // namespace

ProjectResult CheckProject(const ProjectCheck& check) { return Comparison(check).Run(); }

}  // namespace korvel
