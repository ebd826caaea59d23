// Pairs the files of two states and puts the results of their tables together. project_files.cpp selects the files,
// file_pair.cpp compares two of them. Tested by tests/tool/against_test.cpp.
#include "project/check_project.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/parallel.h"
#include "base/paths.h"
#include "base/text.h"
#include "project/file_pair.h"
#include "project/hidden_changes.h"
#include "project/inner_repository.h"
#include "project/moved_files.h"
#include "project/project_files.h"
#include "project/project_path.h"
#include "project/settings_changes.h"

namespace korvel {
namespace {

class Comparison {
 public:
  explicit Comparison(const ProjectCheck& check)
      : check_(check), options_(check.options), states_(check.states), pair_check_(check) {
    const ProjectFiles& files = check.files;
    for (const std::string& path : files.in_new) {
      const auto old_path = files.in_old.find(path);
      pairs_.push_back({.old_path = old_path == files.in_old.end() ? nullptr : &*old_path, .new_path = &path});
    }
    for (const std::string& path : files.in_old) {
      if (!files.in_new.contains(path)) pairs_.push_back({.old_path = &path});
    }
    for (const std::string& path : files.removed_elsewhere) pairs_.push_back({.old_path = &path, .is_requested = false});
    for (const std::string& path : files.added_elsewhere) pairs_.push_back({.new_path = &path, .is_requested = false});
    for (FilePair& pair : pairs_) pair.project = &states_.projects->Of(pair.Path());
  }

  ProjectResult Run() {
    EachPair(ProjectPhase::kLoad, [&](FilePair& pair) { LoadFirst(pair); });
    DropCandidates([](const FilePair& pair) { return !pair.faults.empty(); });
    PairMoved();
    DropCandidates([](const FilePair&) { return true; });
    std::ranges::sort(pairs_, {}, &FilePair::Path);
    RequireTables();
    EachPair(ProjectPhase::kCheck, [&](FilePair& pair) { CheckRest(pair); });
    return Collect();
  }

 private:
  void EachPair(ProjectPhase phase, const std::function<void(FilePair&)>& work) {
    std::vector<FilePair*> left;
    for (FilePair& pair : pairs_) {
      if (!pair.is_checked) left.push_back(&pair);
    }
    const auto report = [&](std::size_t done) {
      if (check_.on_progress) check_.on_progress(phase, done, left.size());
    };
    report(0);
    std::atomic<std::size_t> done = 0;
    ForEach(left.size(), options_.in_order ? 1 : std::thread::hardware_concurrency(), [&](std::size_t i) {
      work(*left[i]);
      report(++done);
    });
  }

  // A file with both sides need not wait for the others: it is compared and released at once. With a log it is only released,
  // and loaded again: records are written in the order of the report.
  void LoadFirst(FilePair& pair) {
    if (IsInOtherRepository(pair)) return;
    pair_check_.Load(pair);
    const bool may_be_moved = pair.old_path == nullptr || pair.new_path == nullptr;
    if (may_be_moved || !pair.faults.empty()) return;
    if (options_.in_order) {
      pair.first = pair.second = nullptr;
    } else {
      pair_check_.Check(pair);
    }
  }

  // A file that seems to be deleted, because its directory has become a submodule, gets a fault.
  bool IsInOtherRepository(FilePair& pair) const {
    const std::string repository = pair.new_path == nullptr ? RepositoryOf(states_, *pair.old_path) : "";
    pair.is_elsewhere = !repository.empty();
    if (repository.empty()) return false;
    pair.faults.push_back(FaultAbout(FaultKind::kUnreadable, states_.new_state->Display(*pair.old_path),
                                     "belongs to " + Describe(states_, repository)));
    return true;
  }

  void CheckRest(FilePair& pair) {
    if (!pair.faults.empty()) return;
    const bool is_loaded = pair.first != nullptr || pair.second != nullptr;
    if (!is_loaded) pair_check_.Load(pair);
    if (pair.faults.empty()) pair_check_.Check(pair);
  }

  template <class Condition>
  void DropCandidates(Condition condition) {
    std::erase_if(pairs_, [&](const FilePair& pair) { return !pair.is_requested && condition(pair); });
  }

  bool HasFaults() const {
    return std::ranges::any_of(pairs_, [](const FilePair& pair) { return !pair.faults.empty(); });
  }

