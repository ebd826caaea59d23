// What an analysis is about: a table under two schemas. Borrows its parts; they must outlive it.
#pragma once

#include <string>

#include "schema/reserved_fields.h"
#include "schema/settings.h"
#include "schema/source.h"

namespace korvel {

struct TableContext {
  const Source& old_source;  // has the table
  const Source& new_source;
  const std::string& table;
  const Settings& settings;
  const ReservedFields* reserved = nullptr;  // null: none
};

}  // namespace korvel
