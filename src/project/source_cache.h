// Schema files of commits that stay in memory, for programs that compare with the same files again and again.
#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "schema/source.h"

namespace korvel {

// A file of a commit as reports show it.
struct CachedFile {
  std::string object;           // the id of its content
  std::string name;             // Source::name
  std::string path_in_project;  // Source::path_in_project

  bool operator==(const CachedFile&) const = default;
};

// Keeps the files that were used last. Several threads may use it at once.
class SourceCache {
 public:
  // Texts of more than `max_bytes` bytes in all are not kept, except a single file.
  explicit SourceCache(std::size_t max_bytes = std::size_t{64} << 20) : max_bytes_(max_bytes) {}

  // Null if it is not kept.
  std::shared_ptr<const Source> Find(const CachedFile& file);

  // Nothing is kept of a source without a text.
  void Keep(const CachedFile& file, std::shared_ptr<const Source> source);

 private:
  struct Entry {
    CachedFile file;
    std::shared_ptr<const Source> source;
  };

  std::size_t max_bytes_;
  std::mutex mutex_;
  std::list<Entry> entries_;  // the last one used comes first
  std::size_t bytes_ = 0;     // of their texts
};

}  // namespace korvel
