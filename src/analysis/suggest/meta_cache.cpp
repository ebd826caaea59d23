// Reads metas once. Held by tests/report/rewrite_test.cpp.
#include "analysis/suggest/meta_cache.h"

#include <utility>

namespace korvel {

const MetaModel* MetaCache::Find(const std::string& name) {
  const auto [found, is_new] = metas_.try_emplace(name);
  if (is_new && source_.HasMeta(name)) {
    for (MetaModel& meta : ModelOf(source_, name).metas) metas_[meta.name] = std::move(meta);
  }
  return found->second ? &*found->second : nullptr;
}

}  // namespace korvel
