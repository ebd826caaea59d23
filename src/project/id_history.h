// Finds ids of TLV fields that are used again with another type, or a smaller one, over all versions of a schema.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "report/result/history.h"
#include "schema/source.h"

namespace korvel {

// Takes the versions one by one, oldest first. Keeps no source.
class IdHistory {
 public:
  // `tables`: those whose structures matter; empty: all.
  explicit IdHistory(const std::vector<std::string>& tables) : tables_(tables) {}

  // Adds the version at position `version`. `previous` is the one that was added before; null for the first. A version that is
  // not TLV identifies its fields by name and is ignored: ids that were used before are not forgotten.
  void Add(std::size_t version, const Source& source, const Source* previous);

  // The ids that a later version used with another or smaller type after some version did not use them, in the order in which
  // they came back. Without waivers.
  std::vector<ReusedId> Take() { return std::move(reused_); }

 private:
  // A field under an id.
  struct Use {
    ReusedId::Use use;
    int type = 0;
    std::uint64_t size = 0;
    int count = 1;
    std::string structure = {};  // of a composite field
    std::uint32_t meta = 0;      // positions in the version
    std::uint32_t entry = 0;
    bool is_truncated = false;  // Structure::is_truncated
  };

  // A structure that tables reach, the tables included.
  struct Structure {
    std::string name;
    std::vector<FieldPath> paths;   // to it; the first kMaxPaths
    std::vector<std::string> keys;  // of each path: the table and the ids of the fields on the way
    bool is_truncated = false;      // it has more paths
    std::map<int, Use> fields;      // by their ids
  };

  // By the keys of their paths: records know no names of fields and structures. And by their names, with "/" in front, which
  // matter for structures with more paths.
  using Structures = std::map<std::string, std::shared_ptr<const Structure>>;
  using Key = std::pair<std::string, int>;  // of a structure, and the id

  class Walk;

  static bool IsOther(const Use& before, const Use& after);
  void AddGone(const Structures& structures, const Source& previous);
  void Compare(const Structures& structures, const Source& source);

  const std::vector<std::string>& tables_;
  Structures live_;          // of the last TLV version
  std::map<Key, Use> gone_;  // with locations
  std::vector<ReusedId> reused_;
  bool was_tlv_ = false;  // the version before
};

}  // namespace korvel
