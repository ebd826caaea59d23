// Makes sources of texts and files.
#pragma once

#include <string>

#include "schema/source.h"

namespace report_test {

// The source of a schema file with this content. If the content is not a schema, fails the test and throws.
korvel::Source ReadSource(const std::string& name, const std::string& text);

}  // namespace report_test
