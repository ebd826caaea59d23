// The earlier states that a project is compared with: commits, merge bases, released versions, directories.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "project/project.h"

namespace korvel {

struct Baseline {
  std::string name;                     // as reports show its files: "git:main...", "git:v1.2", "../released"
  std::optional<std::string> revision;  // of git; nullopt for a directory
  std::string origin = {};              // what the name stands for, if it does not say so: "the newest tag that matches v*"
};

// What every message about baselines allows.
inline constexpr char kAllowedBaselines[] = "git:REV, git:REV..., git-tag:PATTERN or a directory";

// The baseline of an argument. "git:REV" is a commit or a tree; "git:REV..." the merge base of REV and HEAD; "git-tag:v*" the
// newest tag in version order that matches the pattern; everything else a directory. Throws InputError, with one line, for an
// argument of a wrong form, if there are several merge bases, and as Git.
Baseline ResolveBaseline(const std::string& argument);

// The full names of the tags that match a pattern, "refs/tags/v1.2", oldest first in version order. Throws InputError as Git, and
// if no tag matches.
std::vector<std::string> TagsOf(const std::string& pattern);

// The baselines of these arguments. If REV and HEAD have several merge bases, "git:REV..." is all of them. A commit that several
// arguments name is one baseline, whose origin lists the others. Throws as
// ResolveBaseline.
std::vector<Baseline> ResolveBaselines(const std::vector<std::string>& arguments);

// The arguments that a project file names; a directory is relative to the project file there, and to the working directory in
// the result.
std::vector<std::string> BaselinesOf(const Project& project);

// Whether a baseline is the commit that is checked out, or its tree: then only changes that are not committed are compared. False
// if it is not known.
bool IsCheckedOut(const Baseline& baseline);

// Whether HEAD began at an earlier commit of the revision, so that it seems to undo what the revision has gained since. False for
// a merge base, a tag that a pattern found, a tree and a directory, in a shallow clone, and if it is not known.
bool IsAheadOfHead(const Baseline& baseline);

}  // namespace korvel
