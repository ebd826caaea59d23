// Compares two states of a project. Which files belong to it is decided by project_files.cpp, the tables are judged as those of
// any two files. Held by tests/tool/against_test.cpp.
#include "tool/commands/against.h"

#include <unistd.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <map>
#include <thread>
#include <unordered_set>

#include "base/did_you_mean.h"
#include "base/file_descriptor.h"
#include "base/input_error.h"
#include "base/one_line.h"
#include "base/parallel.h"
#include "base/quote.h"
#include "project/moved_files.h"
#include "schema/model.h"
#include "tool/commands/check_tables.h"
#include "tool/commands/project_files.h"
#include "tool/io/progress.h"

namespace korvel::tool {
namespace {

// One schema file in both states, and what came of it.
struct FilePair {
  std::string old_path;  // empty: it was not there
  std::string new_path;  // empty: it is gone
  std::shared_ptr<Input> first;
  std::shared_ptr<Input> second;  // the same as `first` if the file is the same byte for byte
  std::vector<TableResult> tables = {};
  std::vector<std::string> faults = {};
  bool is_asked = true;  // false: it is looked at only because a file that the call names may have been there

  const std::string& Place() const { return new_path.empty() ? old_path : new_path; }
};

std::shared_ptr<Input> LoadFrom(FileTree& state, const std::string& path, Bytes bytes) {
  return std::make_shared<Input>(LoadBytes(state.Shown(path), std::move(bytes)));
}

// The side without tables that a file which is gone is compared with.
std::shared_ptr<Input> WithoutTables(const Input& old_input, const std::string& shown) {
  Model model = ModelOf(old_input, std::string(old_input.tables.front()));
  model.metas.clear();
  return std::make_shared<Input>(Input{{shown, std::move(*Build(model)), std::nullopt, {}}, std::nullopt});
}

class Comparison {
 public:
  Comparison(const Options& options, LPVESKCATEGORYINST log) : options_(options), log_(log), states_(StatesOf(options)) {
    const ProjectFiles files = FilesOf(options, states_);
    for (const std::string& given : files.twice) Say(OneLine(given) + " is given twice; it is compared once");
    for (const std::string& path : files.in_new) pairs_.push_back({files.in_old.contains(path) ? path : "", path, {}, {}});
    for (const std::string& path : files.in_old) {
      if (!files.in_new.contains(path)) pairs_.push_back({path, "", {}, {}});
    }
    for (const std::string& path : files.removed_elsewhere) pairs_.push_back({path, "", {}, {}, {}, {}, false});
  }

  CommandResult Run(const Command& command) {
    RefuseToReplace();
    EachPair("files", [&](FilePair& pair) { Load(pair); });
    DropUnasked([](const FilePair& pair) { return !pair.faults.empty(); });
    RefuseFaults();
    PairMoved();
    DropUnasked([](const FilePair&) { return true; });
    std::ranges::sort(pairs_, {}, &FilePair::Place);
    RequireTables();
    EachPair("files judged", [&](FilePair& pair) { CheckTables(pair); });
    return Collected(command);
  }

 private:
  static void Say(const std::string& text) { static_cast<void>(WriteAll(STDERR_FILENO, ToolMessage(text) + "\n")); }

  void EachPair(const char* what, const std::function<void(FilePair&)>& work) {
    Progress progress(STDERR_FILENO, pairs_.size(), what);
    ForEach(pairs_.size(), options_.log ? 1 : std::thread::hardware_concurrency(), [&](std::size_t i) {
      work(pairs_[i]);
      progress.Step();
    });
  }

  // A report must not take the place of a schema.
  void RefuseToReplace() const {
    std::vector<std::string> inputs;
    for (const FilePair& pair : pairs_) inputs.push_back(states_.new_state->Shown(pair.Place()));
    RefuseOverlaps(options_, inputs);
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

  // Most files of a large project are what they were: such a file is read into one library, not into two.
  void LoadOld(FilePair& pair, const Bytes& new_bytes) {
    FileTree& state = *states_.old_state;
    try {
      Bytes bytes = state.Read(pair.old_path);
      if (!pair.new_path.empty() && bytes.View() == new_bytes.View()) return;
      pair.first = LoadFrom(state, pair.old_path, std::move(bytes));
    } catch (const InputError& fault) {
      pair.faults = fault.lines;
      const std::string shown = OneLine(states_.new_state->Shown(pair.Place()));
      pair.faults.push_back(ToolMessage(shown + ": cannot be compared with " + OneLine(state.Shown(pair.old_path))));
    }
  }

  template <class Condition>
  void DropUnasked(Condition condition) {
    std::erase_if(pairs_, [&](const FilePair& pair) { return !pair.is_asked && condition(pair); });
  }

  void RefuseFaults() const {
    InputError faults;
    for (const FilePair& pair : pairs_) faults.lines.insert(faults.lines.end(), pair.faults.begin(), pair.faults.end());
    if (!faults.lines.empty()) throw faults;
  }

  // Puts the old side of what was moved to its new side.
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

  // Whether an asked table is there; one that is nowhere is a mistake. So are settings of none: they would not count.
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
    if (options_.project && options_.inputs.empty()) AddUnknownSettings(*options_.project, known, unknown);
    if (!unknown.lines.empty()) throw unknown;
  }

