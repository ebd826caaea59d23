// Sources out of texts that are not in a file yet.
#pragma once

#include <optional>
#include <string>

#include "schema/source.h"

namespace korvel {

// The source that a schema file of this text and name would be; nullopt if the text is no schema.
std::optional<Source> SourceOfText(const std::string& name, std::string text);

}  // namespace korvel
