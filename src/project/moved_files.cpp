// Tested by tests/tool/against_test.cpp.
#include "project/moved_files.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <tuple>

#include "qmx/qmx_types.h"

namespace korvel {
namespace {

using Indexes = std::vector<std::size_t>;
using Words = std::vector<std::string_view>;

std::string_view ContentOf(const Source& source) {
  if (source.IsFromText()) return source.text->Bytes();
  return {reinterpret_cast<const char*>(source.Library()), source.metalib.size()};
}

std::string_view LastName(const Source& source) {
  const std::string_view name = source.name;
  return name.substr(name.rfind('/') + 1);
}

// The elements of a schema file, sorted; none of an image.
Words ElementsOf(const Source& source) {
  Words elements;
  if (!source.text) return elements;
  std::string_view rest = source.text->Bytes();
  while (!rest.empty()) {
    const std::size_t end = rest.find('<', 1);
    elements.push_back(rest.substr(0, end));
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end);
  }
  std::ranges::sort(elements);
  return elements;
}

Words TablesOf(const Source& source) {
  Words tables = source.tables;
  std::ranges::sort(tables);
  return tables;
}

std::size_t CountCommon(const Words& a, const Words& b) {
  Words common;
  std::ranges::set_intersection(a, b, std::back_inserter(common));
  return common.size();
}

// What a file is compared by.
struct FileMarks {
  explicit FileMarks(const Source& source) : tables(TablesOf(source)), elements(ElementsOf(source)), name(LastName(source)) {}

  Words tables;
  Words elements;
  std::string_view name;
};

// How much two files have in common, the strongest sign first.
using Likeness = std::tuple<bool, std::size_t, bool, std::size_t>;

Likeness LikenessOf(const FileMarks& a, const FileMarks& b) {
  return {a.tables == b.tables, CountCommon(a.tables, b.tables), a.name == b.name, CountCommon(a.elements, b.elements)};
}

class MoveFinder {
 public:
  MoveFinder(std::span<const Source* const> removed, std::span<const Source* const> added) : removed_(removed), added_(added) {}

  std::vector<std::pair<std::size_t, std::size_t>> Find() {
    for (std::size_t i = 0; i < removed_.size(); ++i) old_files_[removed_[i]->LibraryName()].push_back(i);
    for (std::size_t i = 0; i < added_.size(); ++i) new_files_[added_[i]->LibraryName()].push_back(i);
    for (auto& [library, from] : old_files_) {
      Indexes& to = new_files_[library];
      PairSame(from, to);
      PairTables(from, to);
      PairSimilar(from, to);
    }
    std::ranges::sort(moved_);
    return std::move(moved_);
  }

 private:
  // Files with the same bytes, those with the same name first.
  void PairSame(Indexes& from, Indexes& to) {
    for (const bool by_name : {true, false}) {
      const auto mark = [&](const Source& source) {
        return std::pair(ContentOf(source), by_name ? LastName(source) : std::string_view());
      };
      std::multimap<std::pair<std::string_view, std::string_view>, std::size_t> free;
      for (const std::size_t i : to) free.emplace(mark(*added_[i]), i);
      std::erase_if(from, [&](std::size_t i) {
        const auto found = free.find(mark(*removed_[i]));
        if (found == free.end()) return false;
        moved_.emplace_back(i, found->second);
        std::erase(to, found->second);
        free.erase(found);
        return true;
      });
    }
  }

  // Files whose tables only one file on each side has. Left to PairSimilar is little then.
  void PairTables(Indexes& from, Indexes& to) {
    std::map<Words, std::pair<Indexes, Indexes>> of_tables;
    for (const std::size_t i : from) of_tables[TablesOf(*removed_[i])].first.push_back(i);
    for (const std::size_t i : to) of_tables[TablesOf(*added_[i])].second.push_back(i);
    for (const auto& [tables, files] : of_tables) {
      const auto& [old_files, new_files] = files;
      if (old_files.size() != 1 || new_files.size() != 1) continue;
      moved_.emplace_back(old_files.front(), new_files.front());
      std::erase(from, old_files.front());
      std::erase(to, new_files.front());
    }
  }

  // The most similar pair first.
  void PairSimilar(const Indexes& from, const Indexes& to) {
    if (from.empty() || to.empty()) return;
    std::vector<FileMarks> old_marks;
    std::vector<FileMarks> new_marks;
    for (const std::size_t i : from) old_marks.emplace_back(*removed_[i]);
    for (const std::size_t i : to) new_marks.emplace_back(*added_[i]);
    struct Candidate {
      Likeness likeness;
      std::size_t from;
      std::size_t to;
    };
    std::vector<Candidate> candidates;
    for (std::size_t i = 0; i < from.size(); ++i) {
      for (std::size_t j = 0; j < to.size(); ++j) candidates.push_back({LikenessOf(old_marks[i], new_marks[j]), i, j});
    }
    std::ranges::stable_sort(candidates, std::ranges::greater(), &Candidate::likeness);
    std::vector<bool> is_from_paired(from.size());
    std::vector<bool> is_to_paired(to.size());
    for (const Candidate& one : candidates) {
      if (is_from_paired[one.from] || is_to_paired[one.to]) continue;
      is_from_paired[one.from] = is_to_paired[one.to] = true;
      moved_.emplace_back(from[one.from], to[one.to]);
    }
  }

  std::span<const Source* const> removed_;
  std::span<const Source* const> added_;
  std::map<std::string_view, Indexes> old_files_;  // by the name of the library
  std::map<std::string_view, Indexes> new_files_;
  std::vector<std::pair<std::size_t, std::size_t>> moved_;
};

}  // namespace

std::vector<std::pair<std::size_t, std::size_t>> FindMoved(std::span<const Source* const> removed,
                                                           std::span<const Source* const> added) {
  return MoveFinder(removed, added).Find();
}

}  // namespace korvel