  static void AddUnknownSettings(const Project& project, const std::vector<std::string_view>& known, InputError& unknown) {
    const std::unordered_set<std::string_view> tables(known.begin(), known.end());
    for (const auto& [name, settings] : project.tables) {
      if (tables.contains(name)) continue;
      const std::string place = std::to_string(settings.place.line) + ":" + std::to_string(settings.place.column);
      unknown.lines.push_back(OneLine(project.file + ":" + place + ": error: [tables." + Quote(name) +
                                      "] is for a table that no schema file has" + DidYouMean(name, known)));
    }
  }

  bool IsWanted(std::string_view table) const {
    return options_.tables.empty() || std::ranges::find(options_.tables, table) != options_.tables.end();
  }

  void CheckTables(FilePair& pair) {
    if (pair.old_path.empty()) {
      AddNewTables(*pair.second, {}, pair);
      return;
    }
    if (pair.first == nullptr) pair.first = pair.second;
    if (pair.second == nullptr && !pair.first->tables.empty()) {
      pair.second = WithoutTables(*pair.first, states_.new_state->Shown(pair.old_path));
    }
    for (const std::string_view name : pair.first->tables) {
      const std::string table(name);
      if (IsWanted(table)) pair.tables.push_back(CheckOne({*pair.first, *pair.second}, table));
    }
    if (pair.second != nullptr) AddNewTables(*pair.second, pair.first->tables, pair);
  }

  TableResult CheckOne(const Pair& pair, const std::string& table) const {
    return CheckTableChange(CheckFor(pair, table, options_, log_));
  }

  void AddNewTables(const Input& input, const std::vector<std::string_view>& old_tables, FilePair& pair) const {
    const std::unordered_set<std::string_view> known(old_tables.begin(), old_tables.end());
    for (const std::string_view table : input.tables) {
      if (IsWanted(table) && !known.contains(table)) pair.tables.push_back(NewTable(input, std::string(table)));
    }
  }

  CommandResult Collected(const Command& command) {
    CommandResult answer;
    Report& report = answer.report;
    report.command = command.name;
    for (FilePair& pair : pairs_) {
      if (const auto note = Note(pair)) report.files.push_back(*note);
      if (pair.first != nullptr && pair.first != pair.second) report.inputs.push_back({command.first.role, pair.first.get()});
      if (pair.second != nullptr && !pair.new_path.empty()) report.inputs.push_back({command.second.role, pair.second.get()});
      std::ranges::move(pair.tables, std::back_inserter(report.tables));
      answer.kept.insert(answer.kept.end(), {pair.first, pair.second});
    }
    const bool is_compared =
        std::ranges::any_of(report.tables, [](const TableResult& one) { return one.status != Status::kNew; });
    const bool may_pass = options_.allow_new && !report.tables.empty();
    if (!is_compared && !may_pass) RefuseNothing(report);
    return answer;
  }

  std::optional<FileNote> Note(const FilePair& pair) const {
    using Kind = FileNote::Kind;
    if (pair.old_path == pair.new_path) return std::nullopt;
    const std::string old_file = pair.old_path.empty() ? "" : states_.old_state->Shown(pair.old_path);
    const std::string new_file = pair.new_path.empty() ? "" : states_.new_state->Shown(pair.new_path);
    return FileNote{old_file.empty() ? Kind::kAdded : new_file.empty() ? Kind::kDeleted : Kind::kMoved, old_file, new_file};
  }

  [[noreturn]] static void RefuseNothing(const Report& report) {
    const bool has_new = !report.tables.empty();
    throw InputError{
        {ToolMessage(std::string("nothing was compared: ") +
                     (has_new ? "all tables are new; 'korvelcheck lint' judges them alone, --allow-new lets them pass"
                              : "the files have no tables"))}};
  }

  const Options& options_;
  LPVESKCATEGORYINST log_;
  ProjectStates states_;
  std::vector<FilePair> pairs_;
};

}  // namespace

CommandResult CheckAgainst(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  return Comparison(options, log).Run(command);
}

}  // namespace korvel::tool
