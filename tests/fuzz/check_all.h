// Runs every operation of the checker on two libraries.
#pragma once

#include <string>

#include "common/modify_table.h"
#include "qmx/qmx_types.h"

namespace fuzz {

struct Settings {
  int type = 0;
  int created_as = 1;
  std::string server_version = "3.29.0";
  std::string whitelist = "zone;note";
  int list_num = 0;
};

// Checks each table of the old library, twice, and requires equal results with terminated texts.
void CheckAll(LPQMXMETALIB old_library, LPQMXMETALIB new_library, const Settings& settings = {});

}  // namespace fuzz