  // The added files that do not replace a deleted one: those that git ignores, for other clones lack them, and those of the
  // baseline itself.
  std::set<std::string> CopiesOnly() const {
    std::set<std::string> copies = states_.new_state->IgnoredFiles();
    if (states_.baseline.revision) return copies;
    const std::filesystem::path baseline = AbsolutePath(states_.baseline.name).lexically_relative(states_.top);
    if (LeadsOut(baseline)) return copies;
    for (const std::string& path : states_.new_state->Below(baseline.string())) copies.insert(path);
    return copies;
  }

  // Joins the two paths of each moved file in one pair. A file with faults is in none: nobody knows what it contains.
  void PairMoved() {
    std::vector<std::size_t> removed;
    std::vector<std::size_t> added;
    std::vector<const Source*> removed_sources;
    std::vector<const Source*> added_sources;
    const auto is_deleted = [](const FilePair& pair) { return pair.new_path == nullptr; };
    const auto is_added = [](const FilePair& pair) { return pair.old_path == nullptr; };
    if (std::ranges::none_of(pairs_, is_deleted) || std::ranges::none_of(pairs_, is_added)) return;
    const std::set<std::string> copies = CopiesOnly();
    for (std::size_t i = 0; i < pairs_.size(); ++i) {
      if (!pairs_[i].faults.empty() || (is_added(pairs_[i]) && copies.contains(*pairs_[i].new_path))) continue;
      if (pairs_[i].new_path == nullptr) removed.push_back(i), removed_sources.push_back(pairs_[i].first.get());
      if (pairs_[i].old_path == nullptr) added.push_back(i), added_sources.push_back(pairs_[i].second.get());
    }
    std::vector<bool> is_taken(pairs_.size());
    for (const auto& [from, to] : FindMoved(removed_sources, added_sources)) {
      FilePair& old_pair = pairs_[removed[from]];
      FilePair& moved = pairs_[added[to]];
      moved.old_path = old_pair.old_path;
      moved.is_requested = moved.is_requested || old_pair.is_requested;
      moved.first = FilePairCheck::InProjectOf(moved, std::move(old_pair.first));
      moved.older_name = std::move(old_pair.older_name);
      moved.names.insert(moved.names.begin(), old_pair.names.begin(), old_pair.names.end());
      is_taken[removed[from]] = true;
    }
    std::size_t position = 0;
    std::erase_if(pairs_, [&](const FilePair&) { return is_taken[position++]; });
  }

  // A requested table that no file has is an error. So are settings for such a table: they would have no effect. A file with
  // faults may have any table.
  void RequireTables() const {
    if (HasFaults()) return;
    std::vector<std::string_view> known;
    for (const FilePair& pair : pairs_) known.insert(known.end(), pair.names.begin(), pair.names.end());
    InputError unknown;
    for (const std::string& name : options_.tables) {
      if (std::ranges::find(known, name) != known.end()) continue;
      unknown.lines.push_back(ToolMessage("table " + Quote(name) + " is in no file" + DidYouMean(name, known)));
    }
    const ProjectSet& projects = states_.projects->projects();
    for (std::size_t i = 0; check_.files.is_whole && i < projects.size(); ++i) {
      if (projects[i] != nullptr && projects.IsCovered(i)) AddUnknownSettings(*projects[i], i, unknown);
    }
    if (!unknown.lines.empty()) throw unknown;
  }

  // Settings are for the tables of the files that the project file judges.
  void AddUnknownSettings(const Project& project, std::size_t position, InputError& unknown) const {
    if (project.tables.empty()) return;
    std::vector<std::string_view> known;
    for (const FilePair& pair : pairs_) {
      if (pair.project->position == position) known.insert(known.end(), pair.names.begin(), pair.names.end());
    }
    const std::set<std::string_view> tables(known.begin(), known.end());
    const std::string others = states_.projects->projects().size() > 1 ? " of this project file" : "";
    for (const auto& [name, settings] : project.tables) {
      if (tables.contains(name)) continue;
      unknown.lines.push_back(OneLine(FileLineColumn(PathText(project.file), settings.location) + ": error: [tables." +
                                      QuoteWhole(name) + "] is for a table that no schema file" + others + " has" +
                                      DidYouMean(name, known)));
    }
  }

