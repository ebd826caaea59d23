// Small libraries that give the checker the same answer about a set of edits as the whole table: without them each check would
// visit every field, and the time would grow with the product of refused edits and fields.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/diff/meta_excerpt.h"

namespace korvel {

struct LibraryPair {
  qmx::Metalib old_library;
  qmx::Metalib new_library;
};

// Immutable; threads may use one object at the same time.
class Excerpts {
 public:
  // nullopt if the difference has no excerpts: the old library contains more than its models, structures can be confused, or
  // they may be nested too deep. n log n. REQUIRES: the library is the old one of the difference.
  static std::optional<Excerpts> Of(const Difference& difference, LPQMXMETALIB old_library);

  // Whether a set of edits has an excerpt. Sets with moved entries or replaced structures have not: what is unchanged then is
  // compared with something else.
  bool Has(const std::vector<bool>& chosen) const;

  // Both sides after the chosen edits, cut down to what these concern (see meta_excerpt.h); nullopt if the new library cannot be
  // laid out. If the checker allows the old schema after itself, it gives the same code and text as for Difference::Build. In
  // time that depends on the chosen edits and the number of structures. REQUIRES: Has(chosen).
  std::optional<LibraryPair> Build(const std::vector<bool>& chosen) const;

 private:
  // An old entry with a structure.
  struct Embedding {
    std::size_t node;
    Slot slot;
  };
  class Builder;

  Excerpts(const Difference& difference, LPQMXMETALIB old_library);
  void ListEmbeddings();

  Difference difference_;
  std::map<std::string_view, std::size_t> nodes_;       // by name; ordered, because names from files may collide in a hash table
  std::vector<std::unique_ptr<MetaOutline>> outlines_;  // of each node; null if only the new side has it
  std::vector<std::vector<Embedding>> embeddings_;      // of each node: the entries that embed it
  std::vector<std::size_t> without_excerpt_;            // edits
};

}  // namespace korvel
