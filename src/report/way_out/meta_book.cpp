// Reads metas once. Held by tests/report/rewrite_test.cpp.
#include "report/way_out/meta_book.h"

#include <utility>

#include "qmx/qmx_metalib_kernel.h"

namespace korvel::report {

MetaBook::MetaBook(const Source& source) : source_(source) {
  if (qmx_get_meta_num(source.Library()) == 0) return;
  head_ = ModelOf(source, qmx_get_meta_name(qmx_get_meta_by_index(source.Library(), 0)));
  for (MetaModel& meta : std::exchange(head_.metas, {})) metas_[meta.name] = std::move(meta);
}

const MetaModel* MetaBook::Find(const std::string& name) {
  const auto [found, is_new] = metas_.try_emplace(name);
  if (is_new && source_.HasMeta(name)) {
    for (MetaModel& meta : ModelOf(source_, name).metas) metas_[meta.name] = std::move(meta);
  }
  return found->second ? &*found->second : nullptr;
}

}  // namespace korvel::report
