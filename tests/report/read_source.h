// Sources out of texts and files.
#pragma once

#include <string>

#include "schema/source.h"

namespace report_test {

// The source that a schema file of this content gives. Fails the test, and throws, on a text that is no schema.
korvel::Source ReadSource(const std::string& name, const std::string& text);

}  // namespace report_test
