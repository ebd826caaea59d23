// Schemas for the tests of the C interface.
#pragma once

#include <korvelcheck/korvelcheck.hpp>
#include <string>

#include "cases/case_files.h"

namespace capi_test {

inline const std::string kShop = KORVEL_SOURCE_DIR "/examples/shop/";

// A shipped example, under the name "NAME".
inline korvelcheck::Schema Example(const std::string& name) {
  return korvelcheck::Schema::FromMemory(name, cases::ReadFile(kShop + name));
}

// A refused change with two findings.
inline korvelcheck::Report RefusedReport() { return korvelcheck::Check(Example("v6.xml"), Example("v7-wider-key.xml")); }

}  // namespace capi_test
