// Finds files that have another path in the new state of a project.
#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "schema/source.h"

namespace korvel {

// Pairs (index in `removed`, index in `added`) that are one file under two paths: both hold a library of the same name. If
// several do, those with the same bytes are paired first, then those with the same tables, then those with the most tables in
// common; among equals, those with the same file name, then those with the most elements in common. Every file is in one pair at
// most. No member of the lists is null.
std::vector<std::pair<std::size_t, std::size_t>> FindMoved(std::span<const Source* const> removed,
                                                           std::span<const Source* const> added);

}  // namespace korvel
