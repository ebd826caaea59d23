// The metas of a source as models, each read when it is first asked for.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "schema/model.h"

namespace korvel {

class MetaCache {
 public:
  // The source outlives the book.
  explicit MetaCache(const Source& source) : source_(source), head_(HeadOf(source.Library())) {}

  // Null if the source has no meta of the name.
  const MetaModel* Find(const std::string& name);

  // The library without its metas.
  const Model& head() const { return head_; }

 private:
  const Source& source_;
  Model head_;
  std::map<std::string, std::optional<MetaModel>> metas_;
};

}  // namespace korvel
