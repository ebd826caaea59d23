// Finds files that were removed and added again later under another path.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "project/file_versions.h"
#include "project/version_walk.h"

namespace korvel {

// The versions of one file, and how they begin and end.
struct FoundVersions {
  FileVersions file;
  std::size_t beginning_notes = 0;           // the first notes say how it begins
  std::optional<LostPath> removal = {};      // what ends it; of tags, the commit is the first tag without the file
  std::optional<std::string> added_by = {};  // the commit or tag that it begins with, if the file is new there; "": the work tree
  bool is_continued = false;                 // another file has its versions, too
  std::optional<LostPath> lost = {};         // where a commit or the work tree removed it in the end, as far as it is known
  bool is_selected = true;                   // by the call; others are only for files that continue them
};

// The note about a file that only the last commit still has.
inline constexpr char kLostInWorkTree[] = "the work tree no longer has the file";

// Ends the histories of files that a commit or the work tree did not remove but move to a path that is not among `paths`
// (NewPathsOf): without a last version that has no tables, and with a note. Files that the call does not select are then
// continued.
void EndMoved(const std::set<std::string>& paths, const std::string& top, const std::string& argument, Git& git,
              std::vector<FoundVersions>& found);

// Puts the versions of a removed file in front of those of a file that was added then or later and holds a library of the same
// name (FindMoved); the first file is then continued. A file with versions that cannot be read at its end is not continued.
// `order` lists the commits or tags, oldest first; it is called if it is needed.
void JoinContinued(std::vector<FoundVersions>& found, const std::function<std::vector<std::string>()>& order, Git& git);

}  // namespace korvel
