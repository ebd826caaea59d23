// A loaded schema. The handle and the reports about it share it.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "korvelcheck/korvelcheck.h"
#include "schema/input.h"

namespace korvel::capi {

struct LoadedSchema {
  explicit LoadedSchema(Input loaded) : input(std::move(loaded)), is_image(!input.text) {}

  const Input input;  // its text is in memory; an image has none
  const bool is_image;

  // Made when it is needed first.
  mutable std::mutex mutex = {};
  mutable std::optional<std::string> image = {};
};

}  // namespace korvel::capi

struct kc_schema {
  std::shared_ptr<const korvel::capi::LoadedSchema> loaded;
};
