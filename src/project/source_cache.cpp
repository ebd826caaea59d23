// Tested by tests/lsp/source_cache_test.cpp.
#include "project/source_cache.h"

#include <algorithm>
#include <utility>

namespace korvel {
namespace {

std::size_t SizeOf(const Source& source) { return source.text->Bytes().size(); }

}  // namespace

std::shared_ptr<const Source> SourceCache::Find(const CachedFile& file) {
  const std::scoped_lock lock(mutex_);
  const auto found = std::ranges::find(entries_, file, &Entry::file);
  if (found == entries_.end()) return nullptr;
  entries_.splice(entries_.begin(), entries_, found);
  return found->source;
}

void SourceCache::Keep(const CachedFile& file, std::shared_ptr<const Source> source) {
  if (!source->text) return;
  const std::scoped_lock lock(mutex_);
  bytes_ += SizeOf(*source);
  entries_.push_front({file, std::move(source)});
  while (bytes_ > max_bytes_ && entries_.size() > 1) {
    bytes_ -= SizeOf(*entries_.back().source);
    entries_.pop_back();
  }
}

}  // namespace korvel
