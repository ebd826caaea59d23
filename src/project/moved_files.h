// Finds out which files were moved.
#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "schema/source.h"

namespace korvel {

// Of files that are gone and files that are new, the pairs (position in `gone`, position in `added`) that are one file at two
// places: they hold a library of the same name. Where several do, those of the same bytes belong together first, then those whose
// path ends in the same name, then the others in their order. Every file belongs to one pair at most. The members of neither list
// are null.
std::vector<std::pair<std::size_t, std::size_t>> FindMoved(std::span<const Source* const> removed,
                                                           std::span<const Source* const> added);

}  // namespace korvel
