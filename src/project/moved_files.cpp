// Tested by tests/tool/against_test.cpp.
#include "project/moved_files.h"

#include <map>
#include <string_view>

#include "qmx/qmx_types.h"

namespace korvel {
namespace {

// What two files must have in common, strictest first, in addition to the name of the library.
std::string_view ContentOf(const Source& source) {
  if (source.text && !source.text->is_dump) return source.text->Bytes();
  return {reinterpret_cast<const char*>(source.Library()), source.metalib.size()};
}

std::string_view LastName(const Source& source) {
  const std::string_view name = source.name;
  return name.substr(name.rfind('/') + 1);
}

std::string_view Nothing(const Source&) { return {}; }

constexpr std::string_view (*kCommon[])(const Source& source) = {ContentOf, LastName, Nothing};

}  // namespace

std::vector<std::pair<std::size_t, std::size_t>> FindMoved(std::span<const Source* const> removed,
                                                           std::span<const Source* const> added) {
  using FileMark = std::pair<std::string_view, std::string_view>;
  std::vector<std::pair<std::size_t, std::size_t>> moved;
  std::vector<bool> is_paired(added.size());
  std::vector<bool> is_removed(removed.size(), true);
  for (const auto common : kCommon) {
    const auto mark = [&](const Source& source) { return FileMark(source.LibraryName(), common(source)); };
    std::multimap<FileMark, std::size_t> free;
    for (std::size_t i = 0; i < added.size(); ++i) {
      if (!is_paired[i]) free.emplace(mark(*added[i]), i);
    }
    for (std::size_t i = 0; i < removed.size(); ++i) {
      const auto found = is_removed[i] ? free.find(mark(*removed[i])) : free.end();
      if (found == free.end()) continue;
      moved.emplace_back(i, found->second);
      is_removed[i] = false;
      is_paired[found->second] = true;
      free.erase(found);
    }
  }
  return moved;
}

}  // namespace korvel
