// One schema file in both states of a project: loads it, checks its tables, and gives up what the report does not need.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/input_error.h"
#include "project/check_project.h"

namespace korvel {

struct FilePair {
  const std::string* old_path = nullptr;  // null: added. Borrowed
  const std::string* new_path = nullptr;  // null: deleted. Borrowed
  // Null before loading and for a missing side; the same as each other if the file is the same byte for byte.
  std::shared_ptr<const Source> first = nullptr;
  std::shared_ptr<const Source> second = nullptr;
  std::vector<std::string> names = {};  // of the tables of both, if wanted; an unchanged file has each once
  std::vector<TableResult> tables = {};
  std::vector<InputFault> faults = {};  // of either side; then its tables are not checked
  bool is_requested = true;             // false: only a candidate for the other path of a moved file
  std::string older_name = {};          // the earlier version that `first` is, if that of the baseline has a fault
  bool is_checked = false;
  bool is_unchanged = false;  // the same bytes under the same path on both sides; known once loaded
  bool is_elsewhere = false;  // the old path is in another repository now, such as a submodule

  const ProjectScope* project = nullptr;  // what judges it: the project file of Path(). Borrowed

  const std::string& Path() const { return new_path == nullptr ? *old_path : *new_path; }
};

// A library without the tables of the old one: what a removed file is compared with. REQUIRES: the old one has a table.
Input WithoutTables(const Source& old_source, const std::string& shown);

// What happens to the pairs of a project. Threads may work on different pairs at once.
class FilePairCheck {
 public:
  // `check` must outlive it.
  explicit FilePairCheck(const ProjectCheck& check);

  // Reads the files of both sides, or sets `faults`.
  void Load(FilePair& pair) const;

  // An old source that was loaded as part of another pair, with the path that identifies it in the project of this one.
  static std::shared_ptr<const Source> InProjectOf(const FilePair& pair, std::shared_ptr<const Source> source);

  // Checks the tables of both sides, then releases the sources. REQUIRES: loaded without a fault.
  void Check(FilePair& pair) const;

 private:
  void LoadSides(FilePair& pair) const;
  void LoadOld(FilePair& pair, const Bytes& new_bytes) const;
  void LoadOldOfPair(FilePair& pair, const Bytes& new_bytes) const;
  bool LoadEarlier(FilePair& pair, const std::vector<InputFault>& faults) const;
  std::shared_ptr<const Source> Share(Input input) const;
  std::shared_ptr<const Source> LoadFrom(FileTree& state, const FilePair& pair, const std::string& path, Bytes bytes) const;
  std::vector<TableResult> TablesOf(FilePair& pair) const;
  void Release(FilePair& pair) const;

  const ProjectCheck& check_;
  bool wants_names_;
};

}  // namespace korvel