  ProjectResult Collect() {
    ProjectResult result;
    Report& report = result.report;
    SettingsChanges settings(states_, options_.given);
    const ProjectSet& projects = states_.projects->projects();
    const bool has_projects = projects.size() > 1 || projects.OfCall() != nullptr;
    std::size_t tables = 0;
    for (const FilePair& pair : pairs_) tables += pair.tables.size();
    report.tables.reserve(tables);
    for (FilePair& pair : pairs_) {
      std::ranges::move(pair.faults, std::back_inserter(report.faults));
      if (const auto note = NoteOf(pair)) report.files.push_back(*note);
      if (!pair.older_name.empty()) {
        report.files.push_back({FileNote::Kind::kOlder, states_.old_state->Display(*pair.old_path), pair.older_name});
      }
      if (pair.first != nullptr && pair.first != pair.second) report.inputs.push_back({"old", pair.first.get()});
      if (pair.second != nullptr && pair.new_path != nullptr) report.inputs.push_back({"new", pair.second.get()});
      if (pair.old_path != nullptr && pair.new_path != nullptr) {
        for (const TableResult& table : pair.tables) settings.Add(*pair.old_path, *pair.new_path, table.table);
        if (auto moved = FindMovedOut(*pair.old_path, *pair.new_path, check_.files, states_)) report.project.push_back(*moved);
      }
      if (pair.faults.empty()) result.compared.push_back(ComparedOf(pair, report.tables.size()));
      std::ranges::move(std::exchange(pair.tables, {}), std::back_inserter(report.tables));
      result.sources.insert(result.sources.end(), {pair.first, pair.second});
      if (has_projects) result.judged.emplace_back(pair.project->position, states_.new_state->Display(pair.Path()));
    }
    AddBaseline(report);
    std::ranges::move(FindHiddenFiles(check_.files, states_), std::back_inserter(report.project));
    std::ranges::move(settings.Findings(), std::back_inserter(report.project));
    const bool is_compared =
        std::ranges::any_of(report.tables, [](const TableResult& one) { return one.status != Status::kNew; });
    const bool has_nothing_else = report.faults.empty() && (report.project.empty() || !report.tables.empty());
    if (!is_compared && has_nothing_else) RequireOnlyNew(report);
    return result;
  }

  ComparedFile ComparedOf(const FilePair& pair, std::size_t first_table) const {
    std::string new_name = states_.new_state->Display(pair.Path());
    std::string old_name = pair.older_name;
    if (old_name.empty() && pair.old_path != nullptr) old_name = states_.old_state->Display(*pair.old_path);
    return {.old_name = std::move(old_name),
            .new_name = std::move(new_name),
            .is_deleted = pair.new_path == nullptr,
            .is_unchanged = pair.is_unchanged,
            .first_table = first_table,
            .table_count = pair.tables.size()};
  }

  std::optional<FileNote> NoteOf(const FilePair& pair) const {
    using Kind = FileNote::Kind;
    if (pair.is_elsewhere) return std::nullopt;
    if (pair.old_path != nullptr && pair.new_path != nullptr && *pair.old_path == *pair.new_path) return std::nullopt;
    const std::string old_file = pair.old_path == nullptr ? "" : states_.old_state->Display(*pair.old_path);
    const std::string new_file = pair.new_path == nullptr ? "" : states_.new_state->Display(*pair.new_path);
    return FileNote{old_file.empty() ? Kind::kAdded : new_file.empty() ? Kind::kDeleted : Kind::kMoved, old_file, new_file};
  }

  // Without any change, the wrong baseline may be the reason.
  void AddBaseline(Report& report) const {
    ReportBaseline baseline{states_.baseline.name, states_.baseline.origin};
    const bool is_unchanged = std::ranges::all_of(pairs_, [](const FilePair& pair) { return pair.is_unchanged; });
    if (is_unchanged && IsCheckedOut(states_.baseline)) {
      baseline.is_same = true;
      AppendPart(baseline.origin, "; ", "the commit that is checked out: no selected file differs from it");
    }
    report.baselines.push_back(std::move(baseline));
  }

  // That all tables are new can be accepted, unless the baseline has nothing to compare with at all: it may be the wrong one.
  void RequireOnlyNew(const Report& report) const {
    const auto refuse = [](const std::string& why) { throw InputError{{ToolMessage("nothing was compared: " + why)}}; };
    if (report.tables.empty()) refuse("no file has a table");
    if (!HasSchema(states_)) {
      refuse(OneLine(states_.baseline.name) +
             " has no schema file; compare with a state that has some. Check the first schemas of a project with 'korvelcheck "
             "lint'");
    }
    if (!check_.allow_new) {
      refuse("all tables are new; check them with 'korvelcheck lint', or accept them with --allow-new");
    }
  }

  const ProjectCheck& check_;
  const CheckOptions& options_;
  const ProjectStates& states_;
  FilePairCheck pair_check_;
  std::vector<FilePair> pairs_;
};

}  // namespace

ProjectResult CheckProject(const ProjectCheck& check) { return Comparison(check).Run(); }

}  // namespace korvel
